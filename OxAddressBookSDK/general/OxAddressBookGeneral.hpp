#pragma once

#include <memory>

#include "OxAddressBookSDK/general/OxGeneralGroup.hpp"
#include "OxAddressBookSDK/general/OxGeneralPerson.hpp"
#include "OxAddressBookSDK/general/keyed_list.hpp"

namespace ox {

// A neutral address book: groups and persons of any book, copied into memory. One thread at a time.
class OxAddressBookGeneral {
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

  explicit OxAddressBookGeneral(Key) {}

 private:
  KeyedList<OxGeneralGroup> groups_;
  KeyedList<OxGeneralPerson> persons_;
};

}  // namespace ox
