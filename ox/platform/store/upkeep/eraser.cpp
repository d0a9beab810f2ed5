#include "ox/platform/store/upkeep/eraser.hpp"

#include <set>
#include <utility>
#include <vector>

#include "ox/base/sqlite/error.hpp"
#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/search/person_search.hpp"
#include "ox/platform/store/upkeep/damaged_sync.hpp"
#include "ox/platform/store/upkeep/repair.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {
namespace {

// What one transaction erases.
class Eraser {
 public:
  Eraser(sqlite::Connection& file, const RecordKey& key) : file_(file), key_(key), uid_(key) {}

  bool erase(const std::string& name, std::int64_t followedTags) {
    const auto found = rows();
    found_ = !found.empty();
    if (found_) forgetDamagedSync(file_);  // nor can anybody tell whom that is about
    for (const auto row : found) eraseRow(row);
    eraseTags();
    eraseNames(name);
    eraseRuns(name);
    if (!found_) return false;
    // Nobody can tell whom a damaged row is about.
    file_.execute("DELETE FROM change WHERE sound IS NOT 1");
    beginAnew(followedTags);
    return true;
  }

 private:
  std::vector<std::int64_t> numbersOf(sqlite::Statement& rows) {
    std::vector<std::int64_t> numbers;
    while (rows.step()) numbers.push_back(rows.integer(0));
    return numbers;
  }

  std::vector<std::int64_t> rows() {
    auto rows = file_.prepare(
        "SELECT id FROM record WHERE uid = ?1 UNION "
        "SELECT record FROM change WHERE what = 3 AND after = ?1");
    uid_.bindTo(rows, 1);
    return numbersOf(rows);
  }

  void runWith(const char* sql, std::int64_t row) { file_.prepare(sql).bind(1, row).run(); }

  void eraseRow(std::int64_t row) {
    noteOriginsOf(row);
    runWith(
        "DELETE FROM image WHERE id IN (SELECT image FROM content WHERE record = ?1 UNION "
        "SELECT other FROM change WHERE record = ?1 AND what IN (2, 3))",
        row);
    runWith("DELETE FROM change WHERE record = ?1 AND what NOT IN (7, 8)", row);
    eraseFromLists(row);
    runWith("DELETE FROM record WHERE id = ?1", row);
    eraseFromCards(row);
  }

  // Her card keeps what the server has to be told to delete it, and that it was agreed once, which
  // no fingerprint of hers tells. A group's card may name her by her UID until the next run has
  // told the server that she is no member.
  void eraseFromCards(std::int64_t row) {
    runWith("DELETE FROM sync_conflict WHERE card IN (SELECT id FROM sync_card WHERE record = ?1)",
            row);
    runWith(
        "UPDATE sync_text SET text = x'', agreed = x'', tags = x'', members = x'', "
        "sent = x'' "
        "WHERE card IN (SELECT id FROM sync_card WHERE record = ?1)",
        row);
    runWith(
        "UPDATE sync_card SET uid = '', fingerprint = fingerprint <> 0, beside = 0, "
        "keeps_less = '', refused = '', refused_fingerprint = 0 WHERE record = ?1",
        row);
  }

  void noteOriginsOf(std::int64_t row) {
    auto origins = file_.prepare(
        "SELECT origin FROM act WHERE number = (SELECT min(number) FROM act "
        "WHERE next_record > ?1) UNION SELECT a.origin FROM change c JOIN act a ON a.number = "
        "(SELECT min(number) FROM act WHERE next_change > c.id) WHERE "
        "c.record = ?1 AND c.what NOT IN (7, 8)");
    origins.bind(1, row);
    for (const auto origin : numbersOf(origins)) origins_.insert(origin);
  }

  // Takes the record out of what the journal tells of the links of groups.
  void eraseFromLists(std::int64_t child) {
    std::vector<std::pair<std::int64_t, NumberedLinks>> others;
    {
      auto rows = file_.prepare("SELECT * FROM change WHERE what IN (5, 6) AND sound");
      while (rows.step()) {
        const JournalRow row(rows);
        auto links = linksOf(row);
        if (std::erase_if(links, [&](const auto& link) { return link.child == child; }) == 0) {
          continue;
        }
        others.emplace_back(row.id(), std::move(links));
      }
    }
    for (const auto& [row, links] : others) {
      noteOriginOfChange(row);
      if (links.empty()) {
        runWith("DELETE FROM change WHERE id = ?1", row);
        continue;
      }
      const auto bytes = encodeLinks(links);
      file_
          .prepare(
              "UPDATE change SET before = CASE what WHEN 6 THEN ?2 END, "
              "after = CASE what WHEN 5 THEN ?2 END WHERE id = ?1")
          .bind(1, row)
          .bindBlob(2, bytes)
          .run();
    }
  }

