#include "ox/platform/store/upkeep/repair.hpp"

#include <cstdint>
#include <optional>
#include <system_error>

#include "ox/base/checksum.hpp"
#include "ox/base/clock.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/base/sqlite/index_repair.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/schema/store_connection.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/search/person_search.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/platform/store/upkeep/damaged_sync.hpp"
#include "ox/platform/store/values/journal_row.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

// What one transaction mends.
class Repair {
 public:
  explicit Repair(sqlite::Connection& file) : file_(file) {}

  std::vector<std::string> mend() {
    forgetDamagedSync();
    mendIndexes();
    countAccounts();
    removeLooseLinks();
    deriveAnew();
    return std::move(mended_);
  }

  void mendIndexes() {
    removeTwins();
    const auto missing = missingIndexesOf(file_);
    for (auto& sentence : sqlite::mendIndexes(
             file_, missing, {"container", "custom_property", "link", "record", "sync_login"})) {
      mended_.push_back(std::move(sentence));
    }
  }

 private:
  // What a record is found by, as it stands and as it follows from its values.
  struct Found {
    std::int64_t row = 0;
    std::string name;
    std::int64_t fingerprint = 0;
    Text cardUid;
    bool operator==(const Found&) const = default;
  };

  // Without its index a link may have been made twice. Asked past the index, which may be damaged.
  void removeTwins() {
    file_.execute(
        "DELETE FROM link NOT INDEXED WHERE sound AND id NOT IN "
        "(SELECT min(id) FROM link NOT INDEXED WHERE sound GROUP BY +child, +parent)");
    if (const auto count = file_.changes(); count > 0) {
      mended_.push_back("removed links that stood there twice: " + std::to_string(count));
    }
  }

  void forgetDamagedSync() {
    const auto [cards, notes] = ox::forgetDamagedSync(file_);
    if (cards > 0) {
      mended_.push_back("forgot damaged cards of accounts in step with others: " +
                        std::to_string(cards) + "; the next run lists everything");
    }
    if (notes > 0) {
      mended_.push_back("removed damaged conflicts and runs of accounts in step with others: " +
                        std::to_string(notes));
    }
  }

  void countAccounts() {
    constexpr const char* kLast = "SELECT ifnull(max(id), 0) FROM container";
    constexpr const char* kCounted =
        "SELECT ifnull(max(seq), 0) FROM sqlite_sequence WHERE name = 'container'";
    if (file_.queryInteger(kLast) <= file_.queryInteger(kCounted)) return;
    file_.execute(
        "DELETE FROM sqlite_sequence WHERE name = 'container';"
        "INSERT INTO sqlite_sequence(name, seq) SELECT 'container', max(id) FROM container");
    mended_.emplace_back("counted the rows of accounts anew");
  }

  // The row of a record that seems to be gone may be one that is damaged.
  bool mayHaveLostRecords() {
    return file_.queryInteger(
               "SELECT EXISTS(SELECT 1 FROM record WHERE sound IS NOT 1) OR "
               "EXISTS(SELECT 1 FROM content WHERE record NOT IN (SELECT id FROM record))") != 0;
  }

  void removeLooseLinks() {
    if (mayHaveLostRecords()) return;
    constexpr const char* kLoose =
        " FROM link WHERE sound AND (parent NOT IN (SELECT id FROM record) OR "
        "child NOT IN (SELECT id FROM record))";
    auto loose = file_.prepare(std::string("SELECT id") + kLoose + " ORDER BY id");
    while (loose.step()) {
      mended_.push_back("removed link " + std::to_string(loose.integer(0)) +
                        ", whose group or member is gone");
    }
    loose.reset();
    file_.execute((std::string("DELETE") + kLoose).c_str());
  }

