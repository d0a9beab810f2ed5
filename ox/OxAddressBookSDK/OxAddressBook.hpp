#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ox/OxAddressBookSDK/IOxGroup.hpp"
#include "ox/OxAddressBookSDK/IOxPerson.hpp"
#include "ox/OxAddressBookSDK/person_list.hpp"
#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"
#include "ox/OxAddressBookSDK/record_lists.hpp"
#include "ox/base/callbacks.hpp"
#include "ox/base/data.hpp"
#include "ox/base/export.hpp"
#include "ox/base/image.hpp"
#include "ox/base/text.hpp"

namespace ox {

class OxTagManager;

// An address book, as a host sees it: persons and groups under one identity, and what may be done
// with them. A host that holds one needs to know no other class of book.
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

  // --- persons and groups ---

  // The book's persons as a live list, which shows later changes of the book too; null for a book
  // that keeps none.
  virtual std::shared_ptr<PersonList> allPersons() = 0;
  virtual std::uint64_t allPersonsCount() = 0;
  // Sub-groups included; empty for a book that cannot have groups.
  virtual Groups allGroups() const = 0;
  // The groups that lie in no other group.
  virtual Groups rootGroups() const = 0;
  virtual std::uint64_t rootGroupsCount() const = 0;
  // Null when there is no such group in this book.
  virtual std::shared_ptr<IOxGroup> groupByID(TextView identifier) const = 0;
  // The records of those IDs in the given order, groups too; unknown IDs are left out.
  virtual std::vector<OxRecord> personsForIDs(
      const std::vector<std::string>& identifiers) const = 0;

  // --- making and removing records ---

  // New and empty; null when the book did not take it.
  virtual std::shared_ptr<IOxPerson> newPerson() = 0;
  virtual std::shared_ptr<IOxGroup> newGroup() = 0;
  virtual std::shared_ptr<IOxGroup> addGroupByName(TextView name) = 0;
  // A new person with what the source holds, which may be of another book or a host's own; null
  // for a missing source, and when there was nothing to copy.
  virtual std::shared_ptr<IOxPerson> addOneFromOtherPerson(
      const std::shared_ptr<IOxPerson>& source) = 0;
  // With their tags. Persons that are no records are left out.
  virtual void removePersons(const Persons& persons) = 0;
  // With everything below it.
  virtual bool removeGroup(const std::shared_ptr<IOxGroup>& group) = 0;

  // --- tags ---

  // The tags of the book's persons; null for a book that keeps none.
  virtual const std::shared_ptr<OxTagManager>& tagManager() const = 0;

  // --- properties ---

  // The properties that its persons can hold, and those that a host shows first.
  virtual const std::vector<OxPropertyPtr>& supportProperty() const = 0;
  virtual const std::vector<OxPropertyPtr>& commonProperty() const = 0;

  // --- the whole book ---

  // Writes what was changed in memory; brings in what was changed elsewhere, where a book can. A
  // save that fails keeps the changes for the next one; a watch tells (ox/base/failures.hpp).
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
