#include "ox/platform/store/upkeep/damaged_sync.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "ox/base/sqlite/database_form.hpp"

namespace ox {
namespace {

constexpr const char* kCards =
    "sync_card NOT INDEXED WHERE sound IS NOT 1 OR id NOT IN (SELECT card FROM sync_text "
    "WHERE sound)";
constexpr const char* kConflicts = "sync_conflict NOT INDEXED WHERE sound IS NOT 1";
constexpr const char* kRuns = "sync_run NOT INDEXED WHERE sound IS NOT 1";

std::int64_t count(sqlite::Connection& file, const char* from) {
  return file.queryInteger((std::string("SELECT count(*) FROM ") + from).c_str());
}

void remove(sqlite::Connection& file, const char* from) {
  file.execute((std::string("DELETE FROM ") + from).c_str());
}

// Of the tables of cards, conflicts and runs.
sqlite::Schema indexesOf(sqlite::Connection& file) {
  constexpr std::array<std::string_view, 3> kTables = {"sync_card", "sync_conflict", "sync_run"};
  auto things = sqlite::formOf(file).schema;
  std::erase_if(things, [&](const sqlite::SchemaThing& thing) {
    return thing.type != "index" || thing.words.empty() ||
           std::ranges::find(kTables, thing.table) == kTables.end();
  });
  return things;
}

}  // namespace

ForgottenSync forgetDamagedSync(sqlite::Connection& file) {
  ForgottenSync forgotten{count(file, kCards), count(file, kConflicts) + count(file, kRuns)};
  if (forgotten.cards + forgotten.notes == 0) return forgotten;
  // A row that is not what stands in its indexes cannot be removed while they are there.
  const auto indexes = indexesOf(file);
  for (const auto& index : indexes) file.execute(("DROP INDEX " + index.name).c_str());
  for (const auto* from : {kCards, kConflicts, kRuns}) remove(file, from);
  for (const auto& index : indexes) file.execute(index.words.c_str());
  if (forgotten.cards > 0) {
    file.execute("UPDATE sync_book SET token = '', sent = '', last_whole = 0 WHERE sound");
  }
  return forgotten;
}

}  // namespace ox
