#include "ox/platform/store/unsaved/pending_links.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/unsaved/pending_values.hpp"

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

// The committed links may have changed, or edits may have gone: what follows from both is made
// anew.
void PendingLinks::follow() {
  if (!indexed_) {
    forgetIndex();
    for (std::size_t i = 0; i < edits_.size(); ++i) index(static_cast<EditIndex>(i));
    indexed_ = true;
  }
  if (seenGeneration_ == committed_.linkGeneration()) return;
  assert(seenGeneration_ < committed_.linkGeneration());
  seenGeneration_ = committed_.linkGeneration();
  forgetLists();
}

void PendingLinks::forgetIndex() noexcept {
  added_.clear();
  removed_.clear();
  addedParents_.clear();
  addedChildren_.clear();
  editedGroups_.clear();
  forgetLists();
}

void PendingLinks::index(EditIndex edit) {
  const auto& [link, act, kind, what, isOverOthers] = edits_[edit];
  if (what == What::TakenBack) return;
  editedGroups_.insert(link.group);
  if (what == What::Add) {
    indexAddition(edit);
  } else {
    dropAddition(link, act);
    removed_.insert_or_assign(link, edit);
  }
}

void PendingLinks::indexAddition(EditIndex addition) {
  const auto& link = edits_[addition].link;
  auto& additions = addedChildren_[link.group];
  if (additions.stale * 2 > additions.list.size()) {
    std::erase_if(additions.list, [&](EditIndex each) { return !isValid(each); });
    additions.stale = 0;
  }
  additions.list.push_back(addition);
  if (added_.insert_or_assign(link, addition).second) {
    addedParents_[link.child].push_back(link.group);
  }
}

bool PendingLinks::dropAddition(const Pair& link, ActId act) {
  const auto found = added_.find(link);
  if (found == added_.end()) return false;
  auto& addition = edits_[found->second];
  if (addition.act == act) {
    addition.what = What::TakenBack;
    ++takenBack_;
  }
  added_.erase(found);
  std::erase(addedParents_[link.child], link.group);
  ++addedChildren_[link.group].stale;
  return true;
}

bool PendingLinks::isValid(EditIndex addition) const {
  const auto latest = added_.find(edits_[addition].link);
  return latest != added_.end() && latest->second == addition;
}

PendingLinks::List& PendingLinks::list(const RecordKey& group, RecordKind kind) {
  follow();
  auto& known = lists(kind);
  const auto found = known.find(group);
  if (found != known.end()) return found->second;
  List made;
  const auto committed = committed_.children(group, kind);
  for (const auto& child : *committed) {
    if (!removed_.contains({group, child}) && !values_.isRemoved(child)) made.append(child, true);
  }
  const auto additions = addedChildren_.find(group);
  if (additions != addedChildren_.end()) {
    for (const auto addition : additions->second.list) {
      const auto& edit = edits_[addition];
      if (!isValid(addition) || edit.childKind != kind) continue;
      if (!values_.isRemoved(edit.link.child)) made.append(edit.link.child, false);
    }
  }
  return known.emplace(group, std::move(made)).first->second;
}

bool PendingLinks::isLinked(const RecordKey& group, const RecordKey& child, RecordKind childKind) {
  return list(group, childKind).places.contains(child);
}

bool PendingLinks::isLinkedByOthers(const ActIds& acts, const RecordKey& group,
                                    const RecordKey& child) {
  follow();
  const auto latest = added_.find({group, child});
  return latest != added_.end() && !isAmong(acts, edits_[latest->second].act);
}

bool PendingLinks::isUnlinkedByOthers(const ActIds& acts, const RecordKey& group,
                                      const RecordKey& child) {
  follow();
  const auto latest = removed_.find({group, child});
  return latest != removed_.end() && !added_.contains({group, child}) &&
         !isAmong(acts, edits_[latest->second].act);
}

// Edits that were taken back are cleared away when they are the most.
void PendingLinks::push(const Edit& edit) {
  constexpr std::size_t kFewest = 64;
  edits_.push_back(edit);
  if (takenBack_ < kFewest || takenBack_ * 2 < edits_.size()) {
    index(static_cast<EditIndex>(edits_.size() - 1));
    return;
  }
  std::erase_if(edits_, [](const Edit& each) { return each.what == What::TakenBack; });
  takenBack_ = 0;
  indexed_ = false;
}

void PendingLinks::add(ActId act, const RecordKey& group, const RecordKey& child,
                       RecordKind childKind) {
  assert(group != child && !values_.isRemoved(group) && !values_.isRemoved(child));
  const bool isOverOthers = isLinkedByOthers({act}, group, child);
  assert(isOverOthers || !isLinked(group, child, childKind));
  if (isOverOthers) lists(childKind).erase(group);  // the link stands at the end from now on
  list(group, childKind).append(child, false);
  // A committed link that was taken away and put back stands at the end from now on, so both edits
  // are kept: the save removes it first and then adds it.
  push({{group, child}, act, childKind, What::Add, isOverOthers});
}

