// Adding and removing sub-groups.
#include <algorithm>
#include <unordered_set>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"

namespace ox {
namespace {

using GroupRecords = std::vector<std::shared_ptr<ABGroup>>;
using Keys = std::unordered_set<RecordKey>;

// One group whose sub-groups are being torn down.
struct Level {
  std::shared_ptr<_ABGroup> group;
  std::shared_ptr<OxMacAddressBook> book;  // null: the group gives nothing up
  GroupRecords subgroups;                  // as they were at the start
  std::size_t next = 0;
};

// Detaches a direct sub-group and deletes it; one that the store keeps is not deleted.
void detach(ABGroup& from, const std::shared_ptr<_ABGroup>& subgroup, OxMacAddressBook& book) {
  if (from.removeSubgroup(subgroup)) book.reallyRemoveOneGroup(subgroup);
}

// Depth first without recursion: a tree may be deeper than the stack. Groups above the one
// that is being emptied are left alone, so that links in a circle, as a damaged store or the edits
// of two processes make them, end the walk. A group met again by another way was emptied already.
void removeBelow(std::shared_ptr<_ABGroup> root, Keys above) {
  Keys emptied;
  std::vector<Level> open;
  const auto enter = [&](std::shared_ptr<_ABGroup> group) {
    above.insert(group->key());
    auto subgroups = emptied.insert(group->key()).second ? group->subgroups() : GroupRecords();
    std::erase_if(subgroups, [&](const auto& subgroup) { return above.contains(subgroup->key()); });
    // A group without sub-groups gives nothing up, so its book need not be looked for.
    auto book = subgroups.empty() ? nullptr : group->groupAddressBook();
    open.push_back({std::move(group), std::move(book), std::move(subgroups)});
  };
  enter(std::move(root));
  while (true) {
    auto& level = open.back();
    if (level.next < level.subgroups.size()) {
      enter(hostGroup(level.subgroups[level.next]));
      continue;
    }
    const auto done = std::move(level.group);
    open.pop_back();
    if (open.empty()) return;
    above.erase(done->key());
    auto& parent = open.back();
    ++parent.next;
    if (parent.book) detach(*parent.group, done, *parent.book);
  }
}

}  // namespace

std::shared_ptr<IOxGroup> _ABGroup::addSubGroupByName(TextView name) {
  const auto book = groupAddressBook();
  if (!book) return nullptr;
  auto group = book->addGroupByName(name);
  if (group) addSubgroup(recordOf(group));
  return group;
}

bool _ABGroup::removeSubGroup(const std::shared_ptr<IOxGroup>& group) {
  const auto book = groupAddressBook();
  const auto subgroup = recordOf(group);
  if (!book || !subgroup) return false;
  const auto direct = subgroups();
  if (std::find(direct.begin(), direct.end(), subgroup) == direct.end()) return false;
  removeBelow(subgroup, {key()});
  detach(*this, subgroup, *book);
  return true;
}

void _ABGroup::removeAllSubGroup() {
  removeBelow(std::static_pointer_cast<_ABGroup>(shared_from_this()), {});
}

}  // namespace ox
