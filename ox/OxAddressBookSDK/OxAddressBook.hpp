#pragma once

#include <cstdint>
#include <vector>

#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"
#include "ox/base/callbacks.hpp"
#include "ox/base/data.hpp"
#include "ox/base/export.hpp"
#include "ox/base/image.hpp"
#include "ox/base/text.hpp"

namespace ox {

// An address book, as a host sees it: persons and groups under one identity, and what may be done
// with them.
class OX_EXPORT OxAddressBook {
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

  // Pictures of the service behind the book, from small to large; null without one.
  virtual ImagePtr thumbnail() const = 0;
  virtual ImagePtr logo1() const = 0;
  virtual ImagePtr logo2() const = 0;
  virtual ImagePtr logo3() const = 0;
  virtual ImagePtr logo4() const = 0;

  virtual std::uint64_t allPersonsCount() = 0;
  virtual std::uint64_t rootGroupsCount() const = 0;

  // The properties that its persons can hold, and those that a host shows first.
  virtual const std::vector<OxPropertyPtr>& supportProperty() const = 0;
  virtual const std::vector<OxPropertyPtr>& commonProperty() const = 0;

  // Writes what was changed in memory; brings in what was changed elsewhere, where a book can.
  virtual void save() = 0;
  virtual void sync() = 0;
  virtual void update() = 0;

  // The whole book from, and as, the data of a neutral book; on a thread of their own.
  virtual void loadWithData_progressBlock(const Data& data, const ProgressCallback& progress) = 0;
  virtual void saveDataBlock(const SaveCallback& progress) = 0;

 protected:
  OxAddressBook() = default;
};

}  // namespace ox