  void deriveAnew() {
    struct Wrong {
      Found found;
      bool isOfOtherValues;
    };
    std::vector<Wrong> wrong;
    auto rows = file_.prepare(
        "SELECT r.id, r.uid, r.kind, r.container, r.checksum, c.properties, c.fingerprint, "
        "c.card_uid, c.image, i.checksum, i.data, c.sound FROM record r "
        "JOIN content c ON c.record = r.id LEFT JOIN image i ON i.id = c.image ORDER BY r.id");
    while (rows.step()) {
      try {
        const auto found = followingFrom(rows);
        if (!found) continue;
        const Found now{found->row, found->name, rows.integer(6), rows.optionalText(7)};
        const bool isSound = rows.integer(11) != 0;
        if (isSound ? *found == now : !makesSound(*found)) continue;
        wrong.push_back({*found, isSound && found->fingerprint != now.fingerprint});
      } catch (const DamagedBytes&) {
        continue;  // told by whoever checks
      }
    }
    rows.reset();
    for (const auto& [found, isOfOtherValues] : wrong) {
      write(found);
      noteDerived(found, isOfOtherValues);
    }
  }

  // Missing when its picture cannot be read.
  static std::optional<Found> followingFrom(const sqlite::Statement& row) {
    const auto entry = entryOfRow(row);
    std::uint64_t picture = 0;
    if (!row.isNull(8)) {
      picture = static_cast<std::uint64_t>(row.integer(9));
      if (row.isNull(9) || checksum64(row.blob(10)) != picture) return std::nullopt;
    }
    const auto properties = decodeProperties(row.blob(5));
    const auto* uid = properties.text(property_id::kCardUid);
    return Found{entry.row, entry.key.text(),
                 static_cast<std::int64_t>(contentFingerprint(properties, picture)),
                 uid != nullptr ? Text(*uid) : std::nullopt};
  }

  // Whether a damaged row would be what was written if that stood in it: then nothing else of it is
  // damaged, and values and picture are those of that record.
  bool makesSound(const Found& found) {
    auto row = file_.prepare(
        "SELECT row_sum(record, ?2, ?3, image) = checksum FROM content WHERE record = ?1");
    row.bind(1, found.row).bindText(2, found.cardUid).bind(3, found.fingerprint);
    return row.step() && row.integer(0) != 0;
  }

  // The checksum of the row does not tell of the values: a sound one that differs was written with
  // others, of which a part was lost.
  void noteDerived(const Found& found, bool isOfOtherValues) {
    mended_.push_back(
        found.name + ": worked out anew what it is found by" +
        (isOfOtherValues ? "; it was written with other values, these may be older" : ""));
  }

  void write(const Found& found) {
    file_.prepare("UPDATE content SET card_uid = ?2, fingerprint = ?3 WHERE record = ?1")
        .bind(1, found.row)
        .bindText(2, found.cardUid)
        .bind(3, found.fingerprint)
        .run();
  }

  sqlite::Connection& file_;
  std::vector<std::string> mended_;
};

bool canBeMended(sqlite::Connection& file, const std::string& path) {
  return versionOf(file, path, MissingIndexes::Allow) == kSchemaVersion &&
         sqlite::hasWholePages(file);
}

void mendRows(sqlite::Connection& file, const std::string& path, RepairReport& repair) {
  // With a rollback journal, whoever writes more than the cache holds lets nobody read any more,
  // and the copy is made by another connection.
  file.execute("PRAGMA journal_mode=WAL; PRAGMA foreign_keys=ON; PRAGMA synchronous=FULL");
  {
    sqlite::Transaction transaction(file);
    repair.mended = Repair(file).mend();
    if (!repair.mended.empty()) {
      repair.left = problemsIn(file);
      // Under the write lock, so that the copy is what was mended; it does not see what is not
      // committed.
      repair.copy = keepCopy(path, "repair");
      transaction.commit();
      return;
    }
  }
  repair.left = problemsIn(file);  // nobody has to wait for that
}

