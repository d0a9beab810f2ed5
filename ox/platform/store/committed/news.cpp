// How the memory follows what was committed, by this process and by others.
#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/file/journal_rows.hpp"

namespace ox {

namespace {

template <typename Read>
std::optional<ActRow> unlessDamaged(Read read) {
  try {
    return read();
  } catch (const DamagedRow&) {
    return std::nullopt;
  }
}

}  // namespace

// The journal names what was touched since the last look, and that alone is forgotten here and read
// again when it is asked for. Everything is where the journal does not reach back to the last look,
// tells of another past (a copy has taken the place of the store), or knows nothing of what was
// committed (another tool has written, or only a log was folded in).
void CommittedRecords::readNews() {
  const sqlite::Snapshot snapshot(file_.connection());
  const auto current = version();
  const auto last = soundLastAct();
  const bool isTold = last && seenVersion_ >= 0 && last->moment != seen_.moment;
  if (!isTold || !readActsSince(seen_, *last)) startAnew();
  seen_ = last.value_or(ActRow());
  // Set last: when the reading of the news fails half way, the next look reads them again.
  seenVersion_ = current;
}

// A damaged store whose journal has lost its last row, or whose last row is damaged, can be read
// all the same.
std::optional<ActRow> CommittedRecords::soundLastAct() {
  return unlessDamaged([&] { return lastAct(file_); });
}

bool CommittedRecords::readActsSince(const ActRow& seen, const ActRow& last) {
  if (last.moment.number < seen.moment.number) return false;
  const auto then = unlessDamaged([&] { return actOfNumber(file_, seen.moment.number); });
  if (!then || then->moment != seen.moment) return false;
  std::unordered_set<std::int64_t> linked;
  {
    auto& changes = file_.statement(Sql::ChangesFrom);
    const sqlite::StatementScope scope(changes);
    changes.bind(1, seen.nextChange);
    while (changes.step()) {
      const JournalRow row(changes);
      const bool isKeySound =
          changes.isNull(JournalRow::kColumns) || changes.integer(JournalRow::kColumns + 1) != 0;
      if (!row.isSound() || !isKeySound) return false;
      const auto key = changes.isNull(JournalRow::kColumns)
                           ? RecordKey()
                           : keyOfColumn(changes, JournalRow::kColumns);
      takeChange(row, key);
      for (const auto& link : linksOf(row)) linked.insert(link.child);
    }
  }
  forgetParentsOf(linked);
  if (indexLoaded_ && last.nextRecord != seen.nextRecord) readRecordsAfter(seenRow_);
  return true;
}

// What a row tells of links; where that is damaged nobody knows whom it links.
NumberedLinks CommittedRecords::linksOf(const JournalRow& change) {
  try {
    return change.links();
  } catch (const DamagedLinks&) {
    forgetLinks();
    return {};
  }
}

// The groups that these rows stand in were changed. One that was removed since has no identifier.
void CommittedRecords::forgetParentsOf(const std::unordered_set<std::int64_t>& rows) {
  if (rows.empty()) return;
  sqlite::KeyList list;
  list.reserve(rows.size());
  for (const auto row : rows) list.add(row);
  auto& uids = file_.statement(Sql::UidsOfRows);
  const sqlite::StatementScope scope(uids);
  uids.bindKeys(1, list);
  while (uids.step()) {
    if (uids.integer(1) == 0) return forgetLinks();  // nobody knows whose lists they are
    parentLists_.erase(keyOfColumn(uids, 0));
  }
}

// A record that was removed since has no identifier any more, and a row of its own further on.
void CommittedRecords::takeChange(const JournalRow& change, const RecordKey& key) {
  switch (change.what()) {
    case ChangeKind::Values:
    case ChangeKind::ValuesAndPicture:
      if (const auto content = contents_.known(key); content.values) {
        known_.keep(key, *content.values);
      }
      return forgetValuesOf(key);
    case ChangeKind::Removed:
      forgetValuesOf(change.key());
      forgetLink(change.key(), change.key());
      if (indexLoaded_) index_.removeRow(change.record());
      return;
    case ChangeKind::Restored:
      return forgetIndex();  // its place is among those that are in the index
    case ChangeKind::Linked:
    case ChangeKind::Unlinked:
      return forgetLink(key, {});  // for whom else: forgetParentsOf
    case ChangeKind::ContainerAdded:
    case ChangeKind::ContainerRemoved:
      return containers_.forget();
    case ChangeKind::Tags:
      return;
  }
  startAnew();  // a kind that this version does not know
}

void CommittedRecords::startAnew() {
  containers_.forget();
  forgetValues();
  forgetLinks();
  forgetIndex();
}

// The act is committed by now, whatever becomes of this: nobody must be told that it failed.
void CommittedRecords::follow(const WrittenAct& written) noexcept {
  try {
    followWritten(written);
  } catch (...) {
    lookAgain();
  }
}

void CommittedRecords::followWritten(const WrittenAct& written) {
  for (const auto& key : written.changedValues) forgetValuesOf(key);
  for (const auto& [group, child] : written.changedLinks) forgetLink(group, child);
  // The lists of everybody a removed record was linked to.
  if (written.linksOfRemoved) forgetLinks();
  if (written.containersChanged) containers_.forget();
  if (written.row.moment.number != seen_.moment.number + 1) {
    // Others have committed since the last look, which the act left alone.
    readNews();
    return;
  }
  seen_ = written.row;
  if (written.restored) return forgetIndex();
  if (!indexLoaded_) return;
  for (const auto row : written.removedRows) index_.removeRow(row);
  for (const auto& entry : written.added) {
    index_.append(entry);
    seenRow_ = entry.row;
  }
}

}  // namespace ox
