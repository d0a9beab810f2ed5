#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/AddressBook/ABRecord.hpp"

namespace ox {

// A person record. See ABRecord for identity, ownership and threads.
class OX_EXPORT ABPerson : public ABRecord {
 public:
  explicit ABPerson(const RecordKey& key) : ABRecord(key) {}

  RecordKind kind() const override { return RecordKind::Person; }

  // Names of every property a person may hold: the built-in ones in fixed order, then the custom
  // ones in the order in which they became known.
  static std::vector<std::string> properties();
  // Registers custom properties; the result is how many names are now known with that type.
  // Refused: a name that this process or the store knows with another one. Nothing is written
  // before the first value; should another process write one of another type before, values are
  // refused.
  static std::uint64_t addPropertiesAndTypes(
      const std::vector<std::pair<std::string, std::int32_t>>& propertiesAndTypes);
  // kABErrorInProperty for an unknown name.
  static ABPropertyType typeOfProperty(TextView property);

  // Every value that the record holds, also what no property shows: the UID of the card that it
  // came from, and the lines of it that are not modelled.
  PropertyBag allValues() const;
  // Gives the record these values and no others. False when one of them was refused.
  bool setAllValues(const PropertyBag& values);

  // The stored picture's own bytes; null without one. Throws ImageReadError when the store holds
  // one that cannot be read back.
  Data imageData() const;
  // A null image removes the picture. False when refused.
  bool setImageData(Data image);

  // The person as a vCard 3.0 in UTF-8 with CRLF, folded at 75 octets, without the picture and
  // without cards nested in the one it came from; unsaved changes count. Null for a removed person
  // after the save, and when the store fails.
  Data vCardRepresentation() const;
};

}  // namespace ox
