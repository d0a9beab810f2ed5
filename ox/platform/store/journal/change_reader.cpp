#include "ox/platform/store/journal/change_reader.hpp"

#include <string>

#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

PropertyBag bagOf(std::string_view bytes) {
  return bytes.empty() ? PropertyBag() : decodeProperties(bytes);
}

}  // namespace

ChangeReader::ChangeReader(StoreFile& file, CommittedRecords& committed)
    : committed_(committed), journal_(file), stored_(file) {}

std::int64_t ChangeReader::commandOf(const JournalAct& act) {
  const auto& origin = journal_.origin(act.origin);
  return origin.origin.together ? origin.firstAct : act.row.moment.number;
}

JournalChange ChangeReader::begin(const JournalAct& act) {
  JournalChange change;
  change.act = act.row.moment.number;
  change.command = commandOf(act);
  change.at = act.at;
  change.origin = journal_.origin(act.origin).origin;
  return change;
}

JournalChange ChangeReader::addition(const RecordEntry& record, const JournalAct& act) {
  auto change = begin(act);
  change.kind = JournalChange::Kind::Added;
  change.record = record.key;
  change.recordKind = record.kind;
  return change;
}

JournalChange ChangeReader::change(const JournalRow& row, const JournalAct& act) {
  auto change = begin(act);
  const bool isOfAccount =
      row.what() == ChangeKind::ContainerAdded || row.what() == ChangeKind::ContainerRemoved;
  if (!isOfAccount && row.record() != 0) {
    if (const auto entry = record(row.record())) {
      change.record = entry->key;
      change.recordKind = entry->kind;
    }
  }
  describe(row, change);
  return change;
}

JournalChange ChangeReader::change(const JournalRow& row, const JournalAct& act,
                                   const NumberedLink& link) {
  auto told = change(row, act);
  if (const auto child = record(link.child)) told.other = child->key;
  return told;
}

void ChangeReader::describe(const JournalRow& row, JournalChange& change) {
  using Kind = JournalChange::Kind;
  switch (row.what()) {
    case ChangeKind::Values:
    case ChangeKind::ValuesAndPicture:
      change.kind = Kind::Changed;
      change.before = bagOf(row.before());
      change.after = bagOf(row.after());
      change.pictureChanged = row.what() == ChangeKind::ValuesAndPicture;
      return;
    case ChangeKind::Removed:
      change.kind = Kind::Removed;
      change.record = row.key();
      change.recordKind = row.place() == 0 ? RecordKind::Person : RecordKind::Group;
      change.before = bagOf(row.before());
      change.pictureChanged = row.other() != 0;
      return;
    case ChangeKind::Restored:
      change.kind = Kind::Restored;
      return;
    case ChangeKind::Linked:
    case ChangeKind::Unlinked:
      change.kind = row.what() == ChangeKind::Linked ? Kind::Linked : Kind::Unlinked;
      return;
    case ChangeKind::ContainerAdded:
    case ChangeKind::ContainerRemoved:
      change.kind =
          row.what() == ChangeKind::ContainerAdded ? Kind::AccountAdded : Kind::AccountRemoved;
      change.account = {std::string(row.after()), std::string(row.before()),
                        static_cast<std::int32_t>(row.place())};
      return;
    case ChangeKind::Tags:
      change.kind = Kind::Tagged;
      change.tags = decodeTagChange(row.before(), row.after());
      return;
  }
}

// Acts are numbered without a gap, and their rows and changes rise with them.
template <typename IsBefore>
std::optional<JournalAct> ChangeReader::firstAct(IsBefore isBefore) {
  std::optional<JournalAct> oldest;
  journal_.actsFrom(0, [&](const JournalAct& act) {
    oldest = act;
    return false;
  });
  if (!oldest) return std::nullopt;
  auto low = oldest->row.moment.number;
  auto high = committed_.moment().number + 1;
  while (low < high) {
    const auto middle = low + (high - low) / 2;
    const auto act = journal_.act(middle);
    if (act && isBefore(*act)) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return journal_.act(low);
}

std::optional<JournalAct> ChangeReader::actOfChange(std::int64_t id) {
  const auto act = firstAct([&](const JournalAct& each) { return each.row.nextChange <= id; });
  return act && act->firstChange <= id ? act : std::nullopt;
}

std::optional<JournalAct> ChangeReader::actOfRecord(std::int64_t row) {
  const auto act = firstAct([&](const JournalAct& each) { return each.row.nextRecord <= row; });
  return act && act->firstRecord <= row ? act : std::nullopt;
}

std::optional<RecordEntry> ChangeReader::record(std::int64_t row) {
  if (const auto entry = stored_.record(row)) return entry;
  readRemovedUntil([&] { return removed_.contains(row); });
  const auto found = removed_.find(row);
  return found != removed_.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<RecordEntry> ChangeReader::record(const RecordKey& key) {
  if (const auto entry = committed_.find(key)) return entry;
  // To the end: the last record of that identifier counts.
  readRemovedUntil([] { return false; });
  const auto found = removedRows_.find(key);
  return found != removedRows_.end() ? std::optional(removed_.at(found->second)) : std::nullopt;
}

void ChangeReader::readRemovedUntil(const std::function<bool()>& isFound) {
  if (isFound()) return;
  journal_.changes(removedReadTo_, INT64_MAX, [&](const JournalRow& row) {
    removedReadTo_ = row.id() + 1;
    if (row.what() != ChangeKind::Removed) return true;
    const auto kind = row.place() == 0 ? RecordKind::Person : RecordKind::Group;
    const auto key = row.key();
    removed_[row.record()] = {key, row.record(), row.container(), kind};
    removedRows_[key] = row.record();
    return !isFound();
  });
}

}  // namespace ox
