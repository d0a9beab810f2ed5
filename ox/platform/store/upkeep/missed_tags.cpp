#include "ox/platform/store/upkeep/missed_tags.hpp"

#include <algorithm>

#include "ox/base/sqlite/error.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/schema/tables.hpp"

namespace ox {
namespace {

// The answer for a store that is there and whose rows tell whether they are sound.
template <typename Answer>
Answer answerOf(const std::string& path, Answer (*ask)(sqlite::Connection&, std::int64_t),
                std::int64_t number) {
  auto store = openExistingStoreFile(path, MissingIndexes::Allow);
  try {
    if (store.file().queryInteger("PRAGMA user_version") < kFirstSummedVersion) return {};
    return ask(store.file(), number);
  } catch (const sqlite::Error& error) {
    throwStoreError(path, error);
  }
}

std::int64_t askLastAct(sqlite::Connection& store, std::int64_t) {
  return store.queryInteger(
      "SELECT ifnull((SELECT min(number) - 1 FROM tag_debt), (SELECT max(number) FROM act))");
}

std::vector<TagChange> changesOf(sqlite::Statement& rows, std::int64_t act) {
  const sqlite::StatementScope scope(rows);
  rows.bind(1, act);
  std::vector<TagChange> changes;
  while (rows.step()) {
    if (rows.integer(2) == 0) continue;
    try {
      changes.push_back(decodeTagChange(rows.blob(0), rows.blob(1)));
    } catch (const DamagedTagChange&) {
      continue;
    }
  }
  return changes;
}

MissedTags askTagActs(sqlite::Connection& store, std::int64_t number) {
  MissedTags missed;
  missed.lastAct = store.queryInteger("SELECT max(number) FROM act");
  auto name = store.prepare(sqlOf(Sql::StoreName));
  if (!name.step() || name.integer(1) == 0) return missed;
  const auto bytes = name.blob(0);
  if (bytes.size() != missed.store.size()) return missed;
  std::ranges::copy(bytes, missed.store.begin());
  auto acts = store.prepare("SELECT number, name FROM act WHERE number > ?1 AND sound ORDER BY 1");
  auto rows = store.prepare(sqlOf(Sql::TagChangesOfAct));
  acts.bind(1, number);
  while (acts.step()) {
    auto changes = changesOf(rows, acts.integer(0));
    if (changes.empty()) continue;
    missed.acts.push_back({acts.integer(0), std::string(acts.blob(1)), std::move(changes)});
  }
  return missed;
}

}  // namespace

std::int64_t lastActWithoutDebt(const std::string& store) {
  return answerOf(store, askLastAct, 0);
}

MissedTags tagActsAfter(const std::string& store, std::int64_t number) {
  return answerOf(store, askTagActs, number);
}

}  // namespace ox
