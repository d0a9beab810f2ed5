#include "ox/base/sqlite/index_repair.hpp"

#include <algorithm>
#include <sqlite3.h>

#include "ox/base/sqlite/error.hpp"

namespace ox::sqlite {
namespace {

// False, and nothing was done, where two rows are the same to an index that allows one.
bool makeIndexes(Connection& file, const std::string& words) {
  file.execute("SAVEPOINT indexes");
  try {
    file.execute(words.c_str());
    file.execute("RELEASE indexes");
    return true;
  } catch (const Error& error) {
    if ((error.code() & 0xFF) != SQLITE_CONSTRAINT) throw;
    file.execute("ROLLBACK TO indexes; RELEASE indexes");
    return false;
  }
}

std::vector<std::string> tablesWithIndexes(Connection& file) {
  std::vector<std::string> tables;
  auto rows =
      file.prepare("SELECT DISTINCT tbl_name FROM sqlite_schema WHERE type = 'index' ORDER BY 1");
  while (rows.step()) tables.emplace_back(rows.text(0));
  return tables;
}

bool hasDamagedRows(Connection& file, const std::string& table) {
  const auto damaged = "SELECT EXISTS(SELECT 1 FROM " + table + " WHERE sound IS NOT 1)";
  return file.queryInteger(damaged) != 0;
}

bool agreesWithItsIndexes(Connection& file, const std::string& table) {
  return file.queryText("PRAGMA integrity_check(" + table + ")") == "ok";
}

}  // namespace

bool hasWholePages(Connection& file) {
  return file.queryText("PRAGMA quick_check(1)") == "ok";
}

std::vector<std::string> mendIndexes(Connection& file, const Schema& missing,
                                     const std::vector<std::string>& toldByIndexes) {
  std::vector<std::string> mended;
  for (const auto& index : missing) {
    if (!makeIndexes(file, index.words)) continue;
    mended.push_back("made the index " + index.name + " anew, which was missing");
  }
  bool hasMade = false;
  for (const auto& table : tablesWithIndexes(file)) {
    const bool isKept = std::ranges::find(toldByIndexes, table) != toldByIndexes.end() &&
                        hasDamagedRows(file, table);
    if (isKept || agreesWithItsIndexes(file, table)) continue;
    hasMade = makeIndexes(file, "REINDEX " + table) || hasMade;
  }
  if (hasMade) {
    mended.emplace_back("made the indexes anew, of which one did not agree with its table");
  }
  return mended;
}

}  // namespace ox::sqlite
