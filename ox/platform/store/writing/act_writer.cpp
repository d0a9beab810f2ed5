#include "ox/platform/store/writing/act_writer.hpp"

#include <algorithm>
#include <cassert>
#include <optional>
#include <string>

#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

// Of the store that an act is to be written behind.
ActRow lastActOf(StoreFile& file) {
  if (const auto last = lastAct(file)) return *last;
  const auto& name = file.address().name();
  throw StoreError(StoreError::Kind::Corrupt, name + ": the journal has no last row", name);
}

}  // namespace

ActWriter::ActWriter(StoreFile& file, const Act& act, const std::optional<ActRow>& last)
    : file_(file),
      act_(act),
      isDecidedUpon_(last),
      last_(last ? *last : lastActOf(file)),
      nextRow_(last_.nextRecord),
      records_(file),
      journal_(file, last_),
      links_(file, journal_, last_.nextLink) {}

ActWriter::Outcome ActWriter::write() {
  if (!isDecidedUpon_) {
    if (isWrittenBefore()) return Outcome::WrittenBefore;
    if (!guardsHold()) return Outcome::Outdated;
  }
  addContainers();
  restoreRecords();
  addRecords();
  if (!taken_.empty()) return Outcome::IdentifierTaken;
  changeRecords();
  removeLinks();
  addLinks();
  noteTags();
  written_.linksOfRemoved = links_.removeLinksOf(act_.removed);
  removeRecords();
  noteSync();
  removeContainers();
  const auto origin = file_.originRow(act_.origin, last_.moment.number + 1);
  written_.row = journal_.writeAct(act_.name, origin, nextRow_, links_.nextLink());
  return Outcome::Written;
}

bool ActWriter::isTrimDue() const {
  constexpr std::int64_t kActs = 64;
  constexpr std::int64_t kBytes = std::int64_t{1} << 20U;
  const auto& row = written_.row;
  return row.moment.number % kActs == 0 || row.bytes / kBytes != last_.bytes / kBytes;
}

bool ActWriter::isWrittenBefore() {
  auto& row = file_.statement(Sql::ActByName);
  const sqlite::StatementScope scope(row);
  row.bind(1, act_.decidedAt.number)
      .bindBlob(2, {reinterpret_cast<const char*>(act_.name.data()), act_.name.size()});
  return row.step();
}

// Whether what was committed since the act was decided leaves alone what it was decided upon. An
// act is outdated whose journal is gone, that was decided in another past, or before a commit that
// the journal knows nothing of.
bool ActWriter::guardsHold() {
  if (act_.guards.all || last_.moment == act_.decidedAt) return false;
  const auto decided = actOfNumber(file_, act_.decidedAt.number);
  if (!decided || decided->moment != act_.decidedAt) return false;
  {
    auto& changes = file_.statement(Sql::ChangesFrom);
    const sqlite::StatementScope scope(changes);
    changes.bind(1, decided->nextChange);
    while (changes.step()) {
      const JournalRow row(changes);
      if (!row.isSound() || touchesGuarded(row)) return false;
    }
  }
  if (act_.guards.containers.empty()) return true;
  auto& added = file_.statement(Sql::ContainersAddedTo);
  const sqlite::StatementScope scope(added);
  added.bind(1, decided->nextRecord);
  while (added.step()) {
    if (act_.guards.containers.contains(static_cast<std::int32_t>(added.integer(0)))) return false;
  }
  return true;
}

bool ActWriter::touchesGuarded(const JournalRow& change) const {
  switch (change.what()) {
    case ChangeKind::ContainerAdded:
    case ChangeKind::ContainerRemoved:
      return true;  // identifiers of containers are looked up by every act that adds
    case ChangeKind::Tags:
      return false;
    default:
      break;
  }
  const auto& guarded = act_.guards.records;
  if (guarded.contains(change.record())) return true;
  if (act_.guards.containers.contains(change.container())) return true;
  if (guarded.empty()) return false;
  try {
    return std::ranges::any_of(change.links(),
                               [&](const auto& link) { return guarded.contains(link.child); });
  } catch (const DamagedLinks&) {
    return true;  // nobody knows whom it links
  }
}

// Others may have added records since the act was decided, and taken the rows it would have had.
std::int64_t ActWriter::rowOf(std::int64_t decided) const {
  return decided >= act_.firstRow ? decided - act_.firstRow + last_.nextRecord : decided;
}

