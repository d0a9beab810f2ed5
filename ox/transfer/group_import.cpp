#include "ox/transfer/group_import.hpp"

#include <algorithm>
#include <stdexcept>

#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/transfer/person_import.hpp"

namespace ox::vcard {
namespace {

constexpr auto kNoGroup = static_cast<std::size_t>(-1);
// How far the search for circles through stored groups goes in one import.
constexpr std::size_t kMaxSteps = 10'000'000;
// How often the groups are worked out.
constexpr int kTries = 5;

std::string plainUid(const Card& card) {
  const auto* uid = card.properties.text(property_id::kCardUid);
  return std::string(uid != nullptr ? uidKey(*uid) : std::string_view());
}

std::string nameAndMembers(const Card& card) {
  const auto* name = card.properties.text(property_id::kGroupName);
  std::string text = name != nullptr ? *name : std::string();
  for (const auto& member : card.members) (text += '\0') += member;
  return text;
}

std::size_t sizeOf(const Card& card) {
  std::size_t size = sizeof(Card);
  for (const auto& member : card.members) size += sizeof(std::string) + member.size();
  return size;
}

}  // namespace

void GroupImport::report(const Group& group, std::string reason) {
  counted_.addProblem(group.file, group.card.line, std::move(reason));
}

void GroupImport::add(const std::string& file, Card card) {
  ++counted_.cards;
  bytes_ += sizeOf(card);
  if (bytes_ > kMaxBytes) {
    ++counted_.refused;
    counted_.addProblem(file, card.line, "more groups than one import takes");
    return;
  }
  ++counted_.groups;
  if (!card.repairs.empty()) ++counted_.repaired;
  for (auto& repair : card.repairs)
    counted_.addProblem(file, repair.line, std::move(repair.reason));

  const auto uid = plainUid(card);
  if (uid.empty()) {
    if (!withoutUid_.insert(nameAndMembers(card)).second) return;
  } else if (const auto [known, isNew] = byUid_.emplace(uid, groups_.size()); !isNew) {
    if (nameAndMembers(groups_[known->second].card) != nameAndMembers(card)) {
      counted_.addProblem(file, card.line,
                          "differs from an earlier group with the same UID; left out");
    }
    return;
  }
  groups_.push_back({file, std::move(card), RecordKey::make(RecordKind::Group), false, {}, {}, {}});
}

void GroupImport::commit() {
  int tries = 1;
  while (!tryCommit(tries < kTries ? SaveRequest::WhenOutdated::Refuse
                                   : SaveRequest::WhenOutdated::LeaveOut)) {
    ++tries;
  }
  groups_.clear();
  report_.takeCounts(counted_);
}

bool GroupImport::tryCommit(SaveRequest::WhenOutdated whenOutdated) {
  const auto problems = counted_.problems.size();
  const auto problemCount = counted_.problemCount;
  const auto moment = source_.moment();
  auto request = workOut();
  if (request.additions.empty() && request.replacements.empty() && request.removedLinks.empty() &&
      request.links.empty()) {
    return true;
  }
  request.moment = moment;
  request.whenOutdated = whenOutdated;
  if (!source_.execute(request)) {
    if (!request.outdated) throw std::runtime_error(request.reason);
    forgetTry(problems, problemCount);
    return false;
  }
  reportLeftOut(request);
  return true;
}

void GroupImport::forgetTry(std::size_t problems, std::uint64_t problemCount) {
  counted_.problems.resize(problems);
  counted_.problemCount = problemCount;
  for (auto& group : groups_) {
    if (group.stored) group.key = RecordKey::make(RecordKind::Group);
    group.stored = false;
    group.namesFewer = false;
    group.persons.clear();
    group.subgroups.clear();
    group.storedSubgroups.clear();
  }
  nested_.clear();
  removed_.clear();
  steps_ = 0;
}

void GroupImport::reportLeftOut(const SaveRequest& request) {
  std::unordered_map<RecordKey, const Group*> byKey;
  for (const auto& group : groups_) byKey.emplace(group.key, &group);
  for (const auto& record : request.additions) {
    if (record.leftOut) report(*byKey.at(record.key), "was added elsewhere meanwhile; left out");
  }
  for (const auto& record : request.replacements) {
    if (record.leftOut) report(*byKey.at(record.key), "was removed elsewhere meanwhile; left out");
  }
  for (const auto& link : request.links) {
    if (link.leftOut) {
      report(*byKey.at(link.group), "the member " + link.child.text() + " could not be added");
    }
  }
}

SaveRequest GroupImport::workOut() {
  SaveRequest request;
  for (auto& group : groups_) {
    resolveMembers(group);
    findStored(group);
  }
  breakCircles();
  removeUnnamed(request);
  // New groups first: nothing stored leads into them yet, so their links close no circle.
  for (const auto& group : groups_) {
    if (!group.stored) collectNew(group, request);
  }
  for (const auto& group : groups_) {
    if (group.stored) collectStored(group, request);
  }
  return request;
}

void GroupImport::resolveMembers(Group& group) {
  for (const auto& member : group.card.members) {
    const auto inImport = byUid_.find(member);
    if (inImport != byUid_.end()) {
      group.subgroups.push_back(inImport->second);
      continue;
    }
    const auto persons = source_.recordsWithCardUid(container_, RecordKind::Person, member);
    if (!persons.empty()) {
      group.persons.push_back(persons.front());
      continue;
    }
    const auto groups = source_.recordsWithCardUid(container_, RecordKind::Group, member);
    if (!groups.empty()) {
      group.storedSubgroups.push_back(groups.front());
    } else {
      report(group, "the member " + member + " is not there");
    }
  }
}

void GroupImport::findStored(Group& group) {
  const auto uid = plainUid(group.card);
  RecordKeys found;
  if (!uid.empty()) {
    found = source_.recordsWithCardUid(container_, RecordKind::Group, uid);
  } else {
    found = source_.recordsWithFingerprint(container_, RecordKind::Group,
                                           contentFingerprint(group.card.properties, nullptr));
    std::erase_if(found, [&](const RecordKey& key) { return !holdsAllPersons(group, key); });
  }
  if (found.empty()) return;
  group.key = found.front();
  group.stored = true;
}

bool GroupImport::holdsAllPersons(const Group& group, const RecordKey& stored) {
  const auto held = source_.committedChildren(stored, RecordKind::Person);
  const std::unordered_set<RecordKey> members(held->begin(), held->end());
  return std::all_of(group.persons.begin(), group.persons.end(),
                     [&](const RecordKey& person) { return members.contains(person); });
}

void GroupImport::breakCircles() {
  std::vector<char> colours(groups_.size(), 0);
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    if (colours[i] == 0 && !groups_[i].stored) breakCirclesFrom(i, colours);
  }
}

