#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "ox/OxAddressBookSDK/IOxGroup.hpp"
#include "ox/OxMacAddressBookSDK/ground/host_records.hpp"
#include "ox/base/export.hpp"
#include "ox/platform/AddressBook/ABGroup.hpp"

namespace ox {

class BookId;
class OxMacAddressBook;
class RecordStampTable;
class _ABPerson;

// A group record of the system contact store that answers the model's group interface. The record
// database makes every group record as one of these; it adds no state to the record. See ABRecord
// for identity, ownership and threads.
class OX_EXPORT _ABGroup final : public ABGroup, public IOxGroup {
 public:
  explicit _ABGroup(const RecordKey& key) : ABGroup(key) {}

  // --- identity ---

  Text ID() const override;
  // Never missing: the stored one, else the account id, else "_local", stored from then on.
  Text addressBookID() const override;
  // The same as a number.
  BookId bookId() const;
  // A missing ID changes nothing.
  void setAddressID(TextView bookID);
  // The standard id of the container that holds the group; where none is known, the folder that
  // holds its store file. Asked of the store every time.
  Text AccountID() const;
  // The first discovered book whose ID is this group's addressBookID; null when none is.
  std::shared_ptr<OxMacAddressBook> groupAddressBook() const;
  // The process's table of the book of each group. Entries are never removed.
  static RecordStampTable& dictionarySave();

  // Never missing: empty for a group without name.
  Text displayName() const override;
  // A missing name is stored as an empty one.
  void setDisplayName(TextView name) override;

  // --- the tree ---

  Groups subGroups() const override;
  std::uint64_t subGroupsCount() const override;
  Persons persons() const override;
  // Each person once, where the last sub-group that holds it puts it.
  Persons includePersons() const override;
  std::uint64_t includePersonsCount() const override;
  static std::vector<std::shared_ptr<_ABPerson>> personFromGroup(
      const std::shared_ptr<const ABGroup>& group);

  // --- editing; nothing here saves, persons that are no records of the store are left out ---

  std::shared_ptr<IOxGroup> addSubGroupByName(TextView name) override;
  // True when it was a direct sub-group and the book is known, also when the store refused to let
  // it go: then it stays, without its own sub-groups.
  bool removeSubGroup(const std::shared_ptr<IOxGroup>& group) override;
  // From the leaves upward.
  void removeAllSubGroup();
  void addPersons(const Persons& persons) override;
  void addPersons_progress(const Persons& persons, const ProgressCallback& progress) override;
  void removePersonsFromThisGroup(const Persons& persons) override;
  void removePersons(const Persons& persons) override;
  void removePersonsOfSubGroup(const Persons& persons);
  // The values do not rise steadily: a sub-group's whole run is squeezed into its parent's first
  // half. Required. An absent callback is never called.
  void removePersons_progress(const Persons& persons, const ProgressCallback& progress) override;
  void removePersonsPrivate_progress(const Persons& persons, const ProgressCallback& progress);
};

}  // namespace ox
