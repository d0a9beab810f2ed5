// What lies in a group: its sub-groups, its members, and the members of the whole tree.
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/flatten.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox {
namespace {

std::vector<std::shared_ptr<_ABPerson>> membersOf(const ABGroup& group) {
  std::vector<std::shared_ptr<_ABPerson>> persons;
  auto members = group.members();
  persons.reserve(members.size());
  for (auto& member : members) persons.push_back(hostPerson(std::move(member)));
  return persons;
}

std::vector<std::shared_ptr<const ABGroup>> subgroupsOf(const ABGroup& group) {
  const auto subgroups = group.subgroups();
  return {subgroups.begin(), subgroups.end()};
}

Persons asHostSees(const std::vector<std::shared_ptr<_ABPerson>>& persons) {
  return {persons.begin(), persons.end()};
}

}  // namespace

Groups _ABGroup::subGroups() const {
  Groups groups;
  for (auto& group : subgroups()) groups.push_back(hostGroup(std::move(group)));
  return groups;
}

std::uint64_t _ABGroup::subGroupsCount() const {
  return subgroups().size();
}

Persons _ABGroup::persons() const {
  return asHostSees(membersOf(*this));
}

Persons _ABGroup::includePersons() const {
  return asHostSees(personFromGroup(std::static_pointer_cast<const ABGroup>(shared_from_this())));
}

std::uint64_t _ABGroup::includePersonsCount() const {
  return personFromGroup(std::static_pointer_cast<const ABGroup>(shared_from_this())).size();
}

std::vector<std::shared_ptr<_ABPerson>> _ABGroup::personFromGroup(
    const std::shared_ptr<const ABGroup>& group) {
  if (!group) return {};
  return flattenedPersons<std::shared_ptr<_ABPerson>>(
      group, [](const auto& each) { return membersOf(*each); },
      [](const auto& each) { return subgroupsOf(*each); });
}

}  // namespace ox
