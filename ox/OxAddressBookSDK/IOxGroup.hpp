#pragma once

#include <cstdint>
#include <memory>

#include "ox/OxAddressBookSDK/record_lists.hpp"
#include "ox/base/callbacks.hpp"
#include "ox/base/export.hpp"
#include "ox/base/text.hpp"

namespace ox {

// A group of an address book, as a host sees it.
class OX_EXPORT IOxGroup {
 public:
  virtual ~IOxGroup() = default;

  virtual Text ID() const = 0;
  virtual std::uint64_t subGroupsCount() const = 0;
  // The ID of the book that holds this group.
  virtual Text addressBookID() const = 0;
  virtual void setDisplayName(TextView name) = 0;
  virtual Text displayName() const = 0;
  virtual Groups subGroups() const = 0;
  // The direct members.
  virtual Persons persons() const = 0;
  // The members of this group and of every group below it.
  virtual Persons includePersons() const = 0;
  virtual std::uint64_t includePersonsCount() const = 0;

  // Edits of the tree and of the membership. None of them saves.

  // A new group below this one; null when there is no book to make it in.
  virtual std::shared_ptr<IOxGroup> addSubGroupByName(TextView name) = 0;
  // Deletes a direct sub-group and everything below it. True when it was one.
  virtual bool removeSubGroup(const std::shared_ptr<IOxGroup>& group) = 0;
  // From this group and every group below it.
  virtual void removePersons(const Persons& persons) = 0;
  virtual void removePersonsFromThisGroup(const Persons& persons) = 0;
  // Those that are not members yet.
  virtual void addPersons(const Persons& persons) = 0;
  virtual void removePersons_progress(const Persons& persons, const ProgressCallback& progress) = 0;
  virtual void addPersons_progress(const Persons& persons, const ProgressCallback& progress) = 0;

 protected:
  IOxGroup() = default;
  IOxGroup(const IOxGroup&) = default;
  IOxGroup& operator=(const IOxGroup&) = default;
};

}  // namespace ox
