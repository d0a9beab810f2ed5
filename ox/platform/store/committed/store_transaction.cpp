#include "ox/platform/store/committed/store_transaction.hpp"

#include <cassert>
#include <memory>
#include <vector>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/committed/circle.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

std::uint64_t checksumOf(const Data& image) {
  return image ? checksum64(*image) : 0;
}

}  // namespace

Data pictureOf(const NewRecord& record) {
  return record.spilledImage ? record.spilledImage->get() : record.image;
}

std::uint64_t fingerprintOf(const NewRecord& record, const Data& picture) {
  return record.fingerprint ? *record.fingerprint : contentFingerprint(record.properties, picture);
}

std::optional<RecordEntry> StoreTransaction::find(const RecordKey& key) const {
  const auto added = addedByKey_.find(key);
  return added != addedByKey_.end() ? std::optional(added->second) : committed_.find(key);
}

// Stored records and programs name a container by its standard id alone, so two of one standard id
// could not be told apart. Stores of earlier versions may hold such a pair; it can still be read.
void StoreTransaction::addContainer(const ContainerInfo& container) {
  const auto standardId = standardContainerId(container.identifier);
  if (standardId.empty()) {
    throw RefusedRequest("\"" + container.identifier + "\" is no identifier");
  }
  for (const auto& known : committed_.containers().all()) {
    if (standardContainerId(known->identifier) != standardId) continue;
    throw RefusedRequest("there is an account with the identifier " + known->identifier +
                         " already");
  }
  file_.statement(Sql::InsertContainer)
      .bindText(1, container.identifier)
      .bindText(2, container.name)
      .bind(3, container.type)
      .run();
  committed_.containers().forget();
}

void StoreTransaction::removeContainer(const ContainerRemoval& removal) {
  const auto row = committed_.containers().rowOf(removal.identifier);
  if (row == 0) throw RefusedRequest("there is no account " + removal.identifier);
  if (row == 1) throw RefusedRequest("the local account cannot be removed");
  std::vector<Entry> held;
  {
    auto& rows = file_.statement(Sql::RecordsOfContainer);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, row);
    while (rows.step()) held.push_back(entryOfRow(rows));
  }
  if (!held.empty() && !removal.withRecords) {
    throw RefusedRequest("the account " + removal.identifier + " holds " +
                         std::to_string(held.size()) + (held.size() == 1 ? " record" : " records"));
  }
  for (const auto& entry : held) removeRecord(entry);
  file_.statement(Sql::DeleteContainer).bind(1, row).run();
  committed_.containers().forget();
}

void StoreTransaction::addRecord(NewRecord& record) {
  const auto container = committed_.containers().rowOf(record.container);
  if (container == 0) throw RefusedRequest("there is no account " + record.container);
  auto& insert = file_.statement(Sql::InsertRecord);
  while (true) {
    const StoredUid uid(record.key);
    insert.bind(1, nextRow_);
    uid.bindTo(insert, 2);
    insert.bind(3, static_cast<std::int64_t>(record.kind)).bind(4, container).run();
    if (file_.connection().changes() != 0) break;
    // The identifier is taken: this is the copy of a contact that is stored already. The copy gets
    // an identifier of its own, and this request's links mean the copy.
    const auto fresh = RecordKey::make(record.kind);
    renamed_[record.key] = fresh;
    record.key = fresh;
  }
  const auto picture = pictureOf(record);
  writeContent(Sql::InsertContent, nextRow_, record.properties, fingerprintOf(record, picture));
  if (picture) writeImage(nextRow_, picture);
  const Entry entry{record.key, nextRow_, container, record.kind};
  assert(written_.added.empty() || written_.added.back().row < entry.row);
  written_.added.push_back(entry);
  addedByKey_.emplace(record.key, entry);
  ++nextRow_;
}

void StoreTransaction::replaceRecord(const ReplacedRecord& record) {
  const auto entry = find(record.key);
  if (!entry) throw RefusedRequest("there is no record " + record.key.text());
  writeContent(Sql::UpdateContent, entry->row, record.properties,
               contentFingerprint(record.properties, record.image));
  writeImage(entry->row, record.image);
  written_.changedValues.push_back(record.key);
}

