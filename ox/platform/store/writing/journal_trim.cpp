#include "ox/platform/store/writing/journal_trim.hpp"

#include <algorithm>
#include <optional>

#include "ox/base/clock.hpp"

namespace ox {
namespace {

constexpr std::int64_t kFewestBytes = std::int64_t{64} << 20U;
constexpr std::int64_t kMillisecondsOfDay = 24LL * 60 * 60 * 1000;
// Origins that no act bears any more are looked for whenever so many acts were written.
constexpr std::int64_t kActsBetweenOrigins = 4096;

// One that is damaged counts for nothing: `check` names it, and no act must fail for it.
std::int64_t settingOr(sqlite::Connection& file, std::string_view name, std::int64_t otherwise) {
  auto row = file.prepare("SELECT value FROM setting WHERE name = ?1 AND sound");
  row.bindText(1, name);
  return row.step() ? row.integer(0) : otherwise;
}

void setSetting(sqlite::Connection& file, std::string_view name, std::int64_t value) {
  file.prepare("INSERT OR REPLACE INTO setting(name, value) VALUES(?1, ?2)")
      .bindText(1, name)
      .bind(2, value)
      .run();
}

std::int64_t mostBytes(sqlite::Connection& file, const JournalBounds& bounds) {
  if (bounds.bytes > 0) return bounds.bytes;
  const auto store = file.queryInteger("PRAGMA page_count") * file.queryInteger("PRAGMA page_size");
  return std::max(kFewestBytes, store / 10);
}

// The first act that must stay whatever the bounds say. One that has neither added nor changed a
// contact is no command.
std::int64_t firstToStay(sqlite::Connection& file) {
  const auto ofLastCommand = file.queryInteger(
      "SELECT CASE WHEN o.together THEN o.first_act ELSE a.number END FROM act a "
      "LEFT JOIN origin o ON o.id = a.origin JOIN act b ON b.number = a.number - 1 "
      "WHERE o.undoes IS NOT NULL OR a.next_record <> b.next_record "
      "OR a.next_change <> b.next_change ORDER BY a.number DESC LIMIT 1");
  const auto last = file.queryInteger("SELECT ifnull(max(number), 0) FROM act");
  const auto owed = file.queryInteger("SELECT ifnull(min(number), -1) FROM tag_debt");
  const auto first = ofLastCommand > 0 ? ofLastCommand : last;
  return owed >= 0 ? std::min(first, owed) : first;
}

struct Cut {
  std::int64_t act = 0;         // the last one that goes
  std::int64_t nextChange = 0;  // of it
};

std::optional<Cut> cutOf(sqlite::Connection& file, std::int64_t atMostActs) {
  const auto bounds = journalBounds(file);
  const auto bytes = mostBytes(file, bounds);
  const auto oldest = millisecondsNow() - bounds.days * kMillisecondsOfDay;
  const auto all = file.queryInteger("SELECT bytes FROM act ORDER BY number DESC LIMIT 1");
  const auto stays = firstToStay(file);
  // The first row only tells where the next one begins.
  auto acts = file.prepare(
      "SELECT number, at, bytes, next_change, sound FROM act ORDER BY number LIMIT ?1");
  acts.bind(1, atMostActs + 1);
  if (!acts.step()) return std::nullopt;
  auto bytesBefore = acts.integer(2);
  std::optional<Cut> cut;
  while (acts.step()) {
    if (acts.integer(4) == 0) continue;  // a damaged one goes with those after it
    const bool isBeyond = acts.integer(1) < oldest || all - bytesBefore > bytes;
    if (acts.integer(0) >= stays || !isBeyond) break;
    cut = {acts.integer(0), acts.integer(3)};
    bytesBefore = acts.integer(2);
  }
  return cut;
}

}  // namespace

JournalBounds journalBounds(sqlite::Connection& file) {
  const JournalBounds usual;
  return {settingOr(file, "journal_days", usual.days),
          settingOr(file, "journal_bytes", usual.bytes)};
}

void setJournalBounds(sqlite::Connection& file, const JournalBounds& bounds) {
  setSetting(file, "journal_days", bounds.days);
  setSetting(file, "journal_bytes", bounds.bytes);
}

bool mayTrimJournal(StoreFile& file) {
  auto& row = file.statement(Sql::OldestAct);
  const sqlite::StatementScope scope(row);
  if (!row.step()) return false;
  if (row.integer(2) == 0) return true;  // damaged
  const auto days = row.isNull(3) ? JournalBounds().days : row.integer(3);
  const auto bytes = row.isNull(4) ? JournalBounds().bytes : row.integer(4);
  return row.integer(0) < millisecondsNow() - days * kMillisecondsOfDay ||
         row.integer(1) > (bytes > 0 ? bytes : kFewestBytes);
}

bool trimJournal(sqlite::Connection& file, std::int64_t atMostActs) {
  const auto cut = cutOf(file, atMostActs);
  if (!cut) return false;
  file.prepare(
          "DELETE FROM image WHERE id IN (SELECT other FROM change WHERE id < ?1 "
          "AND what IN (2, 3) AND other IS NOT NULL)")
      .bind(1, cut->nextChange)
      .run();
  file.prepare("DELETE FROM change WHERE id < ?1").bind(1, cut->nextChange).run();
  file.prepare("DELETE FROM act WHERE number < ?1").bind(1, cut->act).run();
  const auto acts = file.changes();
  if (cut->act / kActsBetweenOrigins != (cut->act - acts) / kActsBetweenOrigins) {
    // The last one stays, so that no number is given to another origin.
    file.execute(
        "DELETE FROM origin WHERE id NOT IN (SELECT origin FROM act) "
        "AND id < (SELECT max(id) FROM origin)");
  }
  return acts >= atMostActs;
}

}  // namespace ox
