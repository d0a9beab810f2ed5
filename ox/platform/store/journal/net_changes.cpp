#include "ox/platform/store/journal/net_changes.hpp"

#include <cassert>

#include "ox/records/property_codec.hpp"

namespace ox {

void NetChanges::takeAdditions(std::int64_t first, std::int64_t end) {
  assert(first <= end);
  if (first < end) additions_[first] = end;
}

bool NetChanges::isAdded(std::int64_t row) const {
  const auto next = additions_.upper_bound(row);
  return next != additions_.begin() && row < std::prev(next)->second;
}

void NetChanges::take(const JournalRow& change) {
  switch (change.what()) {
    case ChangeKind::Values:
    case ChangeKind::ValuesAndPicture:
      return takeValues(change);
    case ChangeKind::Removed:
      return takeRemoval(change);
    case ChangeKind::Restored: {
      auto& record = recordOf(change);
      record.isThere = true;
      return;
    }
    case ChangeKind::Linked:
    case ChangeKind::Unlinked:
      return takeLinks(change);
    case ChangeKind::ContainerAdded:
    case ChangeKind::ContainerRemoved:
      return takeContainer(change);
    case ChangeKind::Tags:
      return takeTags(change);
  }
}

NetRecord& NetChanges::recordOf(const JournalRow& change) {
  const auto [found, isNew] = records_.try_emplace(change.record());
  auto& record = found->second;
  if (isNew) {
    record.container = change.container();
    record.wasThere = change.what() != ChangeKind::Restored && !isAdded(change.record());
  }
  return record;
}

void NetChanges::takeValues(const JournalRow& change) {
  auto& record = recordOf(change);
  const auto before = decodeProperties(change.before());
  const auto after = decodeProperties(change.after());
  for (const auto& [id, value] : before.entries()) {
    // Where the values of a record are all known, one that is met only now came later.
    const auto [known, isNew] = record.values.try_emplace(id);
    if (isNew && !record.allKnown) known->second.before = value;
    known->second.after = PropertyValue();
  }
  for (const auto& [id, value] : after.entries()) record.values[id].after = value;
  if (change.what() != ChangeKind::ValuesAndPicture) return;
  if (!record.pictureChanged) {
    record.pictureChanged = true;
    if (change.other() != 0) record.imageBefore = change.other();
  }
  record.pictureAfter = static_cast<std::uint64_t>(change.place());
}

void NetChanges::takeRemoval(const JournalRow& change) {
  auto& record = recordOf(change);
  for (auto& [id, value] : record.values) value.after = PropertyValue();
  // A damaged row may have had no values.
  const auto before = change.before().empty() ? PropertyBag() : decodeProperties(change.before());
  for (const auto& [id, value] : before.entries()) {
    const auto [known, isNew] = record.values.try_emplace(id);
    if (isNew && !record.allKnown) known->second.before = value;
  }
  record.allKnown = true;
  if (!record.pictureChanged) {
    record.pictureChanged = true;
    if (change.other() != 0) record.imageBefore = change.other();
  }
  record.pictureAfter = 0;
  record.isThere = false;
  record.kind = change.place() == 0 ? RecordKind::Person : RecordKind::Group;
  record.key = change.key();
}

void NetChanges::takeLinks(const JournalRow& change) {
  const bool isLinked = change.what() == ChangeKind::Linked;
  for (const auto& [child, number] : change.links()) {
    const auto [found, isNew] = links_.try_emplace({change.record(), child});
    auto& link = found->second;
    if (isNew) {
      link.container = change.container();
      if (!isLinked) link.before = number;
    }
    link.after = isLinked ? std::optional(number) : std::nullopt;
  }
}

void NetChanges::takeContainer(const JournalRow& change) {
  const auto [found, isNew] = containers_.try_emplace(static_cast<std::int32_t>(change.record()));
  auto& container = found->second;
  const bool isAdded = change.what() == ChangeKind::ContainerAdded;
  if (isNew) {
    container.wasThere = !isAdded;
    container.info = {std::string(change.after()), std::string(change.before()),
                      static_cast<std::int32_t>(change.place())};
  }
  container.isThere = isAdded;
}

void NetChanges::takeTags(const JournalRow& change) {
  auto tags = decodeTagChange(change.before(), change.after());
  const std::pair key(tags.manager, tags.person);
  if (change.record() != 0) tagsOfRow_[change.record()] = key;
  const auto [found, isNew] = tags_.try_emplace(key, tags);
  if (!isNew) found->second.after = std::move(tags.after);
}

bool NetChanges::changedTagsOf(std::int64_t row) const {
  const auto found = tagsOfRow_.find(row);
  if (found == tagsOfRow_.end()) return false;
  const auto& change = tags_.at(found->second);
  return change.before != change.after;
}

}  // namespace ox