  // A damaged list tells nothing of anybody.
  static NumberedLinks linksOf(const JournalRow& row) {
    try {
      return row.links();
    } catch (const DamagedLinks&) {
      return {};
    }
  }

  void noteOriginOfChange(std::int64_t change) {
    auto origins = file_.prepare(
        "SELECT origin FROM act WHERE number = "
        "(SELECT min(number) FROM act WHERE next_change > ?1)");
    origins.bind(1, change);
    for (const auto origin : numbersOf(origins)) origins_.insert(origin);
  }

  // Tags may name the person by the identifier alone.
  void eraseTags() {
    const auto person = key_.text();
    std::vector<std::int64_t> changes;
    auto rows = file_.prepare("SELECT id, before, after FROM change WHERE what = 9");
    while (rows.step()) {
      try {
        if (decodeTagChange(rows.blob(1), rows.blob(2)).person != person) continue;
      } catch (const DamagedTagChange&) {
        continue;
      }
      changes.push_back(rows.integer(0));
    }
    rows.reset();
    for (const auto change : changes) runWith("DELETE FROM change WHERE id = ?1", change);
    found_ = found_ || !changes.empty();
  }

  void eraseNames(const std::string& name) {
    if (!name.empty()) {
      auto origins = file_.prepare("SELECT id FROM origin WHERE instr(command, ?1) > 0");
      origins.bindText(1, name);
      for (const auto origin : numbersOf(origins)) origins_.insert(origin);
    }
    for (const auto origin : origins_) {
      runWith(
          "UPDATE origin SET command = substr(command, 1, instr(command || ' ', ' ') - 1) "
          "WHERE id = ?1 AND sound",
          origin);
    }
  }

  void eraseRuns(const std::string& name) {
    if (name.empty()) return;
    file_
        .prepare(
            "DELETE FROM sync_run WHERE instr(outcome, ?1) > 0 OR "
            "instr(counts, CAST(?1 AS BLOB)) > 0")
        .bindText(1, name)
        .run();
  }

  // The erasing is an act of its own that nobody can take back; it tells that something was done.
  void beginAnew(std::int64_t followedTags) {
    // The tag file tells by the names what it has followed.
    runWith("DELETE FROM tag_debt WHERE number <= ?1", followedTags);
    runWith(
        "UPDATE act SET name = randomblob(16) WHERE sound AND (?1 > 0 OR number NOT IN "
        "(SELECT number FROM tag_debt))",
        followedTags);
    file_.execute(
        "INSERT INTO origin(program, command, together, undoes, first_act) "
        "SELECT 'oxcontacts', 'forget', 0, 0, max(number) + 1 FROM act;"
        "INSERT INTO act(number, name, at, origin, next_record, next_link, next_change, bytes) "
        "SELECT number + 1, randomblob(16), "
        "CAST((julianday('now') - 2440587.5) * 86400000 AS INTEGER), "
        "(SELECT max(id) FROM origin), next_record, next_link, next_change, bytes FROM act "
        "ORDER BY number DESC LIMIT 1;");
  }

  sqlite::Connection& file_;
  const RecordKey& key_;
  StoredUid uid_;
  bool found_ = false;
  std::set<std::int64_t> origins_;
};

// What was deleted earlier may still stand in parts of pages that nobody uses: only writing every
// page anew, and the log into the file, leaves nothing of it.
void writeAnew(sqlite::Connection& file, const std::string& path) {
  file.execute("PRAGMA temp_store=FILE");
  file.execute("VACUUM");
  if (file.queryInteger("PRAGMA wal_checkpoint(TRUNCATE)") == 0) return;
  throw StoreError(
      StoreError::Kind::Busy,
      path + ": another program is using the store; until it ends traces stay in " + path + "-wal",
      path);
}

}  // namespace

bool eraseRecord(const std::string& path, const RecordKey& key, const std::string& name,
                 std::int64_t followedTags) {
  try {
    auto store = openExistingStoreFile(path, MissingIndexes::Allow);
    auto& file = store.file();
    file.execute("PRAGMA foreign_keys=ON; PRAGMA secure_delete=ON; PRAGMA synchronous=FULL");
    sqlite::Transaction transaction(file);
    bringUpToDate(file, path);
    makeMissingIndexes(file);
    const bool found = Eraser(file, key).erase(name, followedTags);
    transaction.commit();
    removeIndex(path);
    // Whether or not: an earlier try may have been kept from it.
    writeAnew(file, path);
    return found;
  } catch (const sqlite::Error& error) {
    throwStoreError(path, error);
  } catch (const DamagedRow& error) {
    throw StoreError(StoreError::Kind::Corrupt, path + ": " + error.what(), path);
  }
}

}  // namespace ox
