#pragma once

#include <cstdint>
#include <string_view>

#include "ox/vcard/values/card_draft.hpp"
#include "ox/vcard/values/property_writer.hpp"

namespace ox::vcard {

struct PropertyRow;

// Reads one line of a property into the draft; false when the line has to be preserved as it is.
using ReadProperty = bool(const PropertyRow& row, const ContentLine& line, CardDraft& draft);
// Writes what the record holds of the property.
using WriteProperty = void(const PropertyRow& row, PropertyWriter& card);
// True when the card being written has no value of the property, so that a reader would take this
// unmodelled line of its name for one.
using LacksProperty = bool(const PropertyRow& row, std::string_view line, PropertyWriter& card);

// The cards in which a property is read.
enum class CardsWith : std::uint8_t { Persons, Groups, Both };

// One name of a property and the functions that know it.
struct PropertyRow {
  std::string_view name;  // upper case
  ReadProperty* read = nullptr;
  WriteProperty* write = nullptr;  // null for a name that is read only
  PropertyId property = 0;         // of the store
  std::string_view implied = {};   // what the name tells beside the value: a label, a service
  LacksProperty* lacks = nullptr;
  CardsWith in = CardsWith::Persons;
};

// The row of that property name, in any case; null for a property that is not modelled.
const PropertyRow* findProperty(std::string_view name);

// Writes the lines of every property, in the order of the rows.
void writeProperties(PropertyWriter& card);

}  // namespace ox::vcard
