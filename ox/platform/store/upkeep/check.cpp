#include "ox/platform/store/upkeep/check.hpp"

#include <array>
#include <chrono>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/base/date.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/base/sqlite/log_pages.hpp"
#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "ox/platform/store/schema/noted_act.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/upkeep/circles.hpp"
#include "ox/platform/store/values/journal_row.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {
namespace {

using Problems = std::vector<std::string>;

void checkStructure(sqlite::Connection& file, Problems& problems) {
  auto rows = file.prepare("PRAGMA integrity_check");
  while (rows.step()) {
    if (rows.text(0) != "ok") problems.emplace_back("structure: " + std::string(rows.text(0)));
  }
  auto references = file.prepare("PRAGMA foreign_key_check");
  while (references.step()) {
    problems.push_back("row " + std::to_string(references.integer(1)) + " of " +
                       std::string(references.text(0)) + " refers to a row of " +
                       std::string(references.text(2)) + " that is not there");
  }
}

// Whether the rows tell whether they are sound.
bool hasRowSums(sqlite::Connection& file) {
  return file.queryInteger("PRAGMA user_version") >= kFirstSummedVersion;
}

void checkTables(sqlite::Connection& file, Problems& problems) {
  if (!hasRowSums(file)) return;
  for (const auto& index : missingIndexesOf(file)) {
    problems.push_back("the index " + index.name + " is missing");
  }
  if (file.queryInteger("SELECT ifnull(max(id), 0) > ifnull((SELECT max(seq) FROM sqlite_sequence "
                        "WHERE name = 'container'), 0) FROM container") != 0) {
    problems.emplace_back("the rows of accounts are not counted");
  }
}

void checkNumbersOfAccounts(sqlite::Connection& file, Problems& problems) {
  auto rows = file.prepare("SELECT id FROM container ORDER BY id");
  while (rows.step()) {
    if (isContainerRow(rows.integer(0))) continue;
    problems.push_back("row " + std::string(rows.text(0)) +
                       " of container has a number that no account can have");
  }
}

// Every row whose columns are not what was written.
void checkRows(sqlite::Connection& file, Problems& problems) {
  if (!hasRowSums(file)) return;
  auto tables = file.prepare(
      "SELECT t.name, (SELECT name FROM pragma_table_info(t.name) WHERE cid = 0) "
      "FROM sqlite_schema t WHERE t.type = 'table' AND EXISTS(SELECT 1 FROM "
      "pragma_table_xinfo(t.name) WHERE name = 'sound') ORDER BY t.name");
  while (tables.step()) {
    const std::string table(tables.text(0));
    auto rows = file.prepare("SELECT " + std::string(tables.text(1)) + " FROM " + table +
                             " WHERE sound IS NOT 1 ORDER BY 1");
    while (rows.step()) {
      problems.push_back("row " + std::string(rows.text(0)) + " of " + table +
                         " is damaged: its checksum differs");
    }
  }
}

void checkAccounts(sqlite::Connection& file, Problems& problems) {
  if (!hasRowSums(file)) return;
  auto rows = file.prepare(
      "SELECT c.id, count(*) FROM container c JOIN record r ON r.container = c.id "
      "WHERE c.sound IS NOT 1 GROUP BY c.id ORDER BY c.id");
  while (rows.step()) {
    problems.push_back(
        "records that no book shows, because row " + std::to_string(rows.integer(0)) +
        " of container, their account, is damaged: " + std::to_string(rows.integer(1)));
  }
}

void checkRecords(sqlite::Connection& file, Problems& problems) {
  // A store of version 1 that nobody has opened since is looked at as it is.
  const bool isVersion1 = file.queryInteger("PRAGMA user_version") == 1;
  // A damaged row is named already.
  auto rows = file.prepare(
      std::string("SELECT r.id, r.uid, c.properties, c.fingerprint, c.card_uid, i.checksum, "
                  "i.data FROM record r "
                  "LEFT JOIN content c ON c.record = r.id LEFT JOIN image i ON ") +
      (isVersion1 ? "i.record = r.id" : "i.id = c.image") + " ORDER BY r.id");
  const auto next = file.queryInteger(isVersion1 ? "SELECT next_record FROM counter"
                                                 : "SELECT max(next_record) FROM act");
  while (rows.step()) {
    std::string name = "record in row " + std::to_string(rows.integer(0));
    try {
      name = keyOfColumn(rows, 1).text();
      if (rows.integer(0) >= next) problems.push_back(name + ": its row number is not counted");
      if (rows.isNull(2)) {
        problems.push_back(name + ": its values are missing");
        continue;
      }
      const auto properties = decodeProperties(rows.blob(2));
      const auto picture = rows.isNull(5) ? 0 : static_cast<std::uint64_t>(rows.integer(5));
      if (!rows.isNull(5) && checksum64(rows.blob(6)) != picture) {
        problems.push_back(name + ": the stored picture is damaged: its checksum differs");
      }
      if (static_cast<std::int64_t>(contentFingerprint(properties, picture)) != rows.integer(3)) {
        problems.push_back(name + ": its fingerprint is not that of its values");
      }
      const auto* uid = properties.text(property_id::kCardUid);
      if (rows.optionalText(4) != (uid != nullptr ? Text(*uid) : std::nullopt)) {
        problems.push_back(name + ": the card UID it is found by is not its own");
      }
    } catch (const DamagedBytes& error) {
      problems.push_back(name + ": " + error.what());
    }
  }
}

// Acts are numbered without a gap, their rows rise, and every row of theirs can be read.
void checkActs(sqlite::Connection& file, Problems& problems) {
  auto rows = file.prepare(
      "SELECT number, length(name), next_record, next_change, bytes FROM act ORDER BY number");
  std::array<std::int64_t, 4> before{};  // number, next_record, next_change, bytes
  std::int64_t count = 0;
  while (rows.step()) {
    const std::array now = {rows.integer(0), rows.integer(2), rows.integer(3), rows.integer(4)};
    const auto name = "act " + std::to_string(now[0]);
    if (rows.integer(1) != 16) problems.push_back(name + ": its name is damaged");
    if (count++ > 0) {
      if (now[0] != before[0] + 1) problems.push_back(name + ": those before it are missing");
      for (std::size_t i = 1; i < now.size(); ++i) {
        if (now[i] < before[i]) problems.push_back(name + ": its place in the journal is damaged");
      }
    }
    before = now;
  }
  if (count == 0) problems.emplace_back("the journal has no last row");
}

void checkOrigins(sqlite::Connection& file, Problems& problems) {
  auto rows = file.prepare("SELECT id FROM origin WHERE undoes >= first_act ORDER BY id");
  while (rows.step()) {
    problems.push_back("origin " + std::to_string(rows.integer(0)) +
                       " takes back what came after it");
  }
}

// What a row tells of links can be read, and each of these has a number of its own.
void checkLinkLists(sqlite::Connection& file, Problems& problems) {
  if (!hasRowSums(file)) return;  // each link had a row
  std::int64_t next = 0;
  auto rows = file.prepare("SELECT * FROM change ORDER BY id");
  while (rows.step()) {
    const JournalRow row(rows);
    const auto name = "change " + std::to_string(row.id()) + " of the journal: ";
    if (row.id() < next) problems.push_back(name + "its number is that of another one");
    next = row.id() + 1;
    try {
      const auto links = row.links();
      if (row.isOfLinks() && links.empty()) problems.push_back(name + "its links are missing");
      if (!links.empty()) next = row.id() + static_cast<std::int64_t>(links.size());
    } catch (const DamagedLinks& error) {
      problems.push_back(name + error.what());
    }
  }
  if (next > file.queryInteger("SELECT max(next_change) FROM act")) {
    problems.emplace_back("the journal holds changes of no act");
  }
}

void checkChanges(sqlite::Connection& file, Problems& problems) {
  const auto nextRecord = file.queryInteger("SELECT max(next_record) FROM act");
  auto rows =
      file.prepare("SELECT id, what, before, after, record, container FROM change ORDER BY id");
  while (rows.step()) {
    const auto what = rows.integer(1);
    const auto tell = [&](const std::string& problem) {
      problems.push_back("change " + std::to_string(rows.integer(0)) + " of the journal" + problem);
    };
    const auto kind = static_cast<ChangeKind>(what);
    const auto record = rows.integer(4);
    if (!JournalRow::isKnown(what)) tell(" is of no known kind");
    if (!JournalRow::isOfContainer(kind) && record >= nextRecord) {
      tell(": its record was never there");
    }
    if (!JournalRow::mayBeIn(rows.integer(5), kind, record)) tell(": it is in no account");
    const auto tryReading = [&](const auto& read) {
      try {
        read();
      } catch (const DamagedBytes& error) {
        tell(std::string(": ") + error.what());
      }
    };
    const auto check = [&](int column) {
      tryReading([&] { decodeProperties(rows.blob(column)); });
    };
    if (what == static_cast<std::int64_t>(ChangeKind::Tags)) {
      tryReading([&] { decodeTagChange(rows.blob(2), rows.blob(3)); });
    }
    const bool isRemoval = what == static_cast<std::int64_t>(ChangeKind::Removed);
    const bool ofValues = what == static_cast<std::int64_t>(ChangeKind::Values) ||
                          what == static_cast<std::int64_t>(ChangeKind::ValuesAndPicture);
    if (isRemoval) tryReading([&] { keyOfColumn(rows, 3); });
    if (ofValues || (isRemoval && !rows.isNull(2))) check(2);
    if (ofValues) check(3);
  }
}

// Those that the journal keeps; those of records are looked at with them.
void checkKeptPictures(sqlite::Connection& file, Problems& problems) {
  auto rows = file.prepare(
      "SELECT id, checksum, data FROM image WHERE id IN "
      "(SELECT other FROM change WHERE what IN (2, 3)) ORDER BY id");
  while (rows.step()) {
    if (checksum64(rows.blob(2)) == static_cast<std::uint64_t>(rows.integer(1))) continue;
    problems.push_back("picture " + std::to_string(rows.integer(0)) +
                       " in the journal is damaged: its checksum differs");
  }
}

// A picture belongs to one record, or to one row of the journal that keeps it.
void checkPictures(sqlite::Connection& file, Problems& problems) {
  auto rows = file.prepare(
      "WITH owner(image) AS (SELECT image FROM content WHERE image IS NOT NULL UNION ALL "
      "SELECT other FROM change WHERE what IN (2, 3) AND other IS NOT NULL), "
      "counted(image, owners) AS (SELECT image, count(*) FROM owner GROUP BY image) "
      "SELECT ifnull(i.id, c.image), ifnull(c.owners, 0), i.id IS NULL FROM image i "
      "FULL JOIN counted c ON c.image = i.id "
      "WHERE i.id IS NULL OR ifnull(c.owners, 0) <> 1 ORDER BY 1");
  while (rows.step()) {
    const auto name = "picture " + std::to_string(rows.integer(0));
    if (rows.integer(2) != 0) {
      problems.push_back(name + " is missing");
    } else if (rows.integer(1) == 0) {
      problems.push_back(name + " belongs to nobody");
    } else {
      problems.push_back(name + " belongs to several records");
    }
  }
}

void checkJournal(sqlite::Connection& file, Problems& problems) {
  if (file.queryInteger("PRAGMA user_version") == 1) return;  // it had none
  checkActs(file, problems);
  checkOrigins(file, problems);
  checkChanges(file, problems);
  checkLinkLists(file, problems);
  checkPictures(file, problems);
  checkKeptPictures(file, problems);
}

void checkLinks(sqlite::Connection& file, Problems& problems) {
  if (hasRowSums(file) &&
      file.queryInteger("SELECT ifnull(max(id), 0) >= (SELECT max(next_link) FROM act) "
                        "FROM link") != 0) {
    problems.emplace_back("the numbers of links are not counted");
  }
  auto crossing = file.prepare(
      "SELECT l.id FROM link l JOIN record p ON p.id = l.parent JOIN record c ON c.id = l.child "
      "WHERE p.container <> c.container OR p.kind <> 1 ORDER BY l.id");
  while (crossing.step()) {
    problems.push_back("link " + std::to_string(crossing.integer(0)) +
                       " joins records that cannot be joined");
  }
  auto nested = file.prepare(
      "SELECT l.parent, l.child FROM link l JOIN record r ON r.id = l.child AND r.kind = 1 "
      "ORDER BY l.id");
  std::vector<GroupLink> links;
  while (nested.step()) links.emplace_back(nested.integer(0), nested.integer(1));
  for (const auto row : groupsBelowThemselves(links)) {
    problems.push_back("the group in row " + std::to_string(row) + " is below itself");
  }
}

// Where one is in another account than its record, or one record has two, nobody knows what was
// agreed. That an account or a login is missing is told with the structure.
void checkCards(sqlite::Connection& file, Problems& problems) {
  if (file.queryInteger("PRAGMA user_version") < kSchemaVersion) return;
  auto rows = file.prepare(
      "SELECT s.id, s.record >= (SELECT max(next_record) FROM act), r.container <> s.container, "
      "EXISTS(SELECT 1 FROM sync_card o WHERE o.container = s.container AND o.record = s.record "
      "AND o.id < s.id), t.card IS NULL FROM sync_card s LEFT JOIN record r ON r.id = s.record "
      "LEFT JOIN sync_text t ON t.card = s.id ORDER BY s.id");
  while (rows.step()) {
    const auto name = "card " + std::to_string(rows.integer(0));
    if (rows.integer(1) != 0) problems.push_back(name + ": its record was never there");
    if (rows.integer(2) != 0) problems.push_back(name + ": its record is in another account");
    if (rows.integer(3) != 0) problems.push_back(name + ": its record has another card");
    if (rows.integer(4) != 0) problems.push_back(name + ": its text is missing");
  }
}

// What was committed last may stand behind a damaged page of the log, from which on the database
// believes nothing. While others write, a page may be seen half written: only what stays counts.
std::string damageOfLog(const sqlite::Connection& file) {
  constexpr int kLooks = 5;
  std::string problem;
  for (int looks = 0; looks < kLooks; ++looks) {
    if (looks > 0) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const sqlite::LogPages log(file.logPath());
    if (!log.isHeadDamaged() && log.damagedPages() == 0) return {};
    problem =
        log.isHeadDamaged() ? "its head" : std::to_string(log.damagedPages()) + " of its pages";
  }
  return problem;
}

void checkLog(sqlite::Connection& file, Problems& problems) {
  const auto damage = damageOfLog(file);
  if (damage.empty()) return;
  problems.push_back("the log is damaged, " + damage +
                     ": what was committed last may be missing; `recover` reads what is left");
}

void checkAnchor(sqlite::Connection& file, Problems& problems) {
  try {
    if (!hasRowSums(file)) return;  // nothing is noted of an earlier version
    if (auto problem = missingActOf(file)) problems.push_back(std::move(*problem));
  } catch (const sqlite::Error&) {
    // Told already.
  } catch (const std::system_error& error) {
    problems.emplace_back(error.what());
  }
}

std::string timeText(std::int64_t milliseconds) {
  using namespace std::chrono;
  const auto time =
      floor<seconds>(sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(milliseconds)));
  const auto days = floor<std::chrono::days>(time);
  const year_month_day day(days);
  return Date{static_cast<std::int16_t>(static_cast<int>(day.year())),
              static_cast<std::uint8_t>(static_cast<unsigned>(day.month())),
              static_cast<std::uint8_t>(static_cast<unsigned>(day.day())),
              static_cast<std::int32_t>((time - days).count()), std::int16_t{0}}
      .toText();
}

