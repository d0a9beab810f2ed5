#include "ox/platform/store/file/act_writer.hpp"

#include <cassert>
#include <chrono>
#include <optional>
#include <string>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

// What a row of the journal takes beside its blobs: an estimate.
constexpr std::int64_t kRowBytes = 24;

std::int64_t millisecondsNow() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::string_view bytesOf(const Uuid& name) {
  return {reinterpret_cast<const char*>(name.data()), name.size()};
}

std::int64_t numberOf(RecordKind kind) {
  return static_cast<std::int64_t>(kind);
}

}  // namespace

ActRow actOfRow(const sqlite::Statement& row) {
  ActRow act;
  act.moment.number = row.integer(0);
  const auto name = row.blob(1);
  if (name.size() != act.moment.name.size()) {
    throw StoreError(StoreError::Kind::Corrupt, "the name of an act is damaged");
  }
  std::copy(name.begin(), name.end(), act.moment.name.begin());
  act.nextRecord = row.integer(2);
  act.nextChange = row.integer(3);
  act.bytes = row.integer(4);
  return act;
}

std::optional<ActRow> lastAct(StoreFile& file) {
  auto& row = file.statement(Sql::LastAct);
  const sqlite::StatementScope scope(row);
  return row.step() ? std::optional(actOfRow(row)) : std::nullopt;
}

ActWriter::ActWriter(StoreFile& file, const Act& act) : file_(file), act_(act) {
  const auto last = lastAct(file);
  if (!last) {
    throw StoreError(StoreError::Kind::Corrupt,
                     file.address().name() + ": the journal has no last row",
                     file.address().name());
  }
  last_ = *last;
  nextRow_ = last_.nextRecord;
  nextChange_ = last_.nextChange;
  bytes_ = last_.bytes;
}

ActWriter::Outcome ActWriter::write(Others others) {
  if (others == Others::HaveCommitted) {
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
  removeRecords();
  removeContainers();
  writeActRow();
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
  row.bind(1, act_.decidedAt.number).bindBlob(2, bytesOf(act_.name));
  return row.step();
}

// Whether what was committed since the act was decided leaves alone what it was decided upon. An
// act is outdated whose journal is gone, that was decided in another past, or before a commit that
// the journal knows nothing of.
bool ActWriter::guardsHold() {
  if (act_.guards.all || last_.moment == act_.decidedAt) return false;
  ActRow decided;
  {
    auto& acts = file_.statement(Sql::ActsFrom);
    const sqlite::StatementScope scope(acts);
    acts.bind(1, act_.decidedAt.number);
    if (!acts.step()) return false;
    decided = actOfRow(acts);
  }
  if (decided.moment != act_.decidedAt) return false;
  {
    auto& changes = file_.statement(Sql::ChangesFrom);
    const sqlite::StatementScope scope(changes);
    changes.bind(1, decided.nextChange);
    while (changes.step()) {
      if (touchesGuarded(changes)) return false;
    }
  }
  if (act_.guards.containers.empty()) return true;
  auto& added = file_.statement(Sql::ContainersAddedTo);
  const sqlite::StatementScope scope(added);
  added.bind(1, decided.nextRecord);
  while (added.step()) {
    if (act_.guards.containers.contains(static_cast<std::int32_t>(added.integer(0)))) return false;
  }
  return true;
}

bool ActWriter::touchesGuarded(const sqlite::Statement& change) const {
  switch (static_cast<ChangeKind>(change.integer(0))) {
    case ChangeKind::ContainerAdded:
    case ChangeKind::ContainerRemoved:
      return true;  // identifiers of containers are looked up by every act that adds
    case ChangeKind::Tags:
      return false;
    default:
      break;
  }
  return act_.guards.records.contains(change.integer(1)) ||
         (!change.isNull(3) && act_.guards.records.contains(change.integer(3))) ||
         act_.guards.containers.contains(static_cast<std::int32_t>(change.integer(2)));
}

// Others may have added records since the act was decided, and taken the rows it would have had.
std::int64_t ActWriter::rowOf(std::int64_t decided) const {
  return decided >= act_.firstRow ? decided - act_.firstRow + last_.nextRecord : decided;
}

std::int32_t ActWriter::containerOf(std::int32_t decided) const {
  return decided < 0 ? newContainers_[static_cast<std::size_t>(-decided - 1)] : decided;
}

sqlite::Statement& ActWriter::change(ChangeKind what, std::int64_t record, std::int64_t container) {
  bytes_ += kRowBytes;
  return file_.statement(Sql::InsertChange)
      .bind(1, nextChange_++)
      .bind(2, static_cast<std::int64_t>(what))
      .bind(3, record)
      .bind(4, container)
      .bindNull(5)
      .bindNull(6)
      .bindNull(7)
      .bindNull(8);
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
    const auto row = file_.connection().lastRowId();
    newContainers_.push_back(static_cast<std::int32_t>(row));
    change(ChangeKind::ContainerAdded, row, row)
        .bind(6, container.info.type)
        .bindBlob(7, container.info.name)
        .bindBlob(8, container.info.identifier)
        .run();
    written_.containersChanged = true;
  }
}

