#pragma once

#include <memory>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/AddressBook/ABPerson.hpp"

namespace ox {

// A group record. Links are edited in memory until the address book's save. See ABRecord for
// identity, ownership and threads.
class OX_EXPORT ABGroup : public ABRecord {
 public:
  explicit ABGroup(const RecordKey& key) : ABRecord(key) {}

  RecordKind kind() const override { return RecordKind::Group; }

  // Direct members and sub-groups, in the order of adding.
  std::vector<std::shared_ptr<ABPerson>> members() const;
  std::vector<std::shared_ptr<ABGroup>> subgroups() const;

  // False when refused: a link that exists already (or, removing, does not), a record of another
  // container or a removed one, a group that would become its own descendant.
  bool addMember(const std::shared_ptr<ABPerson>& person);
  bool removeMember(const std::shared_ptr<ABPerson>& person);
  bool addSubgroup(const std::shared_ptr<ABGroup>& group);
  bool removeSubgroup(const std::shared_ptr<ABGroup>& group);
};

}  // namespace ox
