#include "ox/OxAddressBookSDK/tags/held_tags.hpp"

#include "ox/OxAddressBookSDK/tags/tag_set.hpp"
#include "ox/records/merge.hpp"

namespace ox {

namespace {

// What was not there when the change was begun can be taken away too.
void noteTakenAway(const HeldTags::Tags& before, const HeldTags::Tags& after, TagChange& held) {
  const TagSet kept(after);
  const TagSet knownAfter(held.after);
  HeldTags::Tags takenAway;
  {
    const TagSet knownBefore(held.before);
    for (const auto& tag : before) {
      if (!kept.holds(tag) && !knownBefore.holds(tag) && !knownAfter.holds(tag)) {
        takenAway.push_back(tag);
      }
    }
  }
  held.before.insert(held.before.end(), takenAway.begin(), takenAway.end());
}

}  // namespace

HeldTags::Tags HeldTags::over(std::string_view manager, std::string_view person, Tags tags) const {
  const auto found = places_.find(Whose(person, manager));
  if (found == places_.end()) return tags;
  const auto& change = changes_[found->second];
  return mergedTags(change.before, change.after, tags);
}

std::vector<std::string> HeldTags::managersOf(std::string_view person) const {
  std::vector<std::string> managers;
  auto place = places_.lower_bound(Whose(person, {}));
  for (; place != places_.end() && place->first.first == person; ++place) {
    managers.push_back(place->first.second);
  }
  return managers;
}

std::vector<std::string> HeldTags::personsUnder(std::string_view manager) const {
  std::vector<std::string> persons;
  for (const auto& [whose, place] : places_) {
    if (whose.second == manager) persons.push_back(whose.first);
  }
  return persons;
}

void HeldTags::change(std::string_view manager, std::string_view person, const Tags& before,
                      const Tags& after) {
  const auto [place, isNew] =
      places_.try_emplace({std::string(person), std::string(manager)}, changes_.size());
  if (isNew) {
    changes_.push_back({std::string(manager), std::string(person), before, after});
  } else {
    auto& held = changes_[place->second];
    noteTakenAway(before, after, held);
    held.after = mergedTags(before, after, held.after);
  }
}

void HeldTags::append(const HeldTags& later) {
  for (const auto& each : later.changes_) {
    change(each.manager, each.person, each.before, each.after);
  }
}

std::vector<TagChange> HeldTags::changes() const {
  std::vector<TagChange> result;
  for (const auto& each : changes_) {
    if (each.before != each.after) result.push_back(each);
  }
  return result;
}

void HeldTags::clear() {
  changes_.clear();
  places_.clear();
}

}  // namespace ox