void ActWriter::insertRecord(const RecordEntry& record) {
  const StoredUid uid(record.key);
  auto& insert = file_.statement(Sql::InsertRecord);
  insert.bind(1, record.row);
  uid.bindTo(insert, 2);
  insert.bind(3, numberOf(record.kind)).bind(4, record.container).run();
  if (file_.connection().changes() == 0) taken_.insert(record.key);
}

void ActWriter::insertContent(std::int64_t row, const PropertyBag& properties,
                              std::uint64_t fingerprint, const Data& image) {
  file_.writeCustomProperties(properties);
  const auto bytes = encodeProperties(properties);
  const auto* cardUid = properties.text(property_id::kCardUid);
  auto& insert = file_.statement(Sql::InsertContent);
  if (image) {
    const auto picture = insertImage(*image);
    insert.bind(4, picture);
  } else {
    insert.bindNull(4);
  }
  insert.bind(1, row)
      .bindText(2, cardUid != nullptr ? TextView(*cardUid) : TextView())
      .bind(3, static_cast<std::int64_t>(fingerprint))
      .bindBlob(5, bytes)
      .run();
}

std::int64_t ActWriter::insertImage(const std::string& bytes) {
  file_.statement(Sql::InsertImage)
      .bind(1, static_cast<std::int64_t>(checksum64(bytes)))
      .bindBlob(2, bytes)
      .run();
  return file_.connection().lastRowId();
}

void ActWriter::restoreRecords() {
  for (const auto& restored : act_.restored) {
    insertRecord(restored.record);
    if (taken_.contains(restored.record.key)) continue;
    insertContent(restored.record.row, restored.properties, restored.fingerprint,
                  restored.readImage ? restored.readImage() : nullptr);
    change(ChangeKind::Restored, restored.record.row, restored.record.container).run();
    written_.changedValues.push_back(restored.record.key);
    written_.restored = true;
  }
}

void ActWriter::addRecords() {
  for (const auto& added : act_.added) {
    const RecordEntry entry{added.key, nextRow_, containerOf(added.container), added.kind};
    insertRecord(entry);
    if (taken_.empty()) {
      if (const auto* replacement = added.replacement) {
        insertContent(entry.row, replacement->properties,
                      contentFingerprint(replacement->properties, replacement->image),
                      replacement->image);
      } else {
        const auto picture = pictureOf(*added.record);
        insertContent(entry.row, added.record->properties, fingerprintOf(*added.record, picture),
                      picture);
      }
      written_.added.push_back(entry);
    }
    ++nextRow_;
  }
}

void ActWriter::changeRecords() {
  for (const auto& changed : act_.changed) {
    const auto row = changed.record.row;
    const auto newImage = changed.readImage ? std::optional(changed.readImage()) : changed.image;
    file_.writeCustomProperties(changed.properties);
    const auto bytes = encodeProperties(changed.properties);
    const auto before = encodeProperties(changed.differences.before);
    const auto after = encodeProperties(changed.differences.after);
    bytes_ += static_cast<std::int64_t>(before.size() + after.size());
    const auto* cardUid = changed.properties.text(property_id::kCardUid);
    auto& update = file_.statement(newImage ? Sql::UpdateContentAndImage : Sql::UpdateContent);
    update.bind(1, row)
        .bindText(2, cardUid != nullptr ? TextView(*cardUid) : TextView())
        .bind(3, static_cast<std::int64_t>(changed.fingerprint))
        .bindBlob(5, bytes);
    std::optional<std::int64_t> pictureBefore;
    std::optional<std::int64_t> pictureAfter;
    if (newImage) {
      auto& picture = file_.statement(Sql::ImageOfRow);
      const sqlite::StatementScope scope(picture);
      picture.bind(1, row);
      if (picture.step()) {
        pictureBefore = picture.integer(0);
        bytes_ += picture.integer(2);
      }
      if (const auto& image = *newImage) {
        pictureAfter = insertImage(*image);
        update.bind(4, *pictureAfter);
      } else {
        update.bindNull(4);
      }
    }
    update.run();
    if (file_.connection().changes() == 0) {
      // A damaged store has lost the row; what the record is to hold is known, so it gets one.
      auto& insert = file_.statement(Sql::InsertContent);
      insert.bind(1, row)
          .bindText(2, cardUid != nullptr ? TextView(*cardUid) : TextView())
          .bind(3, static_cast<std::int64_t>(changed.fingerprint))
          .bindNull(4)
          .bindBlob(5, bytes);
      if (pictureAfter) insert.bind(4, *pictureAfter);
      insert.run();
    }
    auto& note = change(newImage ? ChangeKind::ValuesAndPicture : ChangeKind::Values, row,
                        changed.record.container);
    if (pictureBefore) note.bind(5, *pictureBefore);
    if (newImage) {
      const auto& image = *newImage;
      note.bind(6, image ? static_cast<std::int64_t>(checksum64(*image)) : 0);
    }
    note.bindBlob(7, before).bindBlob(8, after).run();
    written_.changedValues.push_back(changed.record.key);
  }
}

