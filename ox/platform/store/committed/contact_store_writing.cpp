#include <string>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/committed/circle.hpp"
#include "ox/platform/store/committed/contact_store.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

// A request that must not be carried out as it stands. Nothing of it is written.
class Refused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::uint64_t checksumOf(const Data& image) {
  return image ? checksum64(*image) : 0;
}

std::uint64_t fingerprintOf(const NewRecord& record) {
  return record.fingerprint ? *record.fingerprint
                            : contentFingerprint(record.properties, record.image);
}

}  // namespace

// What the memory has to learn once the transaction is committed.
struct ContactStore::Writing {
  std::int64_t nextRow = 0;
  std::vector<Entry> added;
  std::vector<std::int64_t> removedRows;
  std::vector<RecordKey> changedValues;
  bool linksChanged = false;
  std::unordered_map<RecordKey, Entry> addedByKey;
  std::unordered_map<RecordKey, RecordKey> renamed;  // copies, from the identifier of their source
};

template <typename Step>
void ContactStore::write(bool durable, Step step) {
  guarded([&] {
    auto& file = database();
    if (durable != durable_) {
      file.execute(durable ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
      durable_ = durable;
    }
    Writing writing;
    {
      sqlite::Transaction transaction(file);
      // Inside the write lock nobody else commits: what is read now stays true to the end.
      refresh(Look::Now);
      auto& next = statement(Sql::NextRecord);
      next.step();
      writing.nextRow = next.integer(0);
      next.reset();
      const auto firstRow = writing.nextRow;
      const auto changesBefore = file.totalChanges();
      try {
        step(writing);
        if (writing.nextRow != firstRow) {
          statement(Sql::SetNextRecord).bind(1, writing.nextRow).run();
        }
        transaction.commit();
        // A commit that wrote nothing has synced nothing either.
        if (file.totalChanges() != changesBefore) {
          unsynced_ = !durable;
          ++commits_;
        }
      } catch (...) {
        // What was read in between is what was to be written, and now never was.
        forgetValues();
        writtenCustomProperties_.clear();
        containersLoaded_ = false;
        throw;
      }
    }
    for (const auto& key : writing.changedValues) values_.erase(key);
    if (!writing.changedValues.empty()) lastValues_.reset();
    if (writing.linksChanged || !writing.removedRows.empty()) forgetLinks();
    if (!indexLoaded_) return;
    for (const auto row : writing.removedRows) index_.removeRow(row);
    for (const auto& entry : writing.added) {
      index_.append(entry);
      seenRow_ = entry.row;
    }
  });
}

std::optional<ContactStore::Entry> ContactStore::findWriting(const RecordKey& key,
                                                             const Writing& writing) {
  const auto added = writing.addedByKey.find(key);
  return added != writing.addedByKey.end() ? std::optional(added->second) : find(key);
}

bool ContactStore::execute(SaveRequest& request) {
  try {
    write(false, [&](Writing& writing) {
      settleOutdated(request);
      const bool leavesOut = request.whenOutdated == SaveRequest::WhenOutdated::LeaveOut;
      for (const auto& container : request.newContainers) addContainer(container, writing);
      for (auto& record : request.additions) {
        if (!record.leftOut) addRecord(record, writing);
      }
      for (auto& record : request.replacements) {
        record.leftOut = leavesOut && !findWriting(record.key, writing);
        if (!record.leftOut) replaceRecord(record, writing);
      }
      for (const auto& link : request.removedLinks) removeLink(link, writing);
      for (auto& link : request.links) {
        const auto refused = addLink({link.group, link.child}, writing);
        if (!refused.empty() && !leavesOut) throw Refused(refused);
        link.leftOut = !refused.empty();
      }
      for (const auto& removal : request.removedContainers) removeContainer(removal, writing);
    });
    if (request.moment) request.moment = moment();
    return true;
  } catch (const Refused& refused) {
    request.reason = refused.what();
    return false;
  }
}

SaveReport ContactStore::commit(const RecordChanges& changes) {
  SaveReport report;
  write(true, [&](Writing& writing) {
    for (const auto& edit : changes.edits) applyEdit(edit, writing, report);
    for (const auto& link : changes.removedLinks) removeLink(link, writing);
    for (const auto& link : changes.addedLinks) {
      auto refused = addLink(link, writing);
      if (!refused.empty()) report.dropped.push_back(std::move(refused));
    }
    for (const auto& key : changes.removals) {
      if (const auto entry = find(key)) removeRecord(*entry, writing);
    }
  });
  sync();  // creations, when every edit was dropped
  report.done = true;
  return report;
}

void ContactStore::settleOutdated(SaveRequest& request) {
  request.outdated = request.moment && *request.moment != moment();
  if (!request.outdated) return;
  if (request.whenOutdated == SaveRequest::WhenOutdated::Refuse) {
    throw Refused("the store was changed meanwhile");
  }
  // Before anything is added: what one request adds is not compared with itself.
  for (auto& record : request.additions) record.leftOut = isThere(record);
}

bool ContactStore::isThere(const NewRecord& record) {
  const auto& container = record.container;
  const auto* uid = record.properties.text(property_id::kCardUid);
  if (uid != nullptr && !uidKey(*uid).empty()) {
    return !withCardUid(container, record.kind, *uid).empty();
  }
  return record.kind == RecordKind::Person &&
         !withFingerprint(container, record.kind, fingerprintOf(record)).empty();
}

// Stored records and programs name a container by its standard id alone, so two of one standard id
// could not be told apart. Stores of earlier versions may hold such a pair; it can still be read.
void ContactStore::addContainer(const ContainerInfo& container, Writing&) {
  const auto standardId = standardContainerId(container.identifier);
  if (standardId.empty()) throw Refused("\"" + container.identifier + "\" is no identifier");
  loadContainers();
  for (const auto& known : containers_) {
    if (standardContainerId(known->identifier) != standardId) continue;
    throw Refused("there is an account with the identifier " + known->identifier + " already");
  }
  statement(Sql::InsertContainer)
      .bindText(1, container.identifier)
      .bindText(2, container.name)
      .bind(3, container.type)
      .run();
  containersLoaded_ = false;
}

void ContactStore::removeContainer(const ContainerRemoval& removal, Writing& writing) {
  const auto row = containerRow(removal.identifier);
  if (row == 0) throw Refused("there is no account " + removal.identifier);
  if (row == 1) throw Refused("the local account cannot be removed");
  std::vector<Entry> held;
  {
    auto& rows = statement(Sql::RecordsOfContainer);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, row);
    while (rows.step()) held.push_back(entryOfRow(rows));
  }
  if (!held.empty() && !removal.withRecords) {
    throw Refused("the account " + removal.identifier + " holds " + std::to_string(held.size()) +
                  (held.size() == 1 ? " record" : " records"));
  }
  for (const auto& entry : held) removeRecord(entry, writing);
  statement(Sql::DeleteContainer).bind(1, row).run();
  containersLoaded_ = false;
}

