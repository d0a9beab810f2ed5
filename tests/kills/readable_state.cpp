#include "tests/kills/readable_state.hpp"

#include <filesystem>
#include <map>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/records/fingerprint.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/sync_state.hpp"

namespace ox::kills {
namespace {

// Texts and dictionaries of texts as they are; anything else by its fingerprint.
std::string textOf(const Object& object) {
  if (const auto* text = object.text()) return *text;
  if (const auto* date = object.as<Date>()) return date->toText();
  if (const auto* dictionary = object.dictionary()) {
    std::string text = "{";
    for (const auto& [key, value] : dictionary->entries()) text += key + ":" + textOf(value) + " ";
    return text + "}";
  }
  PropertyBag bag;
  bag.set(property_id::kNote, object);
  return std::to_string(contentFingerprint(bag, nullptr));
}

std::string textOf(const PropertyValue& value) {
  const auto* many = std::get_if<MultiValuePtr>(&value);
  if (many == nullptr) return textOf(std::get<Object>(value));
  std::string text;
  for (const auto& entry : (*many)->entries) {
    text += (text.empty() ? "" : ", ") + entry.label.value_or("") + "=" + textOf(entry.value) +
            (entry.identifier == (*many)->primary ? "*" : "");
  }
  return text;
}

// One store, read through a source of its own.
class Reader {
 public:
  Reader(const Identifiers& known, const std::string& storePath)
      : known_(known), source_(openStoreSource(storePath)) {}

  ReadableState read(const std::string& tagPath) {
    ReadableState state;
    for (const auto& container : source_->containers()) {
      state.contacts += "account " + name(container->identifier) + " " + container->name + " " +
                        std::to_string(container->type) + "\n";
    }
    for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
      for (const auto& key : source_->records(kind)) state.contacts += record(key, kind) + "\n";
    }
    state.contacts += support::syncState(source_->sync(),
                                         [&](const RecordKey& key) { return given(key.text()); });
    state.tags = tags(tagPath);
    return state;
  }

 private:
  // What is there.
  std::string name(const std::string& identifier) {
    here_.insert(identifier);
    return given(identifier);
  }

  std::string given(const std::string& identifier) {
    if (known_.contains(identifier)) return identifier;
    const auto next = "new" + std::to_string(given_.size() + 1);
    return given_.emplace(identifier, next).first->second;
  }

  std::string record(const RecordKey& key, RecordKind kind) {
    const auto container = source_->containerOf(key, kind);
    auto text = (kind == RecordKind::Person ? "person " : "group ") + name(key.text()) + " in " +
                (container ? name(container->identifier) : "no account");
    for (const auto& property : property_table::all(kind)) {
      const auto value = source_->value(key, property.id);
      if (!isMissing(value)) text += "; " + property.name + " " + textOf(value);
    }
    const auto image = source_->imageData(key);
    if (image) text += "; picture " + checksum128(*image);
    if (kind == RecordKind::Person) return text;
    for (const auto below : {RecordKind::Person, RecordKind::Group}) {
      text += below == RecordKind::Person ? "; members" : "; groups";
      for (const auto& child : *source_->children(key, below)) text += " " + name(child.text());
    }
    return text;
  }

  // Every tag in the file, whoever has it.
  std::string tags(const std::string& path) {
    if (!std::filesystem::exists(path)) return {};
    TagFile file(path);  // looks at it as the product does, whatever the kill has left
    sqlite::Connection connection(path, sqlite::Connection::Mode::ReadOnly);
    auto persons = connection.prepare("SELECT DISTINCT manager, person FROM tag ORDER BY 1, 2");
    std::string text;
    while (persons.step()) {
      const std::string person(persons.text(1));
      text += (here_.contains(person) ? "tags of " : "tags of a person who is gone, ") +
              given(person) + " in " + given(std::string(persons.text(0)) + ":ABAccount");
      for (const auto& tag : file.tags(persons.text(0), person)) text += " " + tag;
      text += "\n";
    }
    return text;
  }

  const Identifiers& known_;
  std::shared_ptr<ContactSource> source_;
  Identifiers here_;
  std::map<std::string, std::string> given_;
};

}  // namespace

ReadableState readableState(const Identifiers& known, const std::string& storePath,
                            const std::string& tagPath) {
  return Reader(known, storePath).read(tagPath);
}

ReadableState readableState(const Identifiers& known) {
  const auto& environment = support::StoreEnvironment::instance();
  return readableState(known, environment.contactStore().string(), environment.tagStore().string());
}

Identifiers identifiersNow() {
  const auto source =
      openStoreSource(support::StoreEnvironment::instance().contactStore().string());
  Identifiers identifiers;
  for (const auto& container : source->containers()) identifiers.insert(container->identifier);
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    for (const auto& key : source->records(kind)) identifiers.insert(key.text());
  }
  return identifiers;
}

}  // namespace ox::kills
