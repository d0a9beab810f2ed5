#include "ox/platform/store/store_source.hpp"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <utility>

#include "ox/base/failures.hpp"
#include "ox/platform/store/committed/circle.hpp"
#include "ox/platform/store/committed/contact_store.hpp"
#include "ox/platform/store/unsaved/pending_links.hpp"
#include "ox/platform/store/unsaved/pending_values.hpp"
#include "ox/records/clean_text.hpp"
#include "ox/records/entry_identity.hpp"

namespace ox {
namespace {

using Look = CommittedRecords::Look;

// The record is the one that was to be changed.
bool refuse(const std::string& reason, const RecordKey& record) {
  failures::noticeRefusal(reason, record.text());
  return false;
}

// The store and this process's unsaved changes behind one lock. An unsaved change that equals what
// is committed is dropped, so that setting a value and setting it back leaves nothing to save.
class StoreSource final : public ContactSource {
 public:
  explicit StoreSource(std::string path)
      : store_(std::move(path)), committed_(store_.committed()), links_(committed_) {}

  RecordKeys records(RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    auto keys = committed_.records(kind);
    if (values_.hasRemovals()) {
      std::erase_if(keys, [this](const RecordKey& key) { return values_.isRemoved(key); });
    }
    return keys;
  }

  std::optional<RecordInfo> record(std::string_view identifier) override {
    return visibleRecord(identifier);
  }

  std::optional<RecordInfo> record(const RecordKey& key) override { return visibleRecord(key); }

  PropertyValue value(const RecordKey& key, PropertyId property) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::AtMostEvery10ms);
    return visibleValue(key, property);
  }

