#include "ox/transfer/group_import.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

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
  children_.clear();
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
  resolveMembers();
  findStored();
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

void GroupImport::resolveMembers() {
  std::vector<std::string_view> uids;
  std::unordered_set<std::string_view> met;
  for (const auto& group : groups_) {
    for (const auto& member : group.card.members) {
      if (!byUid_.contains(member) && met.insert(member).second) uids.push_back(member);
    }
  }
  const auto persons = firstMatches(RecordKind::Person, uids);
  std::erase_if(uids, [&](std::string_view uid) { return persons.contains(uid); });
  const auto stored = firstMatches(RecordKind::Group, uids);
  for (auto& group : groups_) {
    for (const auto& member : group.card.members) {
      if (const auto here = byUid_.find(member); here != byUid_.end()) {
        group.subgroups.push_back(here->second);
      } else if (const auto person = persons.find(member); person != persons.end()) {
        group.persons.push_back(person->second);
      } else if (const auto known = stored.find(member); known != stored.end()) {
        group.storedSubgroups.push_back(known->second);
      } else {
        report(group, "the member " + member + " is not there");
      }
    }
  }
}

// By UID; those that are not there are missing.
std::unordered_map<std::string_view, RecordKey> GroupImport::firstMatches(
    RecordKind kind, const std::vector<std::string_view>& uids) {
  std::vector<SoughtRecord> sought;
  sought.reserve(uids.size());
  for (const auto uid : uids) sought.push_back({uid});
  std::unordered_map<std::string_view, RecordKey> first;
  if (sought.empty()) return first;
  const auto found = source_.matches(container_, kind, sought);
  for (std::size_t i = 0; i < uids.size(); ++i) {
    if (!found[i].empty()) first.emplace(uids[i], found[i].front().key);
  }
  return first;
}

void GroupImport::findStored() {
  if (groups_.empty()) return;
  std::vector<std::string> uids;
  uids.reserve(groups_.size());
  std::vector<SoughtRecord> sought;
  std::vector<std::size_t> questions;  // of each group, which of them; groups alike share one
  std::unordered_map<std::uint64_t, std::size_t> byContent;
  for (const auto& group : groups_) {
    uids.push_back(plainUid(group.card));
    const auto& uid = uids.back();
    const auto content = uid.empty() ? contentFingerprint(group.card.properties, nullptr) : 0;
    const auto next = sought.size();
    questions.push_back(uid.empty() ? byContent.emplace(content, next).first->second : next);
    if (questions.back() == next) sought.push_back({uid, content});
  }
  const auto found = source_.matches(container_, RecordKind::Group, sought);
  RecordKeys candidates;
  for (const auto& records : found) {
    for (const auto& record : records) candidates.push_back(record.key);
  }
  askForChildren(candidates);
  std::unordered_map<std::size_t, GroupsAlike> alike;
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    const auto& records = found[questions[i]];
    if (records.empty()) continue;
    auto key = records.front().key;
    if (uids[i].empty()) key = alike[questions[i]].holderOf(groups_[i], records, *this);
    if (key.isNone()) continue;
    groups_[i].key = key;
    groups_[i].stored = true;
  }
}

RecordKey GroupImport::GroupsAlike::holderOf(const Group& group, const FoundRecords& records,
                                             const GroupImport& import) {
  if (group.persons.empty()) return records.front().key;
  if (holders_.empty()) {
    for (const auto& record : records) {
      for (const auto& person : import.childrenOf(record.key, RecordKind::Person)) {
        holders_[person].insert(record.key);
        inOrder_[person].push_back(record.key);
      }
    }
  }
  // Of those that hold the person whom the fewest hold, the first that holds the others too.
  const RecordKeys* fewest = nullptr;
  for (const auto& person : group.persons) {
    const auto held = inOrder_.find(person);
    if (held == inOrder_.end()) return {};
    if (fewest == nullptr || held->second.size() < fewest->size()) fewest = &held->second;
  }
  for (const auto& key : *fewest) {
    if (std::ranges::all_of(
            group.persons, [&](const auto& person) { return holders_.at(person).contains(key); })) {
      return key;
    }
  }
  return {};
}

void GroupImport::askForChildren(const RecordKeys& groups) {
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    const auto lists = source_.committedChildren(groups, kind);
    for (std::size_t i = 0; i < groups.size(); ++i) children_[kind][groups[i]] = lists[i];
  }
}

const RecordKeys& GroupImport::childrenOf(const RecordKey& stored, RecordKind kind) const {
  return *children_.at(kind).at(stored);
}

bool GroupImport::holdsAllPersons(const Group& group, const RecordKey& stored) {
  const auto& held = childrenOf(stored, RecordKind::Person);
  const std::unordered_set<RecordKey> members(held.begin(), held.end());
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
  const auto& children = childrenOf(group.key, RecordKind::Group);
  const std::unordered_set<RecordKey> held(children.begin(), children.end());
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
  for (const auto& child : childrenOf(group.key, kind)) {
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
  RecordKeys level{top};
  while (!level.empty()) {
    const auto lists = source_.committedChildren(level, RecordKind::Group);
    RecordKeys next;
    const auto visit = [&](const RecordKey& child) {
      if (seen.insert(child).second) next.push_back(child);
    };
    for (std::size_t i = 0; i < level.size(); ++i) {
      const auto& key = level[i];
      if (key == group || ++steps_ > kMaxSteps) return true;
      const auto removed = removed_.find(key);
      for (const auto& child : *lists[i]) {
        if (removed == removed_.end() || !removed->second.contains(child)) visit(child);
      }
      const auto [first, last] = nested_.equal_range(key);
      for (auto link = first; link != last; ++link) visit(link->second);
    }
    level = std::move(next);
  }
  return false;
}

}  // namespace ox::vcard
