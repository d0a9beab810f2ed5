#pragma once

#include <memory>

#include "ox/OxAddressBookSDK/general/OxGeneralGroup.hpp"
#include "ox/OxAddressBookSDK/general/OxGeneralPerson.hpp"
#include "ox/OxAddressBookSDK/general/keyed_list.hpp"
#include "ox/base/data.hpp"
#include "ox/base/export.hpp"

namespace ox {

// A neutral address book: groups and persons of any book, copied into memory. One thread at a time.
class OX_EXPORT OxAddressBookGeneral {
  struct Key {
    explicit Key() = default;
  };

 public:
  static std::shared_ptr<OxAddressBookGeneral> init() {
    return std::make_shared<OxAddressBookGeneral>(Key());
  }

  // By record ID, in the order of adding.
  const KeyedList<OxGeneralGroup>& groupsDic() const { return groups_; }
  const KeyedList<OxGeneralPerson>& personsDic() const { return persons_; }

  // Copies what the record answers now. A later record of the same ID takes the place of an earlier
  // one; a missing record, and one without an ID, is ignored.
  void addGroup(const std::shared_ptr<IOxGroup>& group);
  void addPerson(const std::shared_ptr<IOxPerson>& person);

  // The file form (docs/neutral-book.md). Equal books give equal bytes. Missing, and noticed as a
  // failure that names the person and the property, when a value has no place in it: a value object
  // of a foreign class, an impossible date, a picture whose pixels do not fit its size, more than
  // 64 M pixels, arrays nested deeper than 32.
  Data saveToData() const;
  // The book that saveToData wrote; null, and noticed as a failure, for anything else: a single
  // bit changed or byte cut off is enough. Missing data gives null.
  static std::shared_ptr<OxAddressBookGeneral> addressBookWithData(const Data& data);

  explicit OxAddressBookGeneral(Key) {}

 private:
  KeyedList<OxGeneralGroup> groups_;
  KeyedList<OxGeneralPerson> persons_;
};

}  // namespace ox
