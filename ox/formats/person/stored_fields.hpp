#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "ox/formats/person/person_fields.hpp"
#include "ox/records/property_types.hpp"

// Where a record holds what the fields tell.

namespace ox::formats {

struct StoredSingle {
  Single single;
  PropertyId property;
};
// Those that are texts: all but the full name and the birthday.
std::span<const StoredSingle> storedSingles();

// Of the birthday too; missing for the full name, which is made of others, and for the UID, by
// which a person is known.
std::optional<PropertyId> propertyOf(Single single);

struct StoredKind {
  Kind kind;
  PropertyId property;
};
std::span<const StoredKind> storedKinds();
PropertyId propertyOf(Kind kind);

struct StoredPart {
  Part part;
  std::string_view key;  // of a dictionary
};
// Of a kind whose entries are dictionaries; none of any other.
std::span<const StoredPart> partsOf(Kind kind);

}  // namespace ox::formats