  bool setValue(const RecordKey& key, RecordKind kind, PropertyId property,
                PropertyValue value) override {
    const auto type = property_table::typeOf(property);
    if (property == 0 || type == kABErrorInProperty)
      return refuse("there is no such property", key);
    if (!fitsType(value, type)) {
      return refuse("a value of the wrong type for " + property_table::nameOf(property), key);
    }
    if (isMissing(value)) value = Object();  // whatever the spelling
    cleanText(value);
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::AtMostEvery10ms);
    if (!isWritable(key)) return refuse("there is no record " + key.text(), key);
    const auto visible = visibleValue(key, property);
    if (looksTheSame(visible, value)) return true;
    keepIdentifiers(visible, value);
    // Compared with what is committed, not with what is visible: a change back to it is none.
    if (looksTheSame(committedValue(key, property), value)) {
      values_.dropValue(key, property);
    } else {
      values_.setValue(key, kind, property, std::move(value));
    }
    return true;
  }

  Data imageData(const RecordKey& key) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::AtMostEvery10ms);
    return visibleImage(key);
  }

  bool setImageData(const RecordKey& key, Data image) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::AtMostEvery10ms);
    if (!isWritable(key)) return refuse("there is no record " + key.text(), key);
    if (isPicture(&StoreSource::visibleImage, key, image)) return true;
    if (isPicture(&StoreSource::savedImage, key, image)) {
      values_.dropImage(key);
    } else {
      values_.setImage(key, RecordKind::Person, std::move(image));
    }
    return true;
  }

  RecordKeysPtr children(const RecordKey& group, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return links_.children(group, kind);
  }

  RecordKeysPtr parents(const RecordKey& record) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return values_.isRemoved(record) ? std::make_shared<const RecordKeys>()
                                     : links_.parents(record);
  }

  bool link(const RecordKey& group, const RecordKey& child, RecordKind childKind) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::AtMostEvery10ms);
    const auto parent = committed_.find(group);
    const auto below = committed_.find(child);
    if (!parent || !isWritable(group)) return refuse("there is no group " + group.text(), group);
    if (!below || !isWritable(child)) return refuse("there is no record " + child.text(), child);
    if (parent->container != below->container)
      return refuse("the link would cross accounts", group);
    if (links_.isLinked(group, child, childKind)) return refuse("the link exists already", group);
    if (childKind == RecordKind::Group && wouldBeBelowItself(group, child)) {
      return refuse("the group would be below itself", group);
    }
    links_.add(group, child, childKind);
    return true;
  }

  bool unlink(const RecordKey& group, const RecordKey& child, RecordKind childKind) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::AtMostEvery10ms);
    if (!isWritable(group)) return refuse("there is no group " + group.text(), group);
    if (!links_.isLinked(group, child, childKind)) return false;  // nothing to take away
    links_.remove(group, child, childKind);
    return true;
  }

  bool remove(const RecordKey& key, RecordKind) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    if (!isWritable(key)) return refuse("there is no record " + key.text(), key);
    links_.forgetRecord(key);
    values_.remove(key);
    return true;
  }

  std::string description(const RecordKey& key, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    std::string text = kind == RecordKind::Person ? "ABPerson (" : "ABGroup (";
    text += key.text() + ")\n  stored in: ";
    text += std::filesystem::path(store_.path()).parent_path().string();
    text += "/Library/Application Support/AddressBook/";
    const auto entry = committed_.find(key);
    const auto container = entry ? committed_.containers().inRow(entry->container) : nullptr;
    if (container && container->type != 1) {
      text += "Sources/" + standardContainerId(container->identifier) + "/";
    }
    return text + "AddressBook.db\n";
  }

  SaveReport save() override {
    const std::lock_guard lock(mutex_);
    SaveReport report;
    try {
      if (values_.empty() && links_.empty()) {
        store_.sync();  // creations were committed without waiting for the disk
        return {true, {}, {}};
      }
      report = store_.commit(
          {values_.edits(), values_.removals(), links_.removedLinks(), links_.addedLinks()});
    } catch (const StoreError& error) {
      report.failure = failureOf(error);
    }
    if (report.done) {
      values_.clear();
      links_.clear();
    }
    return report;
  }

  UnsavedChanges unsavedChanges() override {
    const std::lock_guard lock(mutex_);
    UnsavedChanges changes;
    for (const auto& edit : values_.edits()) {
      for (const auto& [property, value] : edit.values) {
        changes.values.push_back({edit.key, property});
      }
      if (edit.image) changes.values.push_back({edit.key, 0});
    }
    changes.removals = values_.removals();
    changes.addedLinks = links_.addedLinks();
    changes.removedLinks = links_.removedLinks();
    return changes;
  }

  void revert() override {
    const std::lock_guard lock(mutex_);
    values_.clear();
    links_.clear();
  }

  std::vector<ContainerPtr> containers() override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return committed_.containers().all();
  }

  ContainerPtr containerOf(std::string_view identifier, RecordKind kind) override {
    return containerThatHolds(identifier, kind);
  }

  ContainerPtr containerOf(const RecordKey& key, RecordKind kind) override {
    return containerThatHolds(key, kind);
  }

  ContainerPtr containerNamed(std::string_view identifier) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    auto& containers = committed_.containers();
    return containers.inRow(containers.rowOf(identifier));
  }

  RecordKeys recordsIn(std::string_view containerIdentifier, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return committed_.recordsIn(containerIdentifier, kind);
  }

  std::shared_ptr<const PropertyBag> committedValues(const RecordKey& key) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::AtMostEvery10ms);
    return committed_.values(key);
  }

  std::vector<RecordContent> committedContents(std::span<const RecordKey> keys,
                                               std::size_t bytes) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return committed_.contents(keys, bytes);
  }

  Data committedImage(const RecordKey& key) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::AtMostEvery10ms);
    return committed_.image(key);
  }

  RecordKeysPtr committedChildren(const RecordKey& group, RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return committed_.children(group, kind);
  }

  std::vector<RecordKeysPtr> committedChildren(std::span<const RecordKey> groups,
                                               RecordKind kind) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return committed_.children(groups, kind);
  }

  StoreMoment moment() override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return committed_.moment();
  }

  bool execute(SaveRequest& request) override {
    if (!isStorable(request)) return false;
    for (auto& record : request.additions) {
      if (cleanText(record.properties)) record.fingerprint.reset();
    }
    for (auto& record : request.replacements) cleanText(record.properties);
    const std::lock_guard lock(mutex_);
    return store_.execute(request);
  }

  std::vector<FoundRecords> matches(std::string_view containerIdentifier, RecordKind kind,
                                    std::span<const SoughtRecord> sought) override {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    return committed_.matches(containerIdentifier, kind, sought);
  }

  void checkpoint() override {
    const std::lock_guard lock(mutex_);
    store_.checkpoint();
  }

 private:
  // By key or by identifier; so is the container below.
  template <typename Id>
  std::optional<RecordInfo> visibleRecord(const Id& id) {
    const std::lock_guard lock(mutex_);
    committed_.refresh(Look::Now);
    const auto entry = committed_.find(id);
    if (!entry || values_.isRemoved(entry->key)) return std::nullopt;
    return RecordInfo{entry->key, entry->kind, committed_.containers().inRow(entry->container)};
  }

  template <typename Id>
  ContainerPtr containerThatHolds(const Id& id, RecordKind kind) {
    const std::lock_guard lock(mutex_);
    // A record never changes its container, so only a record that is not known is looked for anew.
    committed_.refresh(Look::AtMostEvery10ms);
    auto entry = committed_.find(id);
    if (!entry) {
      committed_.refresh(Look::Now);
      entry = committed_.find(id);
    }
    return entry && entry->kind == kind ? committed_.containers().inRow(entry->container) : nullptr;
  }

  // Hosts write a whole list to change one entry of it; the entries that are the same keep the
  // identifiers they have.
  static void keepIdentifiers(const PropertyValue& before, PropertyValue& now) {
    const auto* old = std::get_if<MultiValuePtr>(&before);
    auto* entries = std::get_if<MultiValuePtr>(&now);
    if (old == nullptr || !*old || entries == nullptr || !*entries) return;
    *entries = std::make_shared<const MultiValue>(withIdentifiersOf(**old, **entries));
  }

  // Names the first value that does not fit as the request's reason.
  static bool isStorable(SaveRequest& request) {
    const auto check = [&](const PropertyBag& properties) {
      for (const auto& [id, value] : properties.entries()) {
        if (fitsType(value, property_table::typeOf(id))) continue;
        request.reason = "a value of the wrong type for " + property_table::nameOf(id);
        return false;
      }
      return true;
    };
    return std::all_of(request.additions.begin(), request.additions.end(),
                       [&](const auto& record) { return check(record.properties); }) &&
           std::all_of(request.replacements.begin(), request.replacements.end(),
                       [&](const auto& record) { return check(record.properties); });
  }

  PropertyValue committedValue(const RecordKey& key, PropertyId property) {
    const auto values = committed_.values(key);
    const auto* value = values ? values->find(property) : nullptr;
    return value != nullptr ? *value : PropertyValue();
  }

  PropertyValue visibleValue(const RecordKey& key, PropertyId property) {
    if (!values_.empty()) {
      if (const auto* unsaved = values_.value(key, property)) return *unsaved;
    }
    return committedValue(key, property);
  }

  Data savedImage(const RecordKey& key) { return committed_.image(key); }

  Data visibleImage(const RecordKey& key) {
    if (auto unsaved = values_.image(key)) return std::move(*unsaved);
    return committed_.image(key);
  }

  // A damaged picture equals no other one, so that a new one takes its place; nor does it equal
  // having none, so that it can be removed.
  bool isPicture(Data (StoreSource::*read)(const RecordKey&), const RecordKey& key,
                 const Data& image) {
    try {
      return sameData((this->*read)(key), image);
    } catch (const ImageReadError&) {
      return false;
    }
  }

  bool isWritable(const RecordKey& key) {
    return !values_.isRemoved(key) && committed_.find(key).has_value();
  }

  bool wouldBeBelowItself(const RecordKey& group, const RecordKey& child) {
    return closesCircle(
        group, child, [this](const RecordKey& key) { return *links_.parents(key); },
        [this](const RecordKey& key) { return *links_.children(key, RecordKind::Group); });
  }

  std::mutex mutex_;
  ContactStore store_;
  CommittedRecords& committed_;
  PendingValues values_;
  PendingLinks links_;
};

}  // namespace

std::shared_ptr<ContactSource> openStoreSource(const std::string& path) {
  return std::make_shared<StoreSource>(path);
}

}  // namespace ox