// The merge of a save. The row is read inside the transaction, so it holds what other processes
// have saved since this one read it, and only the properties that this process has changed are laid
// over it: two processes that change different properties both win, and of the same property the
// later save does. A removal elsewhere wins over any edit.
std::string StoreTransaction::applyEdit(const RecordEdit& edit) {
  const auto dropped = [&](const std::string& why) {
    return "the changes of " + edit.key.text() + " were dropped: " + why;
  };
  const auto entry = committed_.find(edit.key);
  if (!entry) return dropped("it was removed elsewhere");
  std::shared_ptr<const PropertyBag> before;
  try {
    before = committed_.values(edit.key);
  } catch (const DamagedRecord& error) {
    // One damaged record must not keep every other change from being saved.
    return dropped(error.what());
  }
  assert(before != nullptr);
  auto properties = *before;
  for (const auto& each : edit.values) properties.set(each.property, each.value);
  std::uint64_t picture = 0;
  if (edit.image) {
    const auto image = edit.image->get();
    writeImage(entry->row, image);
    picture = checksumOf(image);
  } else {
    picture = pictureChecksum(entry->row);
  }
  writeContent(Sql::UpdateContent, entry->row, properties, contentFingerprint(properties, picture));
  written_.changedValues.push_back(edit.key);
  return {};
}

// Values, picture and links go with the row. The removal table tells other processes, which hold an
// index of the rows, that this one is gone.
void StoreTransaction::removeRecord(const Entry& entry) {
  file_.statement(Sql::DeleteRecord).bind(1, entry.row).run();
  file_.statement(Sql::InsertRemoval).bind(1, entry.row).run();
  written_.removedRows.push_back(entry.row);
  written_.changedValues.push_back(entry.key);
}

std::string StoreTransaction::addLink(const Link& link) {
  const auto meant = [&](const RecordKey& key) {
    const auto renamed = renamed_.find(key);
    return find(renamed != renamed_.end() ? renamed->second : key);
  };
  const auto group = meant(link.group);
  const auto child = meant(link.child);
  const auto named = [&](const char* why) {
    return "the link from " + link.group.text() + " to " + link.child.text() + why;
  };
  if (!group || !child) return named(" was dropped: one of them is not there");
  if (group->kind != RecordKind::Group) return named(" was refused: the first is no group");
  if (group->container != child->container) return named(" was refused: it crosses accounts");
  if (child->kind == RecordKind::Group && closesCircleOfRows(group->row, child->row)) {
    return named(" was refused: a group would be below itself");
  }
  file_.statement(Sql::InsertLink).bind(1, group->row).bind(2, child->row).run();
  written_.linksChanged = true;
  return {};
}

bool StoreTransaction::closesCircleOfRows(std::int64_t group, std::int64_t child) {
  const auto column = [](sqlite::Statement& rows) {
    std::vector<std::int64_t> values;
    const sqlite::StatementScope scope(rows);
    while (rows.step()) values.push_back(rows.integer(0));
    return values;
  };
  return closesCircle(
      group, child,
      [&](std::int64_t row) { return column(file_.statement(Sql::ParentRows).bind(1, row)); },
      [&](std::int64_t row) {
        auto& rows = file_.statement(Sql::SubgroupRows);
        return column(rows.bind(1, row).bind(2, static_cast<std::int64_t>(RecordKind::Group)));
      });
}

void StoreTransaction::removeLink(const Link& link) {
  const auto group = committed_.find(link.group);
  const auto child = committed_.find(link.child);
  if (!group || !child) return;
  file_.statement(Sql::DeleteLink).bind(1, group->row).bind(2, child->row).run();
  written_.linksChanged = true;
}

void StoreTransaction::writeContent(Sql which, std::int64_t row, const PropertyBag& properties,
                                    std::uint64_t fingerprint) {
  file_.writeCustomProperties(properties);
  const auto bytes = encodeProperties(properties);
  const auto* cardUid = properties.text(property_id::kCardUid);
  auto& write = file_.statement(which);
  write.bind(1, row)
      .bindText(2, cardUid != nullptr ? TextView(*cardUid) : TextView())
      .bind(3, static_cast<std::int64_t>(fingerprint))
      .bindBlob(4, bytes)
      .run();
}

void StoreTransaction::writeImage(std::int64_t row, const Data& image) {
  if (!image) {
    file_.statement(Sql::DeleteImage).bind(1, row).run();
    return;
  }
  file_.statement(Sql::SetImage)
      .bind(1, row)
      .bind(2, static_cast<std::int64_t>(checksum64(*image)))
      .bindBlob(3, *image)
      .run();
}

std::uint64_t StoreTransaction::pictureChecksum(std::int64_t row) {
  auto& picture = file_.statement(Sql::PictureChecksum);
  const sqlite::StatementScope scope(picture);
  picture.bind(1, row);
  return picture.step() ? static_cast<std::uint64_t>(picture.integer(0)) : 0;
}

}  // namespace ox
