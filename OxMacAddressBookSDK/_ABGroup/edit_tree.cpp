#include <algorithm>

#include "OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"

namespace ox {
namespace {

using Groups = std::vector<std::shared_ptr<ABGroup>>;

// One group whose sub-groups are being torn down.
struct Level {
  std::shared_ptr<_ABGroup> group;
  std::shared_ptr<OxMacAddressBook> book;  // null: the group gives nothing up
  Groups subgroups;                        // as they were at the start
  std::size_t next = 0;
};

Level enter(std::shared_ptr<_ABGroup> group) {
  auto subgroups = group->subgroups();
  // A leaf needs no book.
  auto book = subgroups.empty() ? nullptr : group->groupAddressBook();
  return {std::move(group), std::move(book), std::move(subgroups)};
}

// Detaches a direct sub-group and deletes it; one that the store keeps is not deleted.
void detach(ABGroup& from, const std::shared_ptr<_ABGroup>& subgroup, OxMacAddressBook& book) {
  if (from.removeSubgroup(subgroup)) book.reallyRemoveOneGroup(subgroup);
}

}  // namespace

std::shared_ptr<IOxGroup> _ABGroup::addSubGroupByName(TextView name) {
  const auto book = groupAddressBook();
  if (!book) return nullptr;
  auto group = book->newGroup();
  if (!group) return nullptr;
  group->setDisplayName(name);
  addSubgroup(group);
  return group;
}

bool _ABGroup::removeSubGroup(const std::shared_ptr<IOxGroup>& group) {
  const auto book = groupAddressBook();
  const auto subgroup = std::dynamic_pointer_cast<_ABGroup>(group);
  if (!book || !subgroup) return false;
  const auto direct = subgroups();
  if (std::find(direct.begin(), direct.end(), subgroup) == direct.end()) return false;
  subgroup->removeAllSubGroup();
  detach(*this, subgroup, *book);
  return true;
}

// Depth first without recursion: a tree may be deeper than the stack.
void _ABGroup::removeAllSubGroup() {
  std::vector<Level> open;
  open.push_back(enter(std::static_pointer_cast<_ABGroup>(shared_from_this())));
  while (!open.empty()) {
    auto& level = open.back();
    if (level.next < level.subgroups.size()) {
      open.push_back(enter(hostGroup(level.subgroups[level.next])));
      continue;
    }
    const auto done = std::move(level.group);
    open.pop_back();
    if (open.empty()) return;
    auto& parent = open.back();
    ++parent.next;
    if (parent.book) detach(*parent.group, done, *parent.book);
  }
}

}  // namespace ox