std::int32_t ActWriter::containerOf(std::int32_t decided) const {
  return decided < 0 ? newContainers_[static_cast<std::size_t>(-decided - 1)] : decided;
}

void ActWriter::addContainers() {
  for (const auto& container : act_.addedContainers) {
    auto& insert = file_.statement(Sql::InsertContainer);
    if (container.row != 0) {
      insert.bind(1, container.row);
    } else {
      insert.bindNull(1);
    }
    insert.bindText(2, container.info.identifier)
        .bindText(3, container.info.name)
        .bind(4, container.info.type)
        .run();
    const auto row = static_cast<std::int32_t>(file_.connection().lastRowId());
    newContainers_.push_back(row);
    noteContainer(ChangeKind::ContainerAdded, row, container.info);
  }
}

void ActWriter::noteContainer(ChangeKind what, std::int32_t row, const ContainerInfo& info) {
  journal_.write({.what = what,
                  .record = row,
                  .container = row,
                  .place = info.type,
                  .before = info.name,
                  .after = info.identifier});
  written_.containersChanged = true;
}

bool ActWriter::insertRecord(const RecordEntry& record) {
  const bool isInserted = records_.insertRecord(record);
  if (!isInserted) taken_.insert(record.key);
  return isInserted;
}

std::optional<RecordWriter::Picture> ActWriter::insertPicture(const Data& picture) {
  return picture ? std::optional(records_.insertPicture(*picture)) : std::nullopt;
}

void ActWriter::restoreRecords() {
  for (const auto& restored : act_.restored) {
    const auto& record = restored.record;
    if (record.row >= last_.nextRecord) {
      throw DamagedRow("row " + std::to_string(record.row) + " was never there");
    }
    if (!insertRecord(record)) continue;
    const auto picture = insertPicture(restored.readImage ? restored.readImage() : nullptr);
    const auto values = encodedValues(restored.properties);
    records_.insertContent({record.row, &values, restored.fingerprint, picture});
    journal_.write(
        {.what = ChangeKind::Restored, .record = record.row, .container = record.container});
    written_.changedValues.push_back(record.key);
    written_.restored = true;
  }
}

void ActWriter::addRecords() {
  for (const auto& added : act_.added) {
    const RecordEntry entry{added.key, nextRow_++, containerOf(added.container), added.kind};
    insertRecord(entry);
    if (!taken_.empty()) continue;
    insertContent(entry.row, added);
    written_.added.push_back(entry);
  }
}

void ActWriter::insertContent(std::int64_t row, const Act::AddedRecord& added) {
  const auto* replaced = added.replacement;
  const bool hasNewPicture = replaced != nullptr && !replaced->keepsImage;
  const auto picture =
      insertPicture(hasNewPicture ? pictureOf(*replaced) : pictureOf(*added.record));
  const auto& encoded = added.record->encoded;
  const auto& known = added.record->fingerprint;
  if (replaced == nullptr && encoded) {
    assert(known);
    const auto& readBytes = added.record->readBytes;
    if (!readBytes) return records_.insertContent({row, &*encoded, *known, picture});
    const EncodedValues values{readBytes(), encoded->cardUid, encoded->custom};
    return records_.insertContent({row, &values, *known, picture});
  }
  const auto& properties = replaced != nullptr ? replaced->properties : added.record->properties;
  const auto fingerprint = replaced == nullptr && known
                               ? *known
                               : contentFingerprint(properties, picture ? picture->checksum : 0);
  const auto values = encodedValues(properties);
  records_.insertContent({row, &values, fingerprint, picture});
}

void ActWriter::changeRecords() {
  for (const auto& changed : act_.changed) changeRecord(changed);
}

