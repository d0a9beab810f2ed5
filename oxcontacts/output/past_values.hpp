#pragma once

#include <string>

#include "ox/platform/store/values/journal_entries.hpp"
#include "ox/records/property_bag.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {

// What the journal tells of values, for readers and as JSON.

// The name under which somebody knew the record: of a group its own, of a person the parts of the
// name or the company; empty when there is none.
std::string nameIn(const PropertyBag& properties);
// A value on one line, the entries of a multiple one with their labels; empty when it is missing.
std::string readableValue(const PropertyValue& value);
Json jsonOfStored(const PropertyValue& value);
// [{"name","displayName","value"} or {...,"values":[{"label","labelDisplayName","value","main"}]}]
Json jsonOfStored(const PropertyBag& properties);
// One row for each value: what it is called, its label, the value.
void addStoredRows(const PropertyBag& properties, Table& table);

}  // namespace ox::program
