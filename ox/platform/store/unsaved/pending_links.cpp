#include "ox/platform/store/unsaved/pending_links.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ox/platform/store/committed/committed_records.hpp"

namespace ox {

void PendingLinks::List::append(const RecordKey& child, bool committed) {
  if (!places.emplace(child, Place{order.size(), committed}).second) return;
  order.push_back(child);
  snapshot.reset();
}

bool PendingLinks::List::take(const RecordKey& child) {
  const auto place = places.find(child);
  if (place == places.end()) return false;
  const bool committed = place->second.committed;
  assert(order[place->second.index] == child);
  order[place->second.index] = RecordKey();
  places.erase(place);
  snapshot.reset();
  return committed;
}

void PendingLinks::List::closeHoles() {
  if (places.size() == order.size()) return;
  std::erase(order, RecordKey());
  for (std::size_t i = 0; i < order.size(); ++i) places[order[i]].index = i;
  assert(places.size() == order.size());
}

void PendingLinks::followStore() {
  if (seenGeneration_ == committed_.linkGeneration()) return;
  assert(seenGeneration_ < committed_.linkGeneration());
  seenGeneration_ = committed_.linkGeneration();
  memberLists_.clear();
  groupLists_.clear();
}

PendingLinks::List& PendingLinks::list(const RecordKey& group, RecordKind kind) {
  followStore();
  auto& known = lists(kind);
  const auto found = known.find(group);
  if (found != known.end()) return found->second;
  List made;
  const auto committed = committed_.children(group, kind);
  for (const auto& child : *committed) {
    if (!removed_.contains({group, child}) && !goneRecords_.contains(child)) {
      made.append(child, true);
    }
  }
  const auto additions = addedChildren_.find(group);
  if (additions != addedChildren_.end()) {
    for (const auto& addition : additions->second.list) {
      if (!isValid(group, addition)) continue;
      if (addition.kind == kind && !goneRecords_.contains(addition.child)) {
        made.append(addition.child, false);
      }
    }
  }
  return known.emplace(group, std::move(made)).first->second;
}

bool PendingLinks::isValid(const RecordKey& group, const Addition& addition) const {
  const auto latest = added_.find({group, addition.child});
  return latest != added_.end() && latest->second == addition.number;
}

bool PendingLinks::isLinked(const RecordKey& group, const RecordKey& child, RecordKind childKind) {
  return list(group, childKind).places.contains(child);
}

void PendingLinks::add(const RecordKey& group, const RecordKey& child, RecordKind childKind) {
  assert(group != child && !goneRecords_.contains(group) && !goneRecords_.contains(child));
  assert(!isLinked(group, child, childKind));
  list(group, childKind).append(child, false);
  // A committed link that was taken away and put back stands at the end from now on, so both edits
  // are kept: the save removes it first and then adds it.
  const auto number = nextEdit_++;
  added_.insert_or_assign({group, child}, number);
  auto& additions = addedChildren_[group];
  if (additions.stale * 2 > additions.list.size()) {
    std::erase_if(additions.list, [&](const auto& addition) { return !isValid(group, addition); });
    additions.stale = 0;
  }
  additions.list.push_back({number, child, childKind});
  addedParents_[child].push_back(group);
  editedGroups_.insert(group);
}

void PendingLinks::remove(const RecordKey& group, const RecordKey& child, RecordKind childKind) {
  assert(isLinked(group, child, childKind));
  const bool committed = list(group, childKind).take(child);
  if (added_.erase({group, child}) != 0) {
    std::erase(addedParents_[child], group);
    ++addedChildren_[group].stale;
  }
  if (committed) removed_.insert_or_assign({group, child}, nextEdit_++);
  editedGroups_.insert(group);
}

void PendingLinks::forgetRecord(const RecordKey& key) {
  const auto groups = parents(key);
  goneRecords_.insert(key);
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    lists(kind).erase(key);
    for (const auto& group : *groups) {
      const auto found = lists(kind).find(group);
      if (found != lists(kind).end()) found->second.take(key);
    }
  }
}

RecordKeysPtr PendingLinks::children(const RecordKey& group, RecordKind kind) {
  followStore();
  if (goneRecords_.contains(group)) return std::make_shared<const RecordKeys>();
  if (goneRecords_.empty() && !editedGroups_.contains(group))
    return committed_.children(group, kind);
  auto& known = list(group, kind);
  if (!known.snapshot) {
    known.closeHoles();
    known.snapshot = std::make_shared<const RecordKeys>(known.order);
  }
  return known.snapshot;
}

RecordKeysPtr PendingLinks::parents(const RecordKey& child) {
  followStore();
  auto committed = committed_.parents(child);
  if (empty() && goneRecords_.empty()) return committed;
  auto keys = std::make_shared<RecordKeys>();
  for (const auto& group : *committed) {
    if (!removed_.contains({group, child}) && !goneRecords_.contains(group)) keys->push_back(group);
  }
  const auto added = addedParents_.find(child);
  if (added != addedParents_.end()) {
    for (const auto& group : added->second) {
      if (goneRecords_.contains(group)) continue;
      if (std::find(keys->begin(), keys->end(), group) == keys->end()) keys->push_back(group);
    }
  }
  return keys;
}

std::vector<Link> PendingLinks::inOrder(const Edits& edits) const {
  std::vector<std::pair<std::uint64_t, Link>> numbered;
  numbered.reserve(edits.size());
  for (const auto& [pair, number] : edits) {
    if (goneRecords_.contains(pair.group) || goneRecords_.contains(pair.child)) continue;
    numbered.push_back({number, {pair.group, pair.child}});
  }
  std::sort(numbered.begin(), numbered.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<Link> links;
  links.reserve(numbered.size());
  for (const auto& [number, link] : numbered) links.push_back(link);
  return links;
}

std::vector<Link> PendingLinks::addedLinks() const {
  return inOrder(added_);
}

std::vector<Link> PendingLinks::removedLinks() const {
  return inOrder(removed_);
}

void PendingLinks::clear() {
  added_.clear();
  removed_.clear();
  addedParents_.clear();
  addedChildren_.clear();
  editedGroups_.clear();
  goneRecords_.clear();
  memberLists_.clear();
  groupLists_.clear();
}

}  // namespace ox