void ActWriter::changeRecord(const Act::ChangedRecord& changed) {
  const auto row = changed.record.row;
  const auto before = encodeProperties(changed.differences.before);
  const auto after = encodeProperties(changed.differences.after);
  JournalWriter::Change note{.what = ChangeKind::Values,
                             .record = row,
                             .container = changed.record.container,
                             .before = before,
                             .after = after};
  const auto values = encodedValues(changed.properties);
  RecordWriter::Content content{row, &values, changed.fingerprint};
  content.hasSameUid = changed.hasSameUid;
  const auto image = changed.readImage ? std::optional(changed.readImage()) : changed.image;
  if (image) {
    note.what = ChangeKind::ValuesAndPicture;
    {
      auto& picture = file_.statement(Sql::ImageOfRow);
      const sqlite::StatementScope scope(picture);
      picture.bind(1, row);
      if (picture.step()) {
        note.other = picture.integer(0);
        note.pictureBytes = picture.integer(2);
      }
    }
    content.picture = insertPicture(*image);
    note.place = content.picture ? static_cast<std::int64_t>(content.picture->checksum) : 0;
  }
  records_.updateContent(
      content, image ? RecordWriter::ReplacePicture::Yes : RecordWriter::ReplacePicture::No);
  journal_.write(note);
  written_.changedValues.push_back(changed.record.key);
}

void ActWriter::removeLinks() {
  links_.remove(act_.removedLinks, [&](const auto& link) { noteLink(link); });
}

void ActWriter::addLinks() {
  const LinkWriter::Rows rows{[&](std::int64_t decided) { return rowOf(decided); },
                              [&](std::int32_t decided) { return containerOf(decided); }};
  links_.add(act_.addedLinks, rows, [&](const auto& link) { noteLink(link); });
}

void ActWriter::noteLink(const Act::ChangedLink& link) {
  written_.changedLinks.emplace_back(link.group.key, link.child.key);
}

// Their values move into the journal, their pictures stay where they are and change their owner.
void ActWriter::removeRecords() {
  if (act_.removed.empty()) return;
  sqlite::KeyList asked;
  asked.reserve(act_.removed.size());
  for (const auto& record : act_.removed) asked.add(record.row);
  {
    auto& rows = file_.statement(Sql::RecordsToRemove);
    const sqlite::StatementScope scope(rows);
    rows.bindKeys(1, asked);
    while (rows.step()) noteRemoval(act_.removed[static_cast<std::size_t>(rows.integer(0))], rows);
  }
  file_.statement(Sql::DeleteRecords).bindKeys(1, asked).run();
}

// One that is not there any more has no row.
void ActWriter::noteRemoval(const RecordEntry& record, const sqlite::Statement& row) {
  const StoredUid uid(record.key);
  JournalWriter::Change note{.what = ChangeKind::Removed,
                             .record = record.row,
                             .container = record.container,
                             .place = static_cast<std::int64_t>(record.kind),
                             .uid = &uid,
                             .pictureBytes = row.integer(3)};
  if (!row.isNull(1)) note.before = row.blob(1);
  if (!row.isNull(2)) note.other = row.integer(2);
  journal_.write(note);
  written_.removedRows.push_back(record.row);
  written_.changedValues.push_back(record.key);
}

void ActWriter::removeContainers() {
  for (const auto& container : act_.removedContainers) {
    file_.statement(Sql::DeleteSyncLoginOf).bind(1, container.row).run();
    file_.statement(Sql::DeleteContainer).bind(1, container.row).run();
    noteContainer(ChangeKind::ContainerRemoved, container.row, container.info);
  }
}

// The tag file is another file: what it owes is written down with the act, and struck out by
// whoever has seen it followed.
void ActWriter::noteTags() {
  for (const auto& tags : act_.tags) {
    const auto stored = encodeTagChange(tags);
    journal_.write({.what = ChangeKind::Tags,
                    .record = rowOfPerson(tags.person),
                    .before = stored.before,
                    .after = stored.after});
  }
  if (act_.followedTags) file_.statement(Sql::DeleteTagDebt).bind(1, *act_.followedTags).run();
  if (!act_.tags.empty()) {
    file_.statement(Sql::InsertTagDebt).bind(1, last_.moment.number + 1).run();
  }
}

void ActWriter::noteSync() {
  if (act_.sync.rows == nullptr) return;
  const SyncWriter::Rows rows{[&](std::int64_t decided) { return rowOf(decided); },
                              [&](std::int32_t decided) { return containerOf(decided); }};
  SyncWriter(file_, act_.sync, rows).write();
}

std::optional<std::int64_t> ActWriter::rowOfPerson(const std::string& identifier) {
  const auto key = RecordKey::known(identifier);
  if (!key) return std::nullopt;
  auto& person = file_.statement(Sql::RecordByUid);
  const sqlite::StatementScope scope(person);
  const StoredUid uid(*key);
  uid.bindTo(person, 1);
  return person.step() ? std::optional(person.integer(0)) : std::nullopt;
}

}  // namespace ox
