#include "ox/platform/store/file/statements.hpp"

#include <array>
#include <cassert>
#include <cstring>

#include "ox/base/sqlite/row_sum.hpp"

namespace ox {
namespace {

constexpr int kTextColumn = 3;
constexpr int kRecordColumns = 4;
constexpr int kLinkColumns = 3;
constexpr std::size_t kUidBytes = 16;

struct Row {
  Sql which;
  std::string_view text;
};

constexpr std::array kStatements = {
    Row{Sql::DataVersion, "PRAGMA data_version"},
    Row{Sql::CustomProperties, "SELECT name, type, sound FROM custom_property ORDER BY rowid"},
    Row{Sql::CustomPropertyType, "SELECT type, sound FROM custom_property WHERE name = ?1"},
    Row{Sql::Containers,
        "SELECT id, identifier, name, type, sound FROM container "
        "ORDER BY type <> 1, id"},
    Row{Sql::LastAct, "SELECT * FROM act ORDER BY number DESC LIMIT 1"},
    // How old the journal is, and how large: the first row only tells where the next one begins.
    Row{Sql::OldestAct,
        "SELECT f.at, l.bytes - z.bytes, f.sound AND z.sound AND l.sound, "
        "(SELECT value FROM setting WHERE name = 'journal_days' AND sound), "
        "(SELECT value FROM setting WHERE name = 'journal_bytes' AND sound) "
        "FROM (SELECT * FROM act ORDER BY number LIMIT 1) z, "
        "(SELECT * FROM act ORDER BY number LIMIT 1 OFFSET 1) f, "
        "(SELECT * FROM act ORDER BY number DESC LIMIT 1) l"},
    Row{Sql::ActByNumber, "SELECT * FROM act WHERE number = ?1"},
    Row{Sql::ChangesFrom,
        "SELECT c.*, r.uid, r.sound FROM change c LEFT JOIN record r ON r.id = c.record "
        "WHERE c.id >= ?1 ORDER BY c.id"},
    Row{Sql::UidsOfRows,
        "SELECT r.uid, r.sound FROM keys(?1) k CROSS JOIN record r ON r.id = k.key"},
    Row{Sql::RecordsOfRows,
        "SELECT id, uid, kind, container, checksum FROM record WHERE id >= ?1 AND id < ?2 ORDER BY "
        "id "
        "LIMIT ?3"},
    // A picture whose row is not there is a damaged one, not none: the number of its row stands for
    // its checksum.
    Row{Sql::ContentOfRow,
        "SELECT c.properties, ifnull(i.checksum, c.image), c.sound FROM content c LEFT JOIN image "
        "i ON i.id = "
        "c.image "
        "WHERE c.record = ?1"},
    Row{Sql::FingerprintsOfRows,
        "SELECT k.rowid, c.fingerprint, c.sound FROM keys(?1) k "
        "CROSS JOIN content c ON c.record = k.key"},
    Row{Sql::ImageChecksum, "SELECT checksum FROM image WHERE id = ?1"},
    Row{Sql::RecordsAfter,
        "SELECT id, uid, kind, container, checksum FROM record WHERE id > ?1 ORDER BY id"},
    Row{Sql::RecordsBetweenUids,
        "SELECT id, uid, kind, container, checksum FROM record WHERE uid BETWEEN ?1 AND ?2 "
        "ORDER BY uid"},
    Row{Sql::RecordByUid, "SELECT id, uid, kind, container, checksum FROM record WHERE uid = ?1"},
    Row{Sql::ContentFrom,
        "SELECT c.record, c.properties, ifnull(i.checksum, c.image), c.sound FROM content c "
        "LEFT JOIN image i ON i.id = c.image "
        "WHERE c.record >= ?1 ORDER BY c.record LIMIT ?2"},
    Row{Sql::PicturesFrom,
        "SELECT c.record, i.checksum, i.data, c.sound FROM content c "
        "LEFT JOIN image i ON i.id = c.image "
        "WHERE c.image IS NOT NULL AND c.record BETWEEN ?1 AND ?2 ORDER BY c.record"},
    Row{Sql::ParentsOfRow,
        "SELECT r.uid, l.sound AND r.sound FROM link l JOIN record r ON r.id = l.parent WHERE "
        "l.child = ?1 "
        "ORDER BY l.id"},
    // About many at once. The list comes first and in its order, whatever the planner thinks of it;
    // what an index of one column finds for a key comes in the order of the rows. So nothing is
    // sorted but the links to parents, whose index is that of both ends.
    Row{Sql::RecordsByUids,
        "SELECT r.id, r.uid, r.kind, r.container, r.checksum, k.rowid "
        "FROM keys(?1) k CROSS JOIN record r ON r.uid = k.key"},
    Row{Sql::ValuesOfRows,
        "SELECT k.rowid, c.properties, ifnull(i.checksum, c.image), c.sound FROM keys(?1) k "
        "CROSS JOIN content c ON c.record = k.key LEFT JOIN image i ON i.id = c.image"},
    Row{Sql::ContentsOfRows,
        "SELECT k.rowid, c.properties, ifnull(i.checksum, c.image), i.data, c.sound "
        "FROM keys(?1) k CROSS JOIN content c ON c.record = k.key "
        "LEFT JOIN image i ON i.id = c.image"},
    Row{Sql::RecordsInRows,
        "SELECT r.id, r.uid, r.kind, r.container, r.checksum, k.rowid "
        "FROM keys(?1) k CROSS JOIN record r ON r.id = k.key"},
    Row{Sql::RecordsByCardUids,
        "SELECT r.id, r.uid, r.kind, r.container, r.checksum, k.rowid, c.fingerprint, c.sound "
        "FROM keys(?1) k CROSS JOIN content c ON c.card_uid = k.key "
        "CROSS JOIN record r ON r.id = c.record ORDER BY k.rowid"},
    Row{Sql::RecordsByFingerprints,
        "SELECT r.id, r.uid, r.kind, r.container, r.checksum, k.rowid, c.fingerprint, c.sound "
        "FROM keys(?1) k CROSS JOIN content c ON c.fingerprint = k.key "
        "CROSS JOIN record r ON r.id = c.record ORDER BY k.rowid"},
    Row{Sql::RecordsByRows,
        "SELECT r.id, r.uid, r.kind, r.container, r.checksum, k.rowid, c.fingerprint, c.sound "
        "FROM keys(?1) k CROSS JOIN content c ON c.record = k.key "
        "CROSS JOIN record r ON r.id = c.record"},
    Row{Sql::AnyRecordOfContainer,
        "SELECT 1 FROM record WHERE container = ?1 AND kind = ?2 LIMIT 1"},
    Row{Sql::RecordsOfContainer,
        "SELECT id, uid, kind, container, checksum FROM record WHERE container = ?1 ORDER BY id"},
    Row{Sql::ParentRows, "SELECT parent FROM link WHERE child = ?1"},
    Row{Sql::SubgroupRows,
        "SELECT l.child FROM link l JOIN record r ON r.id = l.child "
        "WHERE l.parent = ?1 AND r.kind = ?2"},
    Row{Sql::ActByName, "SELECT number FROM act WHERE number > ?1 AND name = ?2"},
    Row{Sql::ContainersAddedTo, "SELECT DISTINCT container FROM record WHERE id >= ?1"},
    Row{Sql::OriginByRow, "SELECT id FROM origin WHERE id = ?1"},
    Row{Sql::InsertOrigin,
        "INSERT INTO origin(program, command, together, undoes, first_act) "
        "VALUES(?1, ?2, ?3, ?4, ?5)"},
    Row{Sql::InsertAct,
        "INSERT INTO act(number, name, at, origin, next_record, next_link, next_change, bytes) "
        "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)"},
    Row{Sql::InsertContainer,
        "INSERT INTO container(id, identifier, name, type) VALUES(?1, ?2, ?3, ?4)"},
    Row{Sql::DeleteContainer, "DELETE FROM container WHERE id = ?1"},
    Row{Sql::InsertRecord,
        "INSERT INTO record(id, uid, kind, container) VALUES(?1, ?2, ?3, ?4) "
        "ON CONFLICT(uid) DO NOTHING"},
    Row{Sql::DeleteRecords, "DELETE FROM record WHERE id IN (SELECT key FROM keys(?1))"},
    Row{Sql::InsertContent,
        "INSERT INTO content(record, card_uid, fingerprint, image, properties) "
        "VALUES(?1, ?2, ?3, ?4, ?5) ON CONFLICT(record) DO NOTHING"},
    Row{Sql::UpdateContent,
        "UPDATE content SET card_uid = ?2, fingerprint = ?3, properties = ?5 "
        "WHERE record = ?1 AND sound"},
    // SQLite would write the index entry of an equal card_uid anew.
    Row{Sql::UpdateContentOfSameUid,
        "UPDATE content SET fingerprint = ?3, properties = ?5 WHERE record = ?1 AND sound"},
    Row{Sql::UpdateContentAndImage,
        "UPDATE content SET card_uid = ?2, fingerprint = ?3, image = ?4, properties = ?5 "
        "WHERE record = ?1"},
    Row{Sql::InsertImage, "INSERT INTO image(checksum, data) VALUES(?1, ?2)"},
    Row{Sql::ImageOfRow,
        "SELECT i.id, i.checksum, length(i.data) FROM content c JOIN image i ON i.id = c.image "
        "WHERE c.record = ?1 AND c.sound"},
    Row{Sql::LinksToChildren,
        "SELECT l.id, l.parent, l.child, l.checksum, k.rowid FROM keys(?1) k "
        "CROSS JOIN link l ON l.parent = k.key ORDER BY k.rowid"},
    Row{Sql::LinksToParents,
        "SELECT l.id, l.parent, l.child, l.checksum, k.rowid FROM keys(?1) k "
        "CROSS JOIN link l ON l.child = k.key ORDER BY k.rowid, l.id"},
    Row{Sql::InsertLink,
        "INSERT INTO link(id, parent, child) VALUES(?1, ?2, ?3) "
        "ON CONFLICT(child, parent) DO NOTHING"},
    // SQLite wants the WHERE to tell the conflict's ON from that of a join.
    Row{Sql::InsertLinks,
        "INSERT INTO link(id, parent, child) SELECT ?1 + rowid, ?2, key FROM keys(?3) WHERE true "
        "ON CONFLICT(child, parent) DO NOTHING"},
    Row{Sql::LinksFromTo, "SELECT id FROM link WHERE id >= ?1 AND id < ?2"},
    Row{Sql::LinkOfNumber, "SELECT id FROM link WHERE id = ?1"},
    Row{Sql::LinkNumber, "SELECT id FROM link WHERE child = ?2 AND parent = ?1"},
    Row{Sql::LinkNumbers,
        "SELECT k.rowid, l.id FROM keys(?2) k CROSS JOIN link l ON l.child = k.key AND l.parent = "
        "?1"},
    Row{Sql::DeleteLinks, "DELETE FROM link WHERE id IN (SELECT key FROM keys(?1))"},
    Row{Sql::InsertChange,
        "INSERT INTO change(id, what, record, container, other, place, before, after) "
        "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)"},
    Row{Sql::RecordsToRemove,
        "SELECT k.rowid, c.properties, i.id, ifnull(length(i.data), 0) FROM keys(?1) k "
        "CROSS JOIN record r ON r.id = k.key LEFT JOIN content c ON c.record = r.id "
        "LEFT JOIN image i ON i.id = c.image AND c.sound"},
    Row{Sql::InsertTagDebt, "INSERT INTO tag_debt(number) VALUES(?1)"},
    Row{Sql::TagDebts,
        "SELECT d.number, a.name, d.sound AND ifnull(a.sound, 1) FROM tag_debt d "
        "LEFT JOIN act a ON a.number = d.number ORDER BY d.number"},
    Row{Sql::TagChangesOfAct,
        "SELECT before, after, sound FROM change WHERE what = 9 AND id >= (SELECT next_change FROM "
        "act "
        "WHERE number = ?1 - 1) AND id < (SELECT next_change FROM act WHERE number = ?1) "
        "ORDER BY id"},
    Row{Sql::DeleteTagDebt, "DELETE FROM tag_debt WHERE number <= ?1"},
    Row{Sql::StoreName, "SELECT name, sound FROM store"},
    Row{Sql::InsertCustomProperty,
        "INSERT INTO custom_property(name, type) VALUES(?1, ?2) ON CONFLICT DO NOTHING"},
    Row{Sql::InsertSyncLogin,
        "INSERT INTO sync_login(name, kind, url, user, password_kind, password_source, scheme, "
        "principal, homes, origins, client_certificate, authorities, allow_http, not_before) "
        "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14) ON CONFLICT(name) DO "
        "NOTHING"},
    Row{Sql::UpdateSyncLogin,
        "UPDATE OR IGNORE sync_login SET name = ?1, kind = ?2, url = ?3, user = ?4, "
        "password_kind = ?5, password_source = ?6, scheme = ?7, principal = ?8, homes = ?9, "
        "origins = ?10, client_certificate = ?11, authorities = ?12, allow_http = ?13, "
        "not_before = ?14 WHERE id = ?15"},
    // Of a container that goes, unless other books are of the same login.
    Row{Sql::DeleteSyncLoginOf,
        "DELETE FROM sync_login WHERE id = (SELECT login FROM sync_book WHERE container = ?1) "
        "AND NOT EXISTS(SELECT 1 FROM sync_book WHERE login = sync_login.id AND container <> ?1)"},
    // Of the login with that number, or with that name where the number is 0.
    Row{Sql::PutSyncBook,
        "INSERT INTO sync_book(container, login, url, name, read_only, token, reports, "
        "versions, most_bytes, group_spelling, last_whole, last_success, state, sent) "
        "SELECT ?1, id, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15 "
        "FROM sync_login "
        "WHERE id = ?2 OR (?2 = 0 AND name = ?3) "
        "ON CONFLICT(container) DO UPDATE SET login = excluded.login, url = excluded.url, "
        "name = excluded.name, read_only = excluded.read_only, token = excluded.token, "
        "reports = excluded.reports, versions = excluded.versions, "
        "most_bytes = excluded.most_bytes, group_spelling = excluded.group_spelling, "
        "last_whole = excluded.last_whole, last_success = excluded.last_success, "
        "state = excluded.state, sent = excluded.sent"},
    Row{Sql::InsertSyncCard,
        "INSERT INTO sync_card(container, record, kind, href, path, etag, uid, fingerprint, "
        "beside, intent, keeps_less, refused, refused_fingerprint) VALUES(?1, ?2, ?3, ?4, ?5, ?6, "
        "?7, ?8, ?9, ?10, ?11, ?12, ?13) ON CONFLICT(container, path) DO NOTHING"},
    // Whoever keeps the record of a damaged card would make it sound.
    Row{Sql::UpdateSyncCard,
        "UPDATE OR IGNORE sync_card SET container = ?1, record = ifnull(?2, record), kind = ?3, "
        "href = ?4, path = ?5, etag = ?6, uid = ?7, fingerprint = ?8, beside = ?9, intent = ?10, "
        "keeps_less = ?11, refused = ?12, refused_fingerprint = ?13 WHERE id = ?14 AND sound"},
    Row{Sql::DeleteSyncCards, "DELETE FROM sync_card WHERE id IN (SELECT key FROM keys(?1))"},
    Row{Sql::PutSyncText,
        "INSERT OR REPLACE INTO sync_text(card, text, agreed, tags, members, sent) "
        "VALUES(?1, ?2, ?3, ?4, ?5, ?6)"},
    // Nothing makes a damaged one sound but all of it.
    Row{Sql::SetSyncSent, "UPDATE sync_text SET sent = ?2 WHERE card = ?1 AND sound"},
    Row{Sql::InsertSyncConflict,
        "INSERT INTO sync_conflict(card, property, theirs, ours, base, at) "
        "SELECT id, ?3, ?4, ?5, ?6, ?7 FROM sync_card WHERE container = ?1 AND path = ?2"},
    Row{Sql::UpdateSyncConflict,
        "UPDATE sync_conflict SET card = (SELECT id FROM sync_card WHERE container = ?1 AND "
        "path = ?2), property = ?3, theirs = ?4, ours = ?5, base = ?6, at = ?7 WHERE id = ?8 "
        "AND EXISTS(SELECT 1 FROM sync_card WHERE container = ?1 AND path = ?2)"},
    Row{Sql::DeleteSyncConflicts,
        "DELETE FROM sync_conflict WHERE id IN (SELECT key FROM keys(?1))"},
    Row{Sql::ReadOnlyContainers, "SELECT container FROM sync_book WHERE read_only <> 0 AND sound"},
    Row{Sql::InsertSyncRun,
        "INSERT INTO sync_run(container, began, ended, counts, outcome) "
        "VALUES(?1, ?2, ?3, ?4, ?5)"},
    Row{Sql::DeleteOldSyncRuns,
        "DELETE FROM sync_run WHERE container = ?1 AND id <= (SELECT id FROM sync_run "
        "WHERE container = ?1 ORDER BY id DESC LIMIT 1 OFFSET ?2)"},
};

[[noreturn]] void damagedIdentifier() {
  throw DamagedRow("a stored identifier is damaged");
}

constexpr bool inOrderOfTheEnumeration() {
  for (std::size_t i = 0; i < kStatements.size(); ++i) {
    if (static_cast<std::size_t>(kStatements[i].which) != i) return false;
  }
  return kStatements.size() == static_cast<std::size_t>(Sql::Count);
}
static_assert(inOrderOfTheEnumeration());

}  // namespace

std::string_view sqlOf(Sql which) {
  assert(which < Sql::Count);
  return kStatements[static_cast<std::size_t>(which)].text;
}

StoredUid::StoredUid(const RecordKey& key) : asText_(key.isForeign()) {
  assert(!key.isNone());
  const auto& bytes = key.bytes();
  bytes_ =
      asText_ ? key.text() : std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

void StoredUid::addTo(sqlite::KeyList& keys) const {
  if (asText_) {
    keys.addText(bytes_);
  } else {
    keys.addBlob(bytes_);
  }
}

void StoredUid::bindTo(sqlite::Statement& statement, int index) const {
  if (asText_) {
    statement.bindText(index, bytes_);
  } else {
    statement.bindBlob(index, bytes_);
  }
}

RecordKey keyOfColumn(const sqlite::Statement& row, int column) {
  if (row.columnType(column) == kTextColumn) return RecordKey::of(row.text(column));
  const auto bytes = row.blob(column);
  if (bytes.size() != kUidBytes) damagedIdentifier();
  std::array<std::uint8_t, kUidBytes> uid{};
  std::memcpy(uid.data(), bytes.data(), bytes.size());
  const auto key = RecordKey::fromBytes(uid);
  if (!key.isPacked()) damagedIdentifier();
  return key;
}

void requireSound(const sqlite::Statement& row, int column, const char* what) {
  if (row.integer(column) == 0) throw DamagedRow(std::string(what) + " is damaged");
}

RecordKey soundKey(const sqlite::Statement& row, int key, int sound) {
  requireSound(row, sound, "a row that leads to a record");
  return keyOfColumn(row, key);
}

RecordKind kindOfRow(const sqlite::Statement& row) {
  return row.integer(2) == 0 ? RecordKind::Person : RecordKind::Group;
}

StoredLink linkOfRow(const sqlite::Statement& row) {
  return {row.integer(0), row.integer(1), row.integer(2), sqlite::isSound(row, kLinkColumns)};
}

RecordEntry entryOfRow(const sqlite::Statement& row) {
  if (!sqlite::isSound(row, kRecordColumns)) {
    throw DamagedRow("row " + std::to_string(row.integer(0)) + " of the records is damaged");
  }
  if (!isContainerRow(row.integer(3))) {
    throw DamagedRow("row " + std::to_string(row.integer(0)) + " of the records is in no account");
  }
  RecordEntry entry;
  entry.row = row.integer(0);
  entry.key = keyOfColumn(row, 1);
  entry.kind = kindOfRow(row);
  entry.container = static_cast<std::int32_t>(row.integer(3));
  return entry;
}

}  // namespace ox
