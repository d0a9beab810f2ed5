#include "ox/platform/store/journal/way_back.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ox/records/fingerprint.hpp"
#include "ox/records/merge.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {

std::vector<JournalAct> actsOfCommand(JournalRows& journal, const JournalAct& first) {
  std::vector<JournalAct> acts = {first};
  if (!journal.origin(first.origin).origin.together) return acts;
  journal.actsFrom(first.row.moment.number + 1, [&](const JournalAct& act) {
    if (act.origin == first.origin) acts.push_back(act);
    return true;
  });
  return acts;
}

WayBack::WayBack(StoreFile& file, CommittedRecords& committed, Act& act)
    : file_(file),
      committed_(committed),
      journal_(file),
      stored_(file),
      act_(act),
      tree_(file, act.firstRow) {}

void WayBack::decide(const std::vector<JournalAct>& command) {
  assert(!command.empty());
  act_.guards.all = true;
  readChanges(command);
  bringContainersBack();
  takeAdditionsAway();
  for (const auto& [row, net] : mine_.records()) {
    if (!mine_.isAdded(row)) settleRecord(row, net);
  }
  settleLinks();
  takeContainersAway();
  settleTags();
}

// The pictures that come back may be many: each is read when it is written.
std::function<Data()> WayBack::reader(std::int64_t imageRow) {
  return [&file = file_, imageRow] { return pictureInRow(file, imageRow); };
}

void WayBack::stays(const RecordKey& record, const std::string& why) {
  stays_.push_back({FailureKind::Refused, why, record.text()});
}

// First all of the command's own acts, then, of everything since, what touched the same records.
void WayBack::readChanges(const std::vector<JournalAct>& command) {
  for (const auto& act : command) {
    mine_.takeAdditions(act.firstRecord, act.row.nextRecord);
    journal_.changes(act.firstChange, act.row.nextChange, [&](const JournalRow& change) {
      mine_.take(change);
      return true;
    });
  }
  auto own = command.begin();
  journal_.changes(command.front().row.nextChange, INT64_MAX, [&](const JournalRow& change) {
    while (own != command.end() && change.id() >= own->row.nextChange) ++own;
    if (own != command.end() && change.id() >= own->firstChange) return true;
    if (isAboutMine(change)) others_.take(change);
    return true;
  });
  findOtherLinks();
}

void WayBack::findOtherLinks() {
  for (const auto& [pair, net] : others_.links()) {
    const auto [group, child] = pair;
    if (net.before.has_value() == stored_.link(group, child).has_value()) continue;
    relinked_.insert(group);
    relinked_.insert(child);
  }
}

bool WayBack::isAboutMine(const JournalRow& change) const {
  return isMine(change.record()) ||
         std::ranges::any_of(change.links(), [&](const auto& link) { return isMine(link.child); });
}

bool WayBack::isMine(std::int64_t row) const {
  return mine_.isAdded(row) || mine_.records().contains(row);
}

void WayBack::bringContainersBack() {
  for (const auto& [row, net] : mine_.containers()) {
    if (!net.wasThere || net.isThere) continue;
    if (committed_.containers().soundInRow(row)) continue;  // it is there again
    if (committed_.containers().soundRowOf(standardContainerId(net.info.identifier)) != 0) {
      stays({}, "there is another account " + net.info.identifier + " now");
      continue;
    }
    containersBack_.insert(row);
    act_.addedContainers.push_back({row, net.info});
  }
}

void WayBack::takeAdditionsAway() {
  for (const auto& [first, end] : mine_.additions()) {
    for (const auto& record : stored_.records(first, end)) takeAway(record);
  }
}

void WayBack::takeAway(const RecordEntry& record) {
  if (wasChangedSince(record)) {
    stayed_.insert(record.row);
    stayedPersons_.insert(record.key.text());
    return stays(record.key, "it was changed since it was added, and stays");
  }
  removed_.insert(record.row);
  if (record.kind == RecordKind::Group) tree_.removeGroup(record.row);
  act_.removed.push_back(record);
}

void WayBack::settleRecord(std::int64_t row, const NetRecord& net) {
  const auto record = stored_.record(row);
  if (!net.wasThere) {
    if (record) takeAway(*record);
  } else if (!net.isThere) {
    if (!record) bringBack(row, net);
  } else if (record) {
    bringValuesBack(*record, net);
  } else {
    const auto& others = others_.records();
    const auto found = others.find(row);
    stays(found != others.end() ? found->second.key : RecordKey(), "it was removed since");
  }
}

void WayBack::bringBack(std::int64_t row, const NetRecord& net) {
  if (committed_.find(net.key)) return stays(net.key, "its identifier is another record's now");
  if (!committed_.containers().soundInRow(net.container) &&
      !containersBack_.contains(net.container)) {
    return stays(net.key, "its account is not there any more");
  }
  Act::RestoredRecord restored;
  restored.record = {net.key, row, net.container, net.kind};
  for (const auto& [id, value] : net.values) {
    if (!isMissing(value.before)) restored.properties.append(id, value.before);
  }
  const auto picture = net.imageBefore ? stored_.picture(*net.imageBefore) : std::nullopt;
  if (picture) restored.readImage = reader(*net.imageBefore);
  restored.fingerprint = contentFingerprint(restored.properties, picture.value_or(0));
  restored_.emplace(row, act_.restored.size());
  act_.restored.push_back(std::move(restored));
}

// Three-way: what the command left, what is there now, what was there before it.
void WayBack::bringValueBack(PropertyId id, const NetRecord::Value& net, PropertyBag& properties,
                             const RecordKey& record) {
  const auto& now = properties.value(id);
  if (sameValue(net.before, net.after) || sameValue(now, net.before)) return;
  std::vector<MultiEntry> overtaken;
  auto value =
      sameValue(now, net.after) ? net.before : mergedValue(net.after, now, net.before, overtaken);
  if (!overtaken.empty()) {
    stays(record, property_table::nameOf(id) + " was changed since, and stays");
  }
  properties.set(id, std::move(value));
}