void PendingLinks::remove(ActId act, const RecordKey& group, const RecordKey& child,
                          RecordKind childKind) {
  assert(isLinked(group, child, childKind) || isUnlinkedByOthers({act}, group, child));
  const bool committed = list(group, childKind).take(child);
  const auto latest = added_.find({group, child});
  const bool isOwn = latest != added_.end() && edits_[latest->second].act == act;
  if (!isOwn || committed || edits_[latest->second].isOverOthers) {
    push({{group, child}, act, childKind, What::Remove});
  } else {
    dropAddition({group, child}, act);
  }
}

void PendingLinks::takeBackAddition(ActId act, const RecordKey& group, const RecordKey& child,
                                    RecordKind childKind) {
  follow();
  auto& addition = edits_[added_.at({group, child})];
  assert(addition.act == act);
  if (!addition.isOverOthers) return remove(act, group, child, childKind);
  addition.what = What::TakenBack;
  ++takenBack_;
  indexed_ = false;  // the other act's stands again
}

void PendingLinks::forgetRecord(const RecordKey& key) {
  follow();
  // Its groups are looked for only where one of them may have a list already.
  if (memberLists_.empty() && groupLists_.empty()) return;
  const auto groups = parents(key);
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    lists(kind).erase(key);
    for (const auto& group : *groups) {
      const auto found = lists(kind).find(group);
      if (found != lists(kind).end()) found->second.take(key);
    }
  }
}

RecordKeysPtr PendingLinks::children(const RecordKey& group, RecordKind kind) {
  follow();
  if (values_.isRemoved(group)) return std::make_shared<const RecordKeys>();
  if (!values_.hasRemovals() && !editedGroups_.contains(group))
    return committed_.children(group, kind);
  auto& known = list(group, kind);
  if (!known.snapshot) {
    known.closeHoles();
    known.snapshot = std::make_shared<const RecordKeys>(known.order);
  }
  return known.snapshot;
}

RecordKeysPtr PendingLinks::parents(const RecordKey& child) {
  follow();
  auto committed = committed_.parents(child);
  if (empty() && !values_.hasRemovals()) return committed;
  auto keys = std::make_shared<RecordKeys>();
  for (const auto& group : *committed) {
    if (!removed_.contains({group, child}) && !values_.isRemoved(group)) keys->push_back(group);
  }
  const auto added = addedParents_.find(child);
  if (added != addedParents_.end()) {
    for (const auto& group : added->second) {
      if (values_.isRemoved(group)) continue;
      if (std::find(keys->begin(), keys->end(), group) == keys->end()) keys->push_back(group);
    }
  }
  return keys;
}

bool PendingLinks::isWritten(const Edit& edit, const ActIds& acts) const {
  return isAmong(acts, edit.act) && !values_.isRemovedBy(acts, edit.link.group) &&
         !values_.isRemovedBy(acts, edit.link.child);
}

// An addition that one of these acts took away later is none, however the other acts see it.
std::vector<Link> PendingLinks::addedLinks(const ActIds& acts) const {
  LatestEdits removed;
  for (std::size_t i = 0; i < edits_.size(); ++i) {
    const auto& edit = edits_[i];
    if (edit.what != What::Remove || !isAmong(acts, edit.act)) continue;
    removed.insert_or_assign(edit.link, static_cast<EditIndex>(i));
  }
  std::vector<Link> links;
  for (std::size_t i = 0; i < edits_.size(); ++i) {
    const auto& edit = edits_[i];
    if (edit.what != What::Add || !isWritten(edit, acts)) continue;
    const auto later = removed.find(edit.link);
    if (later != removed.end() && later->second > i) continue;
    links.push_back({edit.link.group, edit.link.child});
  }
  return links;
}

std::vector<Link> PendingLinks::removedLinks(const ActIds& acts) const {
  std::vector<Link> links;
  for (const auto& edit : edits_) {
    if (edit.what != What::Remove || !isWritten(edit, acts)) continue;
    links.push_back({edit.link.group, edit.link.child});
  }
  return links;
}

// The edits of an act that still runs may be many: what follows from them is kept where it can be.
void PendingLinks::clear(const ActIds& acts) noexcept {
  const bool hasAny = std::any_of(edits_.begin(), edits_.end(),
                                  [&](const Edit& edit) { return isAmong(acts, edit.act); });
  if (!hasAny) return;
  std::erase_if(edits_, [&](const Edit& edit) {
    return edit.what == What::TakenBack || isAmong(acts, edit.act);
  });
  takenBack_ = 0;
  forgetIndex();
  indexed_ = edits_.empty();
}

void PendingLinks::forgetLists() noexcept {
  memberLists_.clear();
  groupLists_.clear();
}

}  // namespace ox
