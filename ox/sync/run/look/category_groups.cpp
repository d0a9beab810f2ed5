#include "ox/sync/run/look/category_groups.hpp"

#include <algorithm>
#include <utility>

#include "ox/platform/store/contact_source.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::sync {
namespace {

const std::vector<std::string>& noTexts() {
  static const auto& none = *new std::vector<std::string>;
  return none;
}

const std::vector<RecordKey>& noKeys() {
  static const auto& none = *new std::vector<RecordKey>;
  return none;
}

const std::unordered_set<RecordKey>& noMembers() {
  static const auto& none = *new std::unordered_set<RecordKey>;
  return none;
}

template <typename Map, typename Key, typename Value>
const Value& foundOr(const Map& map, const Key& key, const Value& otherwise) {
  const auto found = map.find(key);
  return found != map.end() ? found->second : otherwise;
}

bool isBlank(const std::string& category) {
  return vcard::trimmed(category).empty();
}

}  // namespace

CategoryGroups::CategoryGroups(const std::string& container) {
  const auto groups = containerSource().recordsIn(container, RecordKind::Group);
  const auto persons = containerSource().committedChildren(groups, RecordKind::Person);
  const auto below = containerSource().committedChildren(groups, RecordKind::Group);
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const auto values = containerSource().committedValues(groups[i]);
    const auto* given = values ? values->text(property_id::kGroupName) : nullptr;
    if (given == nullptr || isBlank(*given)) continue;
    const auto name = *given;
    byName_[name].push_back(groups[i]);
    if (below[i] && !below[i]->empty()) holdingGroups_.insert(groups[i]);
    auto& members = members_[groups[i]];
    if (persons[i]) members.insert(persons[i]->begin(), persons[i]->end());
    if (members.empty()) withoutMembers_.push_back(name);
    for (const auto& member : members) categories_[member].push_back(name);
  }
  for (auto& [person, names] : categories_) {
    std::ranges::sort(names);
    names.erase(std::unique(names.begin(), names.end()), names.end());
  }
}

const std::vector<std::string>& CategoryGroups::categoriesOf(const RecordKey& person) const {
  return foundOr(categories_, person, noTexts());
}

const std::vector<RecordKey>& CategoryGroups::named(const std::string& name) const {
  return foundOr(byName_, name, noKeys());
}

const std::unordered_set<RecordKey>& CategoryGroups::membersOf(const RecordKey& group) const {
  return foundOr(members_, group, noMembers());
}

RecordKey CategoryLinks::groupFor(const std::string& category) {
  if (const auto& known = groups_.named(category); !known.empty()) return known.front();
  const auto [added, isNew] = added_.try_emplace(category);
  if (!isNew) return added->second;
  added->second = RecordKey::make(RecordKind::Group);
  NewRecord group;
  group.key = added->second;
  group.kind = RecordKind::Group;
  group.container = container_;
  group.properties.set(property_id::kGroupName, Object(category));
  request_.additions.push_back(std::move(group));
  return added->second;
}

void CategoryLinks::enter(const RecordKey& person, const std::string& category) {
  if (isBlank(category)) return;
  const auto group = groupFor(category);
  request_.links.push_back({group, person});
  entered_.insert(group);
}

void CategoryLinks::leave(const RecordKey& person, const std::string& category) {
  for (const auto& group : groups_.named(category)) {
    if (!groups_.membersOf(group).contains(person)) continue;
    request_.removedLinks.push_back({group, person});
    left_[group].insert(person);
  }
}

void CategoryLinks::leaveAll(const RecordKey& person) {
  for (const auto& category : groups_.categoriesOf(person)) {
    for (const auto& group : groups_.named(category)) {
      if (groups_.membersOf(group).contains(person)) left_[group].insert(person);
    }
  }
}

void CategoryLinks::removeLeft() {
  for (const auto& [group, persons] : left_) {
    const bool isEmpty = persons.size() == groups_.membersOf(group).size() &&
                         !entered_.contains(group) && !groups_.holdsGroups(group);
    if (isEmpty) request_.removals.push_back({group, std::nullopt});
  }
}

}  // namespace ox::sync