void GroupImport::breakCirclesFrom(std::size_t start, std::vector<char>& colours) {
  enum Colour : char { New, Open, Done };
  struct Step {
    std::size_t group;
    std::size_t next = 0;  // of its sub-groups
  };
  std::vector<Step> path{{start}};
  colours[start] = Open;
  while (!path.empty()) {
    auto& step = path.back();
    auto& subgroups = groups_[step.group].subgroups;
    if (step.next == subgroups.size()) {
      colours[step.group] = Done;
      path.pop_back();
      continue;
    }
    auto& child = subgroups[step.next++];
    if (groups_[child].stored) continue;
    if (colours[child] == Open) {
      report(groups_[step.group], "would lie in itself; that member was left out");
      child = kNoGroup;
    } else if (colours[child] == New) {
      colours[child] = Open;
      path.push_back({child});
    }
  }
}

void GroupImport::collectNew(const Group& group, SaveRequest& request) {
  request.additions.push_back(
      {group.key, RecordKind::Group, container_, group.card.properties, nullptr});
  for (const auto& person : group.persons) request.links.push_back({group.key, person});
  for (const auto& child : group.subgroups) {
    if (child == kNoGroup) continue;
    request.links.push_back({group.key, groups_[child].key});
    nested_.emplace(group.key, groups_[child].key);
  }
  for (const auto& child : group.storedSubgroups) {
    request.links.push_back({group.key, child});
    nested_.emplace(group.key, child);
  }
}

