#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/text.hpp"

namespace ox {

class IOxPerson;

// A group of an address book, as a host sees it.
class IOxGroup {
 public:
  virtual ~IOxGroup() = default;

  virtual Text ID() const = 0;
  virtual std::uint64_t subGroupsCount() const = 0;
  // The ID of the book that holds this group.
  virtual Text addressBookID() const = 0;
  virtual void setDisplayName(TextView name) = 0;
  virtual Text displayName() const = 0;
  virtual std::vector<std::shared_ptr<IOxGroup>> subGroups() const = 0;
  // The direct members.
  virtual std::vector<std::shared_ptr<IOxPerson>> persons() const = 0;
  // The members of this group and of every group below it.
  virtual std::vector<std::shared_ptr<IOxPerson>> includePersons() const = 0;
  virtual std::uint64_t includePersonsCount() const = 0;

 protected:
  IOxGroup() = default;
  IOxGroup(const IOxGroup&) = default;
  IOxGroup& operator=(const IOxGroup&) = default;
};

}  // namespace ox