void ActWriter::noteLink(ChangeKind what, std::int64_t container, std::int64_t parent,
                         std::int64_t child, std::int64_t number) {
  change(what, parent, container).bind(5, child).bind(6, number).run();
}

void ActWriter::removeLinks() {
  for (const auto& link : act_.removedLinks) {
    std::int64_t number = 0;
    {
      auto& found = file_.statement(Sql::LinkNumber);
      const sqlite::StatementScope scope(found);
      found.bind(1, link.group.row).bind(2, link.child.row);
      if (!found.step()) continue;
      number = found.integer(0);
    }
    file_.statement(Sql::DeleteLink).bind(1, number).run();
    noteLink(ChangeKind::Unlinked, link.group.container, link.group.row, link.child.row, number);
    written_.changedLinks.emplace_back(link.group.key, link.child.key);
  }
}

void ActWriter::addLinks() {
  for (const auto& link : act_.addedLinks) {
    const auto parent = rowOf(link.group.row);
    const auto child = rowOf(link.child.row);
    auto& insert = file_.statement(Sql::InsertLink);
    if (link.number) {
      insert.bind(1, *link.number);
    } else {
      insert.bindNull(1);
    }
    insert.bind(2, parent).bind(3, child).run();
    if (file_.connection().changes() == 0) continue;
    noteLink(ChangeKind::Linked, containerOf(link.group.container), parent, child,
             file_.connection().lastRowId());
    written_.changedLinks.emplace_back(link.group.key, link.child.key);
  }
}

// The values move into the journal, the picture stays where it is and changes its owner. The links
// go with the record, and are noted before it, each in a row of its own.
void ActWriter::removeRecords() {
  for (const auto& record : act_.removed) {
    {
      auto& links = file_.statement(Sql::LinksOfRow);
      const sqlite::StatementScope scope(links);
      links.bind(1, record.row);
      while (links.step()) {
        noteLink(ChangeKind::Unlinked, record.container, links.integer(0), links.integer(1),
                 links.integer(2));
        written_.linksOfRemoved = true;
      }
    }
    {
      auto& note = file_.statement(Sql::InsertRemoved);
      const sqlite::StatementScope scope(note);
      note.bind(1, nextChange_).bind(2, record.row);
      if (!note.step()) continue;
      bytes_ += kRowBytes + note.integer(0);
      ++nextChange_;
    }
    file_.statement(Sql::DeleteRecord).bind(1, record.row).run();
    written_.removedRows.push_back(record.row);
    written_.changedValues.push_back(record.key);
  }
}

void ActWriter::removeContainers() {
  for (const auto& container : act_.removedContainers) {
    file_.statement(Sql::DeleteContainer).bind(1, container.row).run();
    change(ChangeKind::ContainerRemoved, container.row, container.row)
        .bind(6, container.info.type)
        .bindBlob(7, container.info.name)
        .bindBlob(8, container.info.identifier)
        .run();
    written_.containersChanged = true;
  }
}

// The tag file is another file: what it owes is written down with the act, and struck out by
// whoever has seen it followed.
void ActWriter::noteTags() {
  for (const auto& tags : act_.tags) {
    const auto stored = encodeTagChange(tags);
    bytes_ += static_cast<std::int64_t>(stored.before.size() + stored.after.size());
    std::optional<std::int64_t> row;
    {
      auto& person = file_.statement(Sql::RecordByUid);
      const sqlite::StatementScope scope(person);
      const auto key = RecordKey::known(tags.person);
      if (key) {
        const StoredUid uid(*key);
        uid.bindTo(person, 1);
        if (person.step()) row = person.integer(0);
      }
    }
    auto& note = change(ChangeKind::Tags, 0, 0);
    if (row) {
      note.bind(3, *row);
    } else {
      note.bindNull(3);
    }
    note.bindNull(4).bindBlob(7, stored.before).bindBlob(8, stored.after).run();
  }
  if (act_.followedTags) file_.statement(Sql::DeleteTagDebt).bind(1, *act_.followedTags).run();
  if (!act_.tags.empty()) {
    file_.statement(Sql::InsertTagDebt).bind(1, last_.moment.number + 1).run();
  }
}

void ActWriter::writeActRow() {
  written_.row = {{last_.moment.number + 1, act_.name}, nextRow_, nextChange_, bytes_ + kRowBytes};
  const auto& row = written_.row;
  file_.statement(Sql::InsertAct)
      .bind(1, row.moment.number)
      .bindBlob(2, bytesOf(act_.name))
      .bind(3, millisecondsNow())
      .bind(4, file_.originRow(act_.origin, row.moment.number))
      .bind(5, row.nextRecord)
      .bind(6, row.nextChange)
      .bind(7, row.bytes)
      .run();
}

}  // namespace ox
