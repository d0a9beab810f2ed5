#pragma once

#include "base/text.hpp"

namespace ox {

// An address book, as a host sees it: persons and groups under one identity, and what may be done
// with them.
class OxAddressBook {
 public:
  OxAddressBook(const OxAddressBook&) = delete;
  OxAddressBook& operator=(const OxAddressBook&) = delete;
  virtual ~OxAddressBook() = default;

  virtual Text ID() const = 0;
  virtual Text name() const = 0;

  virtual bool canCreateGroup() const = 0;
  virtual bool canCreateSubGroup() const = 0;
  // Whether records may be created, changed and removed.
  virtual bool canOprate() const = 0;
  virtual bool isInternetAdressBook() const = 0;

 protected:
  OxAddressBook() = default;
};

}  // namespace ox