// What is missing cannot be brought back from here, and is told until somebody has said that the
// store is good without it.
void acceptWithoutMissingAct(StoreConnection& store, const std::string& path,
                             RepairReport& repair) {
  try {
    const auto missing = missingActOf(store.file());
    if (!missing) return;
    if (repair.copy.empty()) repair.copy = keepCopy(path, "repair");
    store.anchor().remove();
    repair.mended.push_back("took the store as it is: " + *missing);
  } catch (const std::system_error& error) {
    repair.left.emplace_back(error.what());
  }
}

// What the rows that a statement gives of a store add up to.
template <typename Take>
void readRows(const std::string& path, std::string_view sql, Take take) {
  try {
    auto store = openExistingStoreFile(path);
    auto rows = store.file().prepare(sql);
    take(rows);
  } catch (const sqlite::Error& error) {
    throwStoreError(path, error);
  } catch (const DamagedBytes& error) {
    throw StoreError(StoreError::Kind::Corrupt, path + ": " + error.what(), path);
  }
}

}  // namespace

RepairReport repairStore(const std::string& path) {
  RepairReport repair;
  repair.left = storeProblems(path);
  try {
    auto store = openExistingStoreFile(path, MissingIndexes::Allow);
    auto& file = store.file();
    if (repair.left.empty() || hasDamagedLog(file) || !canBeMended(file, path)) {
      file.keepLog();
      return repair;
    }
    mendRows(file, path, repair);
    removeIndex(path);  // no act tells what was mended
    acceptWithoutMissingAct(store, path, repair);
  } catch (const sqlite::Error& error) {
    throwStoreError(path, error);
  }
  return repair;
}

void makeMissingIndexes(sqlite::Connection& file) {
  if (file.queryInteger("PRAGMA user_version") != kSchemaVersion) return;
  if (!missingIndexesOf(file).empty()) Repair(file).mendIndexes();
}

void makeMissingIndexes(const std::string& path) {
  try {
    auto store = openExistingStoreFile(path, MissingIndexes::Allow);
    auto& file = store.file();
    sqlite::Transaction transaction(file);
    makeMissingIndexes(file);
    transaction.commit();
  } catch (const sqlite::Error& error) {
    throwStoreError(path, error);
  }
}

std::vector<RecordEntry> blankRecordsIn(const std::string& path) {
  constexpr std::int64_t kDay = std::int64_t{24} * 60 * 60 * 1000;
  constexpr std::string_view kBlank =
      "SELECT r.id, r.uid, r.kind, r.container, r.checksum, c.properties FROM record r "
      "JOIN content c ON c.record = r.id AND c.sound WHERE c.image IS NULL "
      "AND c.fingerprint = ?1 AND r.id < "
      "(SELECT ifnull(max(next_record), 0) FROM act WHERE at < ?2 AND sound) AND r.id >= "
      "(SELECT next_record FROM act WHERE sound ORDER BY number LIMIT 1) "
      "AND r.id NOT IN (SELECT parent FROM link) AND r.id NOT IN (SELECT child FROM link) "
      "AND r.id NOT IN (SELECT record FROM change WHERE record IS NOT NULL) ORDER BY r.id";
  std::vector<RecordEntry> blank;
  readRows(path, kBlank, [&](sqlite::Statement& rows) {
    rows.bind(1, static_cast<std::int64_t>(contentFingerprint(PropertyBag(), 0)))
        .bind(2, millisecondsNow() - kDay);
    while (rows.step()) {
      const auto entry = entryOfRow(rows);
      if (decodeProperties(rows.blob(5)).entries().empty()) blank.push_back(entry);
    }
  });
  return blank;
}

std::set<std::string> removedRecordsIn(const std::string& path) {
  constexpr std::string_view kRemoved =
      "SELECT after FROM change WHERE what = ?1 AND sound AND after IS NOT NULL";
  std::set<std::string> removed;
  readRows(path, kRemoved, [&](sqlite::Statement& rows) {
    rows.bind(1, static_cast<std::int64_t>(ChangeKind::Removed));
    while (rows.step()) removed.insert(keyOfColumn(rows, 0).text());
  });
  return removed;
}

}  // namespace ox