void ContactStore::addRecord(NewRecord& record, Writing& writing) {
  const auto container = containerRow(record.container);
  if (container == 0) throw Refused("there is no account " + record.container);
  auto& insert = statement(Sql::InsertRecord);
  while (true) {
    const StoredUid uid(record.key);
    insert.bind(1, writing.nextRow);
    uid.bindTo(insert, 2);
    insert.bind(3, static_cast<std::int64_t>(record.kind)).bind(4, container).run();
    if (database().changes() != 0) break;
    // The copy of a contact that is stored already; this request's links mean the copy.
    const auto fresh = RecordKey::make(record.kind);
    writing.renamed[record.key] = fresh;
    record.key = fresh;
  }
  writeContent(Sql::InsertContent, writing.nextRow, record.properties, fingerprintOf(record));
  if (record.image) writeImage(writing.nextRow, record.image);
  const Entry entry{record.key, writing.nextRow, container, record.kind, true};
  writing.added.push_back(entry);
  writing.addedByKey.emplace(record.key, entry);
  ++writing.nextRow;
}

void ContactStore::replaceRecord(const ReplacedRecord& record, Writing& writing) {
  const auto entry = findWriting(record.key, writing);
  if (!entry) throw Refused("there is no record " + record.key.text());
  writeContent(Sql::UpdateContent, entry->row, record.properties,
               contentFingerprint(record.properties, record.image));
  writeImage(entry->row, record.image);
  writing.changedValues.push_back(record.key);
}

