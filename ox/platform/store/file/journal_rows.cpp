#include "ox/platform/store/file/journal_rows.hpp"

#include <string>

#include "ox/platform/store/file/act_writer.hpp"

namespace ox {
namespace {

// Behind the columns that actOfRow reads.
constexpr const char* kActs =
    "SELECT a.number, a.name, a.next_record, a.next_change, a.bytes, a.at, a.origin, "
    "p.next_record, p.next_change FROM act a JOIN act p ON p.number = a.number - 1 ";
constexpr const char* kChanges =
    "SELECT id, what, record, container, other, place, before, after FROM change ";

JournalAct journalActOf(const sqlite::Statement& row) {
  return {actOfRow(row), row.integer(5), row.integer(6), row.integer(7), row.integer(8)};
}

}  // namespace

std::optional<JournalAct> JournalRows::act(std::int64_t number) {
  auto row = file_.connection().prepare(std::string(kActs) + "WHERE a.number = ?1");
  row.bind(1, number);
  return row.step() ? std::optional(journalActOf(row)) : std::nullopt;
}

std::optional<ActRow> JournalRows::actAt(std::int64_t milliseconds) {
  auto row = file_.connection().prepare(
      "SELECT number, name, next_record, next_change, bytes FROM act WHERE at <= ?1 "
      "ORDER BY number DESC LIMIT 1");
  row.bind(1, milliseconds);
  return row.step() ? std::optional(actOfRow(row)) : std::nullopt;
}

bool JournalRows::knows(const StoreMoment& moment) {
  auto row = file_.connection().prepare(
      "SELECT number, name, next_record, next_change, bytes FROM act WHERE number = ?1");
  row.bind(1, moment.number);
  return row.step() && actOfRow(row).moment == moment;
}

void JournalRows::actsFrom(std::int64_t number, const VisitAct& visit) {
  auto rows =
      file_.connection().prepare(std::string(kActs) + "WHERE a.number >= ?1 ORDER BY a.number");
  rows.bind(1, number);
  while (rows.step() && visit(journalActOf(rows))) continue;
}

void JournalRows::actsDownFrom(std::int64_t number, const VisitAct& visit) {
  auto rows = file_.connection().prepare(std::string(kActs) +
                                         "WHERE a.number <= ?1 ORDER BY a.number DESC");
  rows.bind(1, number);
  while (rows.step() && visit(journalActOf(rows))) continue;
}

void JournalRows::changes(std::int64_t from, std::int64_t end, const VisitChange& visit) {
  auto rows =
      file_.connection().prepare(std::string(kChanges) + "WHERE id >= ?1 AND id < ?2 ORDER BY id");
  rows.bind(1, from).bind(2, end);
  while (rows.step() && visit(JournalRow(rows))) continue;
}

void JournalRows::changesDown(std::int64_t from, std::int64_t end, const VisitChange& visit) {
  auto rows = file_.connection().prepare(std::string(kChanges) +
                                         "WHERE id >= ?1 AND id < ?2 ORDER BY id DESC");
  rows.bind(1, from).bind(2, end);
  while (rows.step() && visit(JournalRow(rows))) continue;
}

const JournalOrigin& JournalRows::origin(std::int64_t row) {
  const auto [known, isNew] = origins_.try_emplace(row);
  if (!isNew) return known->second;
  auto found = file_.connection().prepare(
      "SELECT program, command, together, undoes, first_act FROM origin WHERE id = ?1");
  found.bind(1, row);
  if (!found.step()) return known->second;
  auto& origin = known->second.origin;
  origin.program = found.text(0);
  origin.command = found.text(1);
  origin.together = found.integer(2) != 0;
  if (!found.isNull(3)) origin.undoes = found.integer(3);
  known->second.firstAct = found.integer(4);
  return known->second;
}

std::vector<std::pair<std::int64_t, std::int64_t>> JournalRows::takingBack() {
  std::vector<std::pair<std::int64_t, std::int64_t>> commands;
  auto rows = file_.connection().prepare(
      "SELECT first_act, undoes FROM origin WHERE undoes IS NOT NULL ORDER BY first_act");
  while (rows.step()) commands.emplace_back(rows.integer(0), rows.integer(1));
  return commands;
}

}  // namespace ox