void GroupImport::collectStored(const Group& group, SaveRequest& request) {
  if (plainUid(group.card).empty()) return;  // matched by what it holds
  const auto values = source_.committedValues(group.key);
  const bool sameValues = values && (sameContent(*values, group.card.properties) ||
                                     isOurCardOf(group.card, *values, nullptr));
  auto nestedKeys = group.storedSubgroups;
  for (const auto& child : group.subgroups) {
    if (child != kNoGroup) nestedKeys.push_back(groups_[child].key);
  }
  const auto children = source_.committedChildren(group.key, RecordKind::Group);
  const std::unordered_set<RecordKey> held(children->begin(), children->end());
  std::erase_if(nestedKeys, [&](const RecordKey& child) { return held.contains(child); });
  const bool sameMembers = nestedKeys.empty() && holdsAllPersons(group, group.key);
  if (sameValues && sameMembers && (!group.namesFewer || options_.update)) return;
  if (!options_.update) {
    report(group, "differs from the group with the same UID; not updated");
    return;
  }
  if (!sameValues) request.replacements.push_back({group.key, group.card.properties, nullptr});
  for (const auto& person : group.persons) request.links.push_back({group.key, person});
  for (const auto& child : nestedKeys) nest(group, child, request);
}

RecordKeys GroupImport::unnamedMembers(const Group& group, RecordKind kind) {
  const auto& direct = kind == RecordKind::Person ? group.persons : group.storedSubgroups;
  std::unordered_set<RecordKey> named(direct.begin(), direct.end());
  for (const auto child : group.subgroups) {
    if (child != kNoGroup) named.insert(groups_[child].key);
  }
  RecordKeys unnamed;
  const auto held = source_.committedChildren(group.key, kind);
  for (const auto& child : *held) {
    if (!named.contains(child)) unnamed.push_back(child);
  }
  return unnamed;
}

// Known before anything is added, so that a group may come to lie in one that it held.
void GroupImport::removeUnnamed(SaveRequest& request) {
  for (auto& group : groups_) {
    if (!group.stored || plainUid(group.card).empty()) continue;
    const auto persons = unnamedMembers(group, RecordKind::Person);
    const auto subgroups = unnamedMembers(group, RecordKind::Group);
    group.namesFewer = !persons.empty() || !subgroups.empty();
    if (!options_.update) continue;
    for (const auto& child : persons) request.removedLinks.push_back({group.key, child});
    for (const auto& child : subgroups) {
      request.removedLinks.push_back({group.key, child});
      removed_[group.key].insert(child);
    }
  }
}

void GroupImport::nest(const Group& group, const RecordKey& child, SaveRequest& request) {
  if (isBelow(group.key, child)) {
    report(group, "would lie in itself; that member was left out");
    return;
  }
  request.links.push_back({group.key, child});
  nested_.emplace(group.key, child);
}

bool GroupImport::isBelow(const RecordKey& group, const RecordKey& top) {
  std::unordered_set<RecordKey> seen{top};
  RecordKeys open{top};
  while (!open.empty()) {
    const auto key = open.back();
    open.pop_back();
    if (key == group || ++steps_ > kMaxSteps) return true;
    const auto visit = [&](const RecordKey& child) {
      if (seen.insert(child).second) open.push_back(child);
    };
    const auto below = source_.committedChildren(key, RecordKind::Group);
    const auto removed = removed_.find(key);
    for (const auto& child : *below) {
      if (removed == removed_.end() || !removed->second.contains(child)) visit(child);
    }
    const auto [first, last] = nested_.equal_range(key);
    for (auto link = first; link != last; ++link) visit(link->second);
  }
  return false;
}

}  // namespace ox::vcard
