// Adding persons to a group and removing them from it and from the groups below it, with progress.
#include <unordered_set>
#include <utility>

#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"

namespace ox {
namespace {

using GroupRecords = std::vector<std::shared_ptr<ABGroup>>;

void removeFrom(ABGroup& group, const Persons& persons) {
  for (const auto& person : persons) group.removeMember(recordOf(person));
}

// Removes persons from a tree of groups, sub-groups before the group that holds them, with the
// reports of every level mapped through all levels above it. Without recursion: a tree may be
// deeper than the stack. A sub-group that is above its holder as well counts as none, so that links
// in a circle, as a damaged store or the edits of two processes make them, end the walk.
class RemovalFromTree {
 public:
  RemovalFromTree(const Persons& persons, const ProgressCallback& progress)
      : persons_(persons), progress_(progress) {}

  void run(std::shared_ptr<ABGroup> root) {
    enter(std::move(root));
    while (!open_.empty()) {
      auto& level = open_.back();
      if (level.next < level.subgroups.size()) {
        enter(level.subgroups[level.next]);
        continue;
      }
      removeMembers(*level.group);
      path_.erase(level.group->key());
      open_.pop_back();
      if (!open_.empty()) subgroupDone();
    }
  }

 private:
  struct Level {
    std::shared_ptr<ABGroup> group;
    GroupRecords subgroups;  // as they were at the start
    std::size_t next = 0;
    double share = 0;
  };

  void enter(std::shared_ptr<ABGroup> group) {
    path_.insert(group->key());
    auto subgroups = group->subgroups();
    std::erase_if(subgroups, [this](const auto& below) { return path_.contains(below->key()); });
    const auto share = static_cast<double>(100.0F / static_cast<float>(subgroups.size()));
    open_.push_back({std::move(group), std::move(subgroups), 0, share});
  }

  void subgroupDone() {
    auto& level = open_.back();
    ++level.next;
    report(progress::percent(level.next, level.subgroups.size()) * 0.5);
  }

  void removeMembers(ABGroup& group) {
    for (std::size_t k = 0; k < persons_.size(); ++k) {
      group.removeMember(recordOf(persons_[k]));
      report(progress::percent(k + 1, persons_.size()) * 0.5 + 50.0);
    }
    report(progress::kDone, open_.size() == 1);
  }

  // A report of the innermost open level, as the outermost callback sees it.
  void report(double value, bool finished = false) const {
    if (!progress_) return;
    for (std::size_t above = open_.size() - 1; above-- > 0;) {
      value = (value + open_[above].share * value / 100) * 0.5;
    }
    progress_(value, finished);
  }

  const Persons& persons_;
  const ProgressCallback& progress_;
  std::vector<Level> open_;
  std::unordered_set<RecordKey> path_;  // the groups of open_
};

// The group and all groups below it, each once, sub-groups before the group that holds them.
GroupRecords fromTheLeaves(const std::shared_ptr<ABGroup>& root) {
  struct Level {
    std::shared_ptr<ABGroup> group;
    GroupRecords subgroups;
    std::size_t next = 0;
  };
  GroupRecords order;
  std::unordered_set<RecordKey> met{root->key()};
  std::vector<Level> open;
  open.push_back({root, root->subgroups()});
  while (!open.empty()) {
    auto& level = open.back();
    if (level.next == level.subgroups.size()) {
      order.push_back(std::move(level.group));
      open.pop_back();
      continue;
    }
    auto next = level.subgroups[level.next++];
    if (!met.insert(next->key()).second) continue;
    auto subgroups = next->subgroups();
    open.push_back({std::move(next), std::move(subgroups)});
  }
  return order;
}

}  // namespace

void _ABGroup::addPersons(const Persons& persons) {
  addPersons_progress(persons, nullptr);
}

void _ABGroup::addPersons_progress(const Persons& persons, const ProgressCallback& progress) {
  // The members are taken once, before the first is added: a person named twice in the list is
  // offered to the store twice. Required.
  std::unordered_set<RecordKey> before;
  for (const auto& member : members()) before.insert(member->key());
  for (std::size_t k = 0; k < persons.size(); ++k) {
    const auto record = recordOf(persons[k]);
    if (record && !before.contains(record->key())) addMember(record);
    progress::report(progress, progress::percent(k + 1, persons.size()));
  }
  progress::report(progress, progress::kDone, true);
}

void _ABGroup::removePersonsFromThisGroup(const Persons& persons) {
  removeFrom(*this, persons);
}

void _ABGroup::removePersons(const Persons& persons) {
  for (const auto& group : fromTheLeaves(std::static_pointer_cast<ABGroup>(shared_from_this()))) {
    removeFrom(*group, persons);
  }
}

void _ABGroup::removePersonsOfSubGroup(const Persons& persons) {
  for (const auto& group : subgroups()) hostGroup(group)->removePersons(persons);
}

void _ABGroup::removePersons_progress(const Persons& persons, const ProgressCallback& progress) {
  removePersonsPrivate_progress(persons, progress);
}

void _ABGroup::removePersonsPrivate_progress(const Persons& persons,
                                             const ProgressCallback& progress) {
  if (!progress) return removePersons(persons);
  RemovalFromTree(persons, progress).run(std::static_pointer_cast<ABGroup>(shared_from_this()));
}

}  // namespace ox
