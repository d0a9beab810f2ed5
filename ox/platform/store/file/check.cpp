#include "ox/platform/store/file/check.hpp"

#include <string_view>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/platform/store/file/schema.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"

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

void checkRecords(sqlite::Connection& file, Problems& problems) {
  auto rows = file.prepare(
      "SELECT r.id, r.uid, r.kind, r.container, c.properties, c.fingerprint, c.card_uid, "
      "i.checksum, i.data FROM record r LEFT JOIN content c ON c.record = r.id "
      "LEFT JOIN image i ON i.record = r.id ORDER BY r.id");
  const auto next = file.queryInteger("SELECT next_record FROM counter");
  while (rows.step()) {
    std::string name = "record in row " + std::to_string(rows.integer(0));
    try {
      name = entryOfRow(rows).key.text();
      if (rows.integer(0) >= next) problems.push_back(name + ": its row number is not counted");
      if (rows.isNull(4)) {
        problems.push_back(name + ": its values are missing");
        continue;
      }
      const auto properties = decodeProperties(rows.blob(4));
      const auto picture = rows.isNull(7) ? 0 : static_cast<std::uint64_t>(rows.integer(7));
      if (!rows.isNull(7) && checksum64(rows.blob(8)) != picture) {
        problems.push_back(name + ": the stored picture is damaged: its checksum differs");
      }
      if (static_cast<std::int64_t>(contentFingerprint(properties, picture)) != rows.integer(5)) {
        problems.push_back(name + ": its fingerprint is not that of its values");
      }
      const auto* uid = properties.text(property_id::kCardUid);
      if (rows.optionalText(6) != (uid != nullptr ? Text(*uid) : std::nullopt)) {
        problems.push_back(name + ": the card UID it is found by is not its own");
      }
    } catch (const DamagedProperties& error) {
      problems.push_back(name + ": " + error.what());
    } catch (const StoreError& error) {
      problems.push_back(name + ": " + error.what());
    }
  }
}

void checkLinks(sqlite::Connection& file, Problems& problems) {
  auto crossing = file.prepare(
      "SELECT l.id FROM link l JOIN record p ON p.id = l.parent JOIN record c ON c.id = l.child "
      "WHERE p.container <> c.container OR p.kind <> 1 ORDER BY l.id");
  while (crossing.step()) {
    problems.push_back("link " + std::to_string(crossing.integer(0)) +
                       " joins records that cannot be joined");
  }
  auto circles = file.prepare(
      "WITH RECURSIVE below(top, id) AS (SELECT l.parent, l.child FROM link l JOIN record r "
      "ON r.id = l.child AND r.kind = 1 UNION SELECT b.top, l.child FROM below b JOIN link l "
      "ON l.parent = b.id JOIN record r ON r.id = l.child AND r.kind = 1) "
      "SELECT DISTINCT top FROM below WHERE top = id ORDER BY top");
  while (circles.step()) {
    problems.push_back("the group in row " + std::to_string(circles.integer(0)) +
                       " is below itself");
  }
}

}  // namespace

std::vector<std::string> storeProblems(const std::string& path) {
  auto file = openExistingStoreFile(path);
  Problems problems;
  for (const auto check : {checkStructure, checkRecords, checkLinks}) {
    try {
      check(file, problems);
    } catch (const sqlite::Error& error) {
      problems.emplace_back(error.what());
    }
  }
  return problems;
}

}  // namespace ox