void WayBack::bringPictureBack(const NetRecord& net, std::uint64_t now,
                               Act::ChangedRecord& change) {
  if (!net.pictureChanged) return;
  const auto before = net.imageBefore ? stored_.picture(*net.imageBefore).value_or(0) : 0;
  if (before == net.pictureAfter || before == now) return;
  if (now != net.pictureAfter) {
    return stays(change.record.key, "the picture was changed since, and stays");
  }
  change.image = Data();
  if (before != 0) change.readImage = reader(*net.imageBefore);
}

void WayBack::bringValuesBack(const RecordEntry& record, const NetRecord& net) {
  std::optional<StoredRows::Content> content;
  try {
    content = stored_.content(record.row);
  } catch (const DamagedProperties& error) {
    return stays(record.key, error.what());
  }
  if (!content) return;
  Act::ChangedRecord change;
  change.record = record;
  change.properties = content->properties;
  for (const auto& [id, value] : net.values) {
    bringValueBack(id, value, change.properties, record.key);
  }
  change.differences = differences(content->properties, change.properties);
  bringPictureBack(net, content->picture, change);
  if (change.differences.empty() && !change.image) return;
  const auto picture = !change.image      ? content->picture
                       : change.readImage ? stored_.picture(*net.imageBefore).value_or(0)
                                          : 0;
  change.fingerprint = contentFingerprint(change.properties, picture);
  act_.changed.push_back(std::move(change));
}

void WayBack::settleLinks() {
  std::vector<Act::ChangedLink> back;
  for (const auto& [pair, net] : mine_.links()) {
    if (net.before != net.after) settleLink(pair, net, back);
  }
  // Behind all that go, for these may be in the way of a group; in the order of their numbers, as
  // they were added.
  std::ranges::sort(back, {}, [](const auto& link) { return *link.number; });
  for (const auto& link : back) bringLinkBack(link);
}

void WayBack::settleLink(const NetChanges::Pair& pair, const NetLink& net,
                         std::vector<Act::ChangedLink>& back) {
  const auto group = entryThen(pair.first);
  const auto child = entryThen(pair.second);
  if (!group || !child) return;  // it goes with one of them
  if (stayed_.contains(group->row) || stayed_.contains(child->row)) return;
  const auto now = stored_.link(group->row, child->row);
  if (now != net.after) return;  // somebody has made it anew, or taken it away, since
  const Act::ChangedLink link{*group, *child, net.before};
  if (now) {
    act_.removedLinks.push_back(link);
    if (child->kind == RecordKind::Group) tree_.removeLink(group->row, child->row);
  }
  if (net.before) back.push_back(link);
}

// A journal that is damaged may tell of links that never were.
void WayBack::bringLinkBack(const Act::ChangedLink& link) {
  if (link.group.kind != RecordKind::Group || link.group.container != link.child.container) {
    return stays(link.child.key, "it cannot be in " + link.group.key.text());
  }
  if (link.child.kind == RecordKind::Group) {
    if (tree_.wouldCloseCircle(link.group.row, link.child.row)) {
      return stays(link.group.key, "a group would be below itself");
    }
    tree_.addLink(link.group.row, link.child.row);
  }
  act_.addedLinks.push_back(link);
}

void WayBack::takeContainersAway() {
  for (const auto& [row, net] : mine_.containers()) {
    if (net.wasThere || !net.isThere || !committed_.containers().soundInRow(row)) continue;
    const auto held = stored_.recordsIn(row);
    if (std::ranges::all_of(held,
                            [&](const auto& record) { return removed_.contains(record.row); })) {
      act_.removedContainers.push_back({row, *committed_.containers().soundInRow(row)});
    } else {
      stays({}, "the account " + net.info.name + " holds records since, and stays");
    }
  }
}

// The tag file merges them with what is there now when it follows.
void WayBack::settleTags() {
  for (const auto& [person, net] : mine_.tags()) {
    if (net.before == net.after || stayedPersons_.contains(net.person)) continue;
    act_.tags.push_back({net.manager, net.person, net.after, net.before});
  }
}

std::optional<RecordEntry> WayBack::entryThen(std::int64_t row) {
  if (removed_.contains(row)) return std::nullopt;
  const auto found = restored_.find(row);
  return found != restored_.end() ? std::optional(act_.restored[found->second].record)
                                  : stored_.record(row);
}

bool WayBack::wasChangedSince(const RecordEntry& record) {
  return hasOtherValuesSince(record) || relinked_.contains(record.row) ||
         others_.changedTagsOf(record.row);
}

// Whether others have left it otherwise than they found it: what they have taken back themselves is
// no change.
bool WayBack::hasOtherValuesSince(const RecordEntry& record) {
  const auto found = others_.records().find(record.row);
  if (found == others_.records().end()) return false;
  const auto& net = found->second;
  std::optional<StoredRows::Content> content;
  try {
    content = stored_.content(record.row);
  } catch (const DamagedProperties&) {
    return true;  // nobody knows, and it is named
  }
  if (!content) return false;
  for (const auto& [id, value] : net.values) {
    if (!sameValue(value.before, content->properties.value(id))) return true;
  }
  if (net.allKnown) {
    for (const auto& [id, value] : content->properties.entries()) {
      if (!net.values.contains(id)) return true;
    }
  }
  if (!net.pictureChanged) return false;
  return content->picture != (net.imageBefore ? stored_.picture(*net.imageBefore).value_or(0) : 0);
}

}  // namespace ox
