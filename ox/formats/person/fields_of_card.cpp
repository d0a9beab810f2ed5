// The fields of a person that is exported.
#include <algorithm>
#include <string_view>
#include <utility>

#include "ox/formats/person/person_fields.hpp"
#include "ox/formats/person/stored_fields.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/properties/card_address.hpp"
#include "ox/vcard/read/card_builder.hpp"

namespace ox::formats {
namespace {

using vcard::isWord;

// The record again that the card was written of.
vcard::Card readAgain(const WrittenCard& card) {
  vcard::CardBuilder builder;
  builder.start(0, {.hasVersion = true, .is40 = true, .isGroup = card.isGroup()});
  for (const auto& line : card.lines()) builder.add(line);
  return builder.finish();
}

// A street in a record has box and extension in front, which are told beside it.
void takeFromStreet(const std::string& part, std::string& street) {
  if (part.empty() || !street.starts_with(part)) return;
  if (street.size() == part.size()) return street.clear();
  if (street[part.size()] == '\n') street.erase(0, part.size() + 1);
}

FieldEntry entryOf(const StoredKind& row, const MultiEntry& held) {
  FieldEntry entry;
  entry.kind = row.kind;
  entry.label = held.label.value_or("");
  if (const auto* text = held.value.text()) entry[Part::Value] = *text;
  if (const auto* date = held.value.as<Date>()) entry[Part::Value] = date->toText();
  const auto* dictionary = held.value.dictionary();
  if (dictionary == nullptr) return entry;
  for (const auto& [part, key] : partsOf(row.kind)) {
    if (const auto* text = dictionary->get(key).text()) entry[part] = *text;
  }
  takeFromStreet(entry[Part::Box], entry[Part::Street]);
  takeFromStreet(entry[Part::Extended], entry[Part::Street]);
  return entry;
}

void addEntries(const StoredKind& row, const PropertyBag& bag, PersonFields& fields) {
  const auto* value = bag.find(row.property);
  const auto* multi = value != nullptr ? std::get_if<MultiValuePtr>(value) : nullptr;
  if (multi == nullptr || !*multi) return;
  for (const auto& held : (*multi)->entries) {
    auto entry = entryOf(row, held);
    entry.isMain = held.identifier == (*multi)->primary;
    fields.entries.push_back(std::move(entry));
  }
}

void addSingles(const PropertyBag& bag, PersonFields& fields) {
  for (const auto& [single, property] : storedSingles()) {
    if (const auto* text = bag.text(property)) fields[single] = *text;
  }
  const auto* birthday = bag.find(property_id::kBirthday);
  const auto* object = birthday != nullptr ? std::get_if<Object>(birthday) : nullptr;
  const auto* date = object != nullptr ? object->as<Date>() : nullptr;
  if (date != nullptr) fields[Single::Birthday] = date->toText();
}

void clearBlank(std::string& text) {
  if (saysNothing(text)) text.clear();
}

// What is only blanks says nothing in a table or a directory, nor do the blanks around a tag.
void dropBlanks(PersonFields& fields) {
  std::ranges::for_each(fields.singles, clearBlank);
  for (auto& entry : fields.entries) std::ranges::for_each(entry.parts, clearBlank);
  std::erase_if(fields.entries, [](const FieldEntry& entry) { return entry.isEmpty(); });
  for (auto& tag : fields.tags) tag = std::string(vcard::trimmed(tag));
  std::erase(fields.tags, std::string());
}

// A formatted name that was made of other values is none.
bool isDerived(const vcard::ContentLine& line) {
  return std::ranges::any_of(line.parameters, [](const vcard::Parameter& parameter) {
    return isWord(parameter.name, "DERIVED") && isWord(parameter.value, "TRUE");
  });
}

}  // namespace

PersonFields fieldsOf(const WrittenCard& card) {
  PersonFields fields;
  const auto record = readAgain(card);
  addSingles(record.properties, fields);
  for (const auto& row : storedKinds()) addEntries(row, record.properties, fields);
  fields.photo = record.photo;
  const auto* name = card.find("FN");
  if (name != nullptr && !isDerived(*name)) fields[Single::FullName] = textOf(name->value);
  for (const auto& line : card.lines()) {
    if (!isWord(line.name, "CATEGORIES")) continue;
    for (const auto tag : vcard::partsOf(line.value, ',')) {
      fields.tags.push_back(textOf(tag));
    }
  }
  dropBlanks(fields);
  return fields;
}

GroupFields groupFieldsOf(const WrittenCard& card) {
  auto record = readAgain(card);
  const auto textIn = [&](PropertyId property) {
    const auto* text = record.properties.text(property);
    return text != nullptr ? *text : std::string();
  };
  return {textIn(property_id::kGroupName), textIn(property_id::kCardUid),
          std::move(record.members)};
}

}  // namespace ox::formats