std::string actText(std::int64_t number, std::int64_t at) {
  return "act " + std::to_string(number) + " (" + timeText(at) + ")";
}

}  // namespace

std::optional<std::string> missingActOf(sqlite::Connection& file) {
  const auto noted = SyncAnchor(file).read();
  try {
    if (!noted || stateOf(*noted, file) != NotedAct::IsMissing) return std::nullopt;
  } catch (const DamagedBytes&) {
    return std::nullopt;  // told of its own, and proves nothing
  }
  auto last = file.prepare(
      "SELECT number, at, (SELECT at FROM act WHERE number = ?1) FROM act WHERE sound "
      "ORDER BY number DESC LIMIT 1");
  const auto number = noted->moment.number;
  last.bind(1, number);
  auto problem = "what was committed and synced is missing: " + actText(number, noted->at);
  if (!last.step()) return problem;
  problem += " is not there, the store has come to " + actText(last.integer(0), last.integer(1));
  if (!last.isNull(2))
    problem += " over another act of that number (" + timeText(last.integer(2)) + ")";
  return problem;
}

bool hasDamagedLog(const sqlite::Connection& file) {
  return !damageOfLog(file).empty();
}

std::vector<std::string> storeProblems(const std::string& path) {
  auto store = openExistingStoreFile(path, MissingIndexes::Allow);
  auto& file = store.file();
  file.keepLog();  // whatever is wrong with it is still to be seen afterwards
  auto problems = problemsIn(file);
  checkAnchor(file, problems);
  return problems;
}

std::vector<std::string> problemsIn(sqlite::Connection& file) {
  Problems problems;
  for (const auto check : {checkLog, checkStructure, checkTables, checkNumbersOfAccounts, checkRows,
                           checkAccounts, checkRecords, checkLinks, checkJournal, checkCards}) {
    try {
      check(file, problems);
    } catch (const sqlite::Error& error) {
      problems.emplace_back(error.what());
    }
  }
  return problems;
}

}  // namespace ox
