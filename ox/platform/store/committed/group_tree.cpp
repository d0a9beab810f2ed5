#include "ox/platform/store/committed/group_tree.hpp"

#include "ox/platform/store/committed/circle.hpp"

namespace ox {
namespace {

void appendAdded(const std::unordered_map<std::int64_t, std::vector<std::int64_t>>& added,
                 std::int64_t row, std::vector<std::int64_t>& rows) {
  const auto found = added.find(row);
  if (found != added.end()) rows.insert(rows.end(), found->second.begin(), found->second.end());
}

}  // namespace

void GroupTree::addLink(std::int64_t group, std::int64_t subgroup) {
  addedParents_[subgroup].push_back(group);
  addedSubgroups_[group].push_back(subgroup);
}

void GroupTree::removeLink(std::int64_t group, std::int64_t subgroup) {
  removedLinks_.insert({group, subgroup});
}

void GroupTree::removeGroup(std::int64_t group) {
  removedGroups_.insert(group);
}

bool GroupTree::isGone(std::int64_t group, std::int64_t subgroup) const {
  return removedLinks_.contains({group, subgroup}) || removedGroups_.contains(group) ||
         removedGroups_.contains(subgroup);
}

GroupTree::Rows GroupTree::parents(std::int64_t row) {
  Rows found;
  if (row < firstRow_) {
    auto& rows = file_.statement(Sql::ParentRows);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, row);
    while (rows.step()) {
      if (!isGone(rows.integer(0), row)) found.push_back(rows.integer(0));
    }
  }
  appendAdded(addedParents_, row, found);
  return found;
}

GroupTree::Rows GroupTree::subgroups(std::int64_t row) {
  Rows found;
  if (row < firstRow_) {
    auto& rows = file_.statement(Sql::SubgroupRows);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, row).bind(2, static_cast<std::int64_t>(RecordKind::Group));
    while (rows.step()) {
      if (!isGone(row, rows.integer(0))) found.push_back(rows.integer(0));
    }
  }
  appendAdded(addedSubgroups_, row, found);
  return found;
}

bool GroupTree::wouldCloseCircle(std::int64_t group, std::int64_t subgroup) {
  return file_.guarded([&] {
    return closesCircle(
        group, subgroup, [this](std::int64_t row) { return parents(row); },
        [this](std::int64_t row) { return subgroups(row); });
  });
}

}  // namespace ox
