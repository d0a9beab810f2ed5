#include "ox/platform/store/file/journal_rows.hpp"

#include <algorithm>
#include <string>

namespace ox {
namespace {

constexpr int kColumnsOfAct = 10;  // the last one tells whether the row is sound
constexpr const char* kActs =
    "SELECT a.*, p.next_record, p.next_change FROM act a JOIN act p ON p.number = a.number - 1 ";

// Of a row of act.
ActRow actOfRow(const sqlite::Statement& row) {
  ActRow act;
  act.moment.number = row.integer(0);
  const auto name = row.blob(1);
  if (row.integer(kColumnsOfAct - 1) == 0 || name.size() != act.moment.name.size()) {
    throw DamagedRow("act " + std::to_string(row.integer(0)) + " of the journal is damaged");
  }
  std::ranges::copy(name, act.moment.name.begin());
  act.nextRecord = row.integer(4);
  act.nextLink = row.integer(5);
  act.nextChange = row.integer(6);
  act.bytes = row.integer(7);
  return act;
}

// Throws DamagedRow when it begins behind its end.
JournalAct journalActOf(const sqlite::Statement& row) {
  const JournalAct act{actOfRow(row), row.integer(2), row.integer(3), row.integer(kColumnsOfAct),
                       row.integer(kColumnsOfAct + 1)};
  if (act.firstRecord > act.row.nextRecord || act.firstChange > act.row.nextChange) {
    throw DamagedRow("the place of act " + std::to_string(act.row.moment.number) +
                     " in the journal is damaged");
  }
  return act;
}

std::optional<ActRow> actOf(sqlite::Statement& row) {
  const sqlite::StatementScope scope(row);
  return row.step() ? std::optional(actOfRow(row)) : std::nullopt;
}

void visitAll(sqlite::Statement& rows, const JournalRows::VisitChange& visit) {
  while (rows.step()) {
    const JournalRow row(rows);
    row.requireSound();
    if (!visit(row)) return;
  }
}

}  // namespace

std::optional<ActRow> lastAct(StoreFile& file) {
  return actOf(file.statement(Sql::LastAct));
}

std::optional<ActRow> actOfNumber(StoreFile& file, std::int64_t number) {
  return actOf(file.statement(Sql::ActByNumber).bind(1, number));
}

void JournalRow::requireSound() const {
  if (!isSound()) {
    throw DamagedRow("change " + std::to_string(id()) + " of the journal is damaged");
  }
}

bool JournalRow::mayBeIn(std::int64_t container, ChangeKind what, std::int64_t record) {
  if (isOfContainer(what) && !isContainerRow(record)) return false;
  return container == 0 || isContainerRow(container);
}

bool JournalRow::isOfLinks() const {
  return what() == ChangeKind::Linked || what() == ChangeKind::Unlinked;
}

NumberedLinks JournalRow::links() const {
  if (!isOfLinks()) return {};
  return decodeLinks(what() == ChangeKind::Linked ? after() : before());
}

std::optional<JournalAct> JournalRows::act(std::int64_t number) {
  if (!act_) act_ = file_.connection().prepare(std::string(kActs) + "WHERE a.number = ?1");
  const sqlite::StatementScope row(act_);
  act_.bind(1, number);
  return act_.step() ? std::optional(journalActOf(act_)) : std::nullopt;
}

std::optional<ActRow> JournalRows::actAt(std::int64_t milliseconds) {
  auto row =
      file_.connection().prepare("SELECT * FROM act WHERE at <= ?1 ORDER BY number DESC LIMIT 1");
  row.bind(1, milliseconds);
  return row.step() ? std::optional(actOfRow(row)) : std::nullopt;
}

bool JournalRows::knows(const StoreMoment& moment) {
  const auto act = actOfNumber(file_, moment.number);
  return act && act->moment == moment;
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

std::int64_t JournalRows::rowOf(std::int64_t change) {
  auto row = file_.connection().prepare("SELECT max(id) FROM change WHERE id <= ?1");
  row.bind(1, change);
  return row.step() ? row.integer(0) : 0;
}

void JournalRows::changes(std::int64_t from, std::int64_t end, const VisitChange& visit) {
  auto rows =
      file_.connection().prepare("SELECT * FROM change WHERE id >= ?1 AND id < ?2 ORDER BY id");
  rows.bind(1, from).bind(2, end);
  visitAll(rows, visit);
}

void JournalRows::changesDown(std::int64_t from, std::int64_t end, const VisitChange& visit) {
  auto rows = file_.connection().prepare(
      "SELECT * FROM change WHERE id >= ?1 AND id < ?2 ORDER BY id DESC");
  rows.bind(1, from).bind(2, end);
  visitAll(rows, visit);
}

const JournalOrigin& JournalRows::origin(std::int64_t row) {
  const auto [known, isNew] = origins_.try_emplace(row);
  if (!isNew) return known->second;
  auto found = file_.connection().prepare(
      "SELECT program, command, together, undoes, first_act, sound FROM origin WHERE id = ?1");
  found.bind(1, row);
  if (!found.step()) return known->second;
  requireSound(found, 5, "an origin of the journal");
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
  // A command that took back itself or a later one would be asked for without end.
  auto rows = file_.connection().prepare(
      "SELECT first_act, undoes, sound AND undoes < first_act FROM origin "
      "WHERE undoes IS NOT NULL ORDER BY first_act");
  while (rows.step()) {
    requireSound(rows, 2, "an origin of the journal");
    commands.emplace_back(rows.integer(0), rows.integer(1));
  }
  return commands;
}

}  // namespace ox