void ContactStore::applyEdit(const RecordEdit& edit, Writing& writing, SaveReport& report) {
  const auto drop = [&](const std::string& why) {
    report.dropped.push_back("the changes of " + edit.key.text() + " were dropped: " + why);
  };
  const auto entry = find(edit.key);
  if (!entry) return drop("it was removed elsewhere");
  std::shared_ptr<const PropertyBag> before;
  try {
    before = values(edit.key);
  } catch (const DamagedRecord& error) {
    // It must not keep every other change from being saved.
    return drop(error.what());
  }
  auto properties = *before;
  for (const auto& [id, value] : edit.values) properties.set(id, value);
  std::uint64_t picture = 0;
  if (edit.image) {
    const auto image = edit.image->get();
    writeImage(entry->row, image);
    picture = checksumOf(image);
  } else {
    auto& row = statement(Sql::PictureChecksum);
    const sqlite::StatementScope scope(row);
    row.bind(1, entry->row);
    if (row.step()) picture = static_cast<std::uint64_t>(row.integer(0));
  }
  writeContent(Sql::UpdateContent, entry->row, properties, contentFingerprint(properties, picture));
  writing.changedValues.push_back(edit.key);
}

void ContactStore::removeRecord(const Entry& entry, Writing& writing) {
  statement(Sql::DeleteRecord).bind(1, entry.row).run();
  statement(Sql::InsertRemoval).bind(1, entry.row).run();
  writing.removedRows.push_back(entry.row);
  writing.changedValues.push_back(entry.key);
}

std::string ContactStore::addLink(const Link& link, Writing& writing) {
  const auto meant = [&](const RecordKey& key) {
    const auto renamed = writing.renamed.find(key);
    return findWriting(renamed != writing.renamed.end() ? renamed->second : key, writing);
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
  statement(Sql::InsertLink).bind(1, group->row).bind(2, child->row).run();
  writing.linksChanged = true;
  return {};
}

bool ContactStore::closesCircleOfRows(std::int64_t group, std::int64_t child) {
  const auto column = [](sqlite::Statement& rows) {
    std::vector<std::int64_t> values;
    const sqlite::StatementScope scope(rows);
    while (rows.step()) values.push_back(rows.integer(0));
    return values;
  };
  return closesCircle(
      group, child,
      [&](std::int64_t row) { return column(statement(Sql::ParentRows).bind(1, row)); },
      [&](std::int64_t row) {
        auto& rows = statement(Sql::SubgroupRows);
        return column(rows.bind(1, row).bind(2, static_cast<std::int64_t>(RecordKind::Group)));
      });
}

void ContactStore::removeLink(const Link& link, Writing& writing) {
  const auto group = find(link.group);
  const auto child = find(link.child);
  if (!group || !child) return;
  statement(Sql::DeleteLink).bind(1, group->row).bind(2, child->row).run();
  writing.linksChanged = true;
}

void ContactStore::writeContent(Sql which, std::int64_t row, const PropertyBag& properties,
                                std::uint64_t fingerprint) {
  writeCustomProperties(properties);
  const auto bytes = encodeProperties(properties);
  const auto* cardUid = properties.text(property_id::kCardUid);
  auto& write = statement(which);
  write.bind(1, row)
      .bindText(2, cardUid != nullptr ? TextView(*cardUid) : TextView())
      .bind(3, static_cast<std::int64_t>(fingerprint))
      .bindBlob(4, bytes)
      .run();
}

void ContactStore::writeImage(std::int64_t row, const Data& image) {
  if (!image) {
    statement(Sql::DeleteImage).bind(1, row).run();
    return;
  }
  statement(Sql::SetImage)
      .bind(1, row)
      .bind(2, static_cast<std::int64_t>(checksum64(*image)))
      .bindBlob(3, *image)
      .run();
}

void ContactStore::writeCustomProperties(const PropertyBag& properties) {
  for (auto entry = properties.entries().rbegin();
       entry != properties.entries().rend() && entry->first >= kFirstCustomProperty; ++entry) {
    if (!writtenCustomProperties_.insert(entry->first).second) continue;
    statement(Sql::InsertCustomProperty)
        .bindText(1, property_table::nameOf(entry->first))
        .bind(2, property_table::typeOf(entry->first))
        .run();
  }
}

void ContactStore::checkpoint() {
  guarded([&] {
    auto& file = database();
    syncWriteAheadLog(file);
    unsynced_ = false;
    file.execute("PRAGMA synchronous=FULL");
    durable_ = true;
    try {
      file.queryInteger("PRAGMA wal_checkpoint(TRUNCATE)");
    } catch (const sqlite::Error&) {
      // No room, or a reader in the way: it stays in the log, where it is as safe. SQLite tries
      // again by itself.
    }
  });
}

void ContactStore::sync() {
  if (!unsynced_) return;
  syncWriteAheadLog(database_);
  unsynced_ = false;
}

}  // namespace ox
