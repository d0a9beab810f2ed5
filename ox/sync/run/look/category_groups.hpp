#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/save_request.hpp"

namespace ox::sync {

// The groups of a container whose book says them as CATEGORIES of their members: a group here is a
// category there, and a member a person with it. As committed when it was made. Throws StoreError.
class CategoryGroups {
 public:
  explicit CategoryGroups(const std::string& container);

  // The names of the groups that the person stands in, each once, in the order of their bytes.
  const std::vector<std::string>& categoriesOf(const RecordKey& person) const;
  // Likewise, of everybody who stands in one.
  const std::unordered_map<RecordKey, std::vector<std::string>>& categories() const {
    return categories_;
  }
  // Of that name, in their order.
  const std::vector<RecordKey>& named(const std::string& name) const;
  // Persons that stand directly in the group.
  const std::unordered_set<RecordKey>& membersOf(const RecordKey& group) const;
  bool holdsGroups(const RecordKey& group) const { return holdingGroups_.contains(group); }
  // The names of those that no category can say, since nobody stands in them.
  const std::vector<std::string>& withoutMembers() const { return withoutMembers_; }

 private:
  std::map<std::string, std::vector<RecordKey>> byName_;
  std::unordered_map<RecordKey, std::unordered_set<RecordKey>> members_;
  std::unordered_set<RecordKey> holdingGroups_;
  std::unordered_map<RecordKey, std::vector<std::string>> categories_;
  std::vector<std::string> withoutMembers_;
};

// What becomes of the groups when the categories of persons change there. Borrows both.
class CategoryLinks {
 public:
  CategoryLinks(const CategoryGroups& groups, std::string container, SaveRequest& request)
      : groups_(groups), container_(std::move(container)), request_(request) {}

  // A category that no group stands for yet makes a new one.
  void enter(const RecordKey& person, const std::string& category);
  void leave(const RecordKey& person, const std::string& category);
  // The person goes altogether.
  void leaveAll(const RecordKey& person);
  // Groups that were left by all are there no more, and go; to be called at the end.
  void removeLeft();

 private:
  RecordKey groupFor(const std::string& category);

  const CategoryGroups& groups_;
  std::string container_;
  SaveRequest& request_;
  std::map<std::string, RecordKey> added_;
  std::unordered_map<RecordKey, std::unordered_set<RecordKey>> left_;
  std::unordered_set<RecordKey> entered_;
};

}  // namespace ox::sync
