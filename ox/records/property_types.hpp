#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/base/record_key.hpp"
#include "ox/base/text.hpp"

namespace ox {

// Type codes of properties; a multi-value has the bit kABMultiValueMask and its elements' type.
enum ABPropertyType : std::int32_t {
  kABErrorInProperty = 0,  // no such property
  kABStringProperty = 1,
  kABIntegerProperty = 2,
  kABRealProperty = 3,
  kABDateProperty = 4,
  kABArrayProperty = 5,
  kABDictionaryProperty = 6,
  kABDataProperty = 7,
  kABMultiValueMask = 0x100,
  kABMultiStringProperty = 0x101,
  kABMultiIntegerProperty = 0x102,
  kABMultiRealProperty = 0x103,
  kABMultiDateProperty = 0x104,
  kABMultiArrayProperty = 0x105,
  kABMultiDictionaryProperty = 0x106,
  kABMultiDataProperty = 0x107,
};

// A property's number in this process: built-in properties have the number that files hold, custom
// ones get the next free number when they become known. 0 is no property.
using PropertyId = std::uint16_t;

inline constexpr PropertyId kFirstCustomProperty = 1024;

// The properties that records may hold: the built-in ones and those that were registered. One table
// for the process; safe from any thread.
namespace property_table {

struct Entry {
  PropertyId id;
  std::string name;
  ABPropertyType type;
};

// The number of the property of that kind of record; 0 when there is none.
OX_EXPORT PropertyId idOf(RecordKind kind, std::string_view name);
// kABErrorInProperty for an unknown number.
OX_EXPORT ABPropertyType typeOf(PropertyId id);
// Whether the property holds a multi-value.
OX_EXPORT bool isList(PropertyId id);
OX_EXPORT std::string nameOf(PropertyId id);

// Registers a custom property of persons. The number of the existing one when the name is known
// with that type; 0 when it is known with another type, or the type is no type.
OX_EXPORT PropertyId add(std::string_view name, ABPropertyType type);

// The number for values of that custom property as they lie in a store. Registers it like add; when
// the name is known with another type, the result is a number of its own under which those values
// stay what they are, and that nobody finds by the name. 0 when the type is no type.
OX_EXPORT PropertyId addStored(std::string_view name, ABPropertyType type);

// Every property of that kind of record that a host may see, built-in ones first, in fixed order.
OX_EXPORT std::vector<Entry> all(RecordKind kind);

}  // namespace property_table

// Numbers of the built-in properties. Files hold them: never renumber, only append.
namespace property_id {
inline constexpr PropertyId kFirst = 1;
inline constexpr PropertyId kMiddle = 2;
inline constexpr PropertyId kLast = 3;
inline constexpr PropertyId kTitle = 4;
inline constexpr PropertyId kSuffix = 5;
inline constexpr PropertyId kMaidenName = 6;
inline constexpr PropertyId kNickname = 7;
inline constexpr PropertyId kOrganization = 8;
inline constexpr PropertyId kDepartment = 9;
inline constexpr PropertyId kJobTitle = 10;
inline constexpr PropertyId kBirthday = 11;
inline constexpr PropertyId kFirstPhonetic = 12;
inline constexpr PropertyId kMiddlePhonetic = 13;
inline constexpr PropertyId kLastPhonetic = 14;
inline constexpr PropertyId kNote = 15;
inline constexpr PropertyId kPhone = 16;
inline constexpr PropertyId kEmail = 17;
inline constexpr PropertyId kURLs = 18;
inline constexpr PropertyId kInstantMessage = 19;
inline constexpr PropertyId kSocialProfile = 20;
inline constexpr PropertyId kAddress = 21;
inline constexpr PropertyId kRelatedNames = 22;
inline constexpr PropertyId kOtherDates = 23;
// The built-in properties of persons are two runs of numbers without a gap, those of one value and
// the multi-values behind them. Whatever walks through all of them ends here.
inline constexpr PropertyId kLastSingle = kNote;
inline constexpr PropertyId kFirstMulti = kPhone;
inline constexpr PropertyId kLastMulti = kOtherDates;
inline constexpr PropertyId kGroupName = 64;
// Kept with a record, never shown to a host as a property.
inline constexpr PropertyId kCardUid = 96;          // string: the UID of the card it came from
inline constexpr PropertyId kUnmodelledLines = 97;  // array of strings: unfolded vCard lines
}  // namespace property_id

}  // namespace ox
