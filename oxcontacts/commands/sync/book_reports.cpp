#include "oxcontacts/commands/sync/book_reports.hpp"

#include <algorithm>
#include <array>
#include <iostream>

#include "ox/sync/logins.hpp"
#include "oxcontacts/arguments.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/terminal_text.hpp"
#include "oxcontacts/time_text.hpp"

namespace ox::program {
namespace {

using sync::BookReport;
using sync::PlannedChange;
using State = BookReport::State;
using Where = PlannedChange::Where;
using What = PlannedChange::What;

constexpr std::size_t kMostShown = 50;

// How JSON names each state, and which exit code it has.
struct StateRow {
  State state;
  const char* word;
  ExitCode code;
};
constexpr std::array kStates = {
    StateRow{State::InStep, "inStep", kDone},
    StateRow{State::Planned, "planned", kDone},
    StateRow{State::NeedsConfirmation, "needsConfirmation", kFailed},
    StateRow{State::Guarded, "guarded", kFailed},
    StateRow{State::Failed, "failed", kFailed},
    StateRow{State::TryLater, "tryLater", kBusy},
    StateRow{State::Stopped, "stopped", kInterrupted},
};

const StateRow& rowOf(State state) {
  const auto* row =
      std::ranges::find_if(kStates, [&](const StateRow& each) { return each.state == state; });
  return row == kStates.end() ? kStates.front() : *row;
}

const char* wordOf(What what) {
  switch (what) {
    case What::Add:
      return "new";
    case What::Change:
      return "changed";
    case What::Delete:
      return "deleted";
    case What::BringBack:
      return "back";
  }
  return "";
}

std::string lineOf(const PlannedChange& change) {
  return std::string(change.where == Where::Here ? "here" : "there") + ", " + wordOf(change.what) +
         ": " + (change.isGroup ? "group " : "") + change.name;
}

std::string lineOf(const sync::NewConflict& conflict) {
  const auto shown = [](const std::string& value) { return value.empty() ? "nothing" : value; };
  return "conflict: " + conflict.name + ", " + conflict.property + ": theirs " +
         shown(conflict.theirs) + ", ours " + shown(conflict.ours);
}

// What means that book and no other: a name may be that of a login, too, and mean all its books.
std::string wordFor(const BookReport& report) {
  const auto isAlso = [&](const sync::KnownBook& book) {
    return book.container != report.container &&
           (book.login == report.account || book.account == report.account);
  };
  return std::ranges::any_of(sync::knownBooks(), isAlso) ? report.container : report.account;
}

std::string commandFor(const BookReport& report, const std::string& option) {
  return "`oxcontacts sync " + shellWord(wordFor(report)) + " " + option + "`";
}

void complainOfGuard(const Context& context, const BookReport& report) {
  tellPlan(context, report);
  Context::complain(report.account + ": " + report.failure + "; nothing was changed. " +
                    commandFor(report, "--allow-deletions") + " lets it happen once");
}

void complainOfMeeting(const Context& context, const BookReport& report) {
  tellPlan(context, report);
  Context::complain(report.account +
                    ": both sides hold contacts and have not met before: " + summaryOf(report) +
                    "; nothing was changed. " + commandFor(report, "--yes") + " does it");
}

// Data where something was done or would be.
void printLine(const BookReport& report) {
  std::cout << terminalText(report.account + ": " + summaryOf(report)) << '\n';
}

void tellRest(const Context& context, const BookReport& report) {
  for (const auto& note : report.notes) context.tell(report.account + ": " + note);
  for (const auto& card : report.refused) {
    const auto code = card.code == 0 ? std::string() : " (" + std::to_string(card.code) + ")";
    context.tell(report.account + ": refused " + (card.name.empty() ? card.href : card.name) +
                 ": " + card.reason + code);
  }
  if (report.kept > 0) {
    context.tell(report.account + ": " + commandFor(report, "--set-back") +
                 " puts back what stands there");
  }
  if (report.conflicts > 0) {
    context.tell(report.account + ": " + counted(report.conflicts, "conflict") + "; " +
                 commandFor(report, "--conflicts") + " shows " +
                 (report.conflicts == 1 ? "it" : "them"));
  }
}

Json newConflictsJson(const BookReport& report) {
  Json conflicts = Json::array();
  for (const auto& conflict : report.newConflicts) {
    conflicts.push_back({{"name", conflict.name},
                         {"property", conflict.property},
                         {"theirs", conflict.theirs},
                         {"ours", conflict.ours}});
  }
  return conflicts;
}

Json planJson(const BookReport& report) {
  Json plan = Json::array();
  for (const auto& change : report.plan) {
    plan.push_back({{"where", change.where == Where::Here ? "here" : "there"},
                    {"what", wordOf(change.what)},
                    {"kind", change.isGroup ? "group" : "person"},
                    {"name", change.name}});
  }
  return plan;
}

Json refusedJson(const BookReport& report) {
  Json refused = Json::array();
  for (const auto& card : report.refused) {
    refused.push_back({{"name", card.name},
                       {"href", card.href.empty() ? Json() : Json(card.href)},
                       {"code", card.code == 0 ? Json() : Json(card.code)},
                       {"reason", card.reason}});
  }
  return refused;
}

}  // namespace

Json countsJson(const sync::SyncCounts& counts) {
  return {{"added", counts.added},
          {"changed", counts.changed},
          {"deleted", counts.deleted},
          {"broughtBack", counts.broughtBack}};
}

std::string countsText(const sync::SyncCounts& down, const sync::SyncCounts& up) {
  const auto number = [](std::size_t count) { return std::to_string(count); };
  const auto back = [&](const sync::SyncCounts& counts) {
    return counts.broughtBack == 0 ? std::string() : number(counts.broughtBack) + " back, ";
  };
  return number(down.added) + " new, " + number(down.changed) + " changed, " + back(down) +
         number(down.deleted) + " deleted here; " + number(up.added + up.changed) + " sent, " +
         back(up) + number(up.deleted) + " deleted there";
}

std::string summaryOf(const BookReport& report) {
  const auto number = [](std::size_t count) { return std::to_string(count); };
  auto text = countsText(report.down, report.up);
  // What a plan would make is not open yet.
  const bool isPlan = report.state != State::InStep;
  const auto conflicts = report.conflicts + (isPlan ? report.newConflicts.size() : 0);
  if (conflicts > 0) text += "; " + counted(conflicts, "conflict");
  if (!report.refused.empty()) text += "; " + number(report.refused.size()) + " refused";
  return text;
}

void tellPlan(const Context& context, const BookReport& report) {
  const auto shown = std::min(report.plan.size(), kMostShown);
  for (std::size_t i = 0; i < shown; ++i) {
    context.tell(report.account + ": " + lineOf(report.plan[i]));
  }
  if (shown < report.plan.size()) {
    context.tell(report.account + ": and " + std::to_string(report.plan.size() - shown) +
                 " more (--report FILE lists them)");
  }
}

void printBook(const Context& context, const BookReport& report) {
  const bool isForPeople = !context.json;
  switch (report.state) {
    case State::InStep:
      if (isForPeople) printLine(report);
      break;
    case State::Planned:
      if (!isForPeople) break;
      printLine(report);
      for (const auto& change : report.plan) {
        std::cout << terminalText("  " + lineOf(change)) << '\n';
      }
      for (const auto& conflict : report.newConflicts) {
        std::cout << terminalText("  " + lineOf(conflict)) << '\n';
      }
      break;
    case State::NeedsConfirmation:
      complainOfMeeting(context, report);
      break;
    case State::Guarded:
      complainOfGuard(context, report);
      break;
    case State::Failed:
    case State::TryLater:
      Context::complain(report.account + ": " + report.failure);
      break;
    case State::Stopped:
      Context::complain(report.account + ": interrupted; what is done is kept");
      break;
  }
  if (isForPeople) tellRest(context, report);
}

Json conflictJson(const sync::OpenConflict& conflict) {
  return {{"number", conflict.id},
          {"account", conflict.account},
          {"record", conflict.record.empty() ? Json() : Json(conflict.record)},
          {"name", conflict.name},
          {"property", conflict.property},
          {"theirs", conflict.theirs},
          {"ours", conflict.ours},
          {"time", utcTime(conflict.at)}};
}

Json reportsJson(const std::vector<BookReport>& reports,
                 const std::vector<sync::OpenConflict>& conflicts) {
  Json all = Json::array();
  for (const auto& report : reports) {
    Json open = Json::array();
    for (const auto& conflict : conflicts) {
      if (conflict.container == report.container) open.push_back(conflictJson(conflict));
    }
    all.push_back({{"account", report.account},
                   {"identifier", report.container},
                   {"book", report.book},
                   {"state", rowOf(report.state).word},
                   {"failure", report.failure.empty() ? Json() : Json(report.failure)},
                   {"down", countsJson(report.down)},
                   {"up", countsJson(report.up)},
                   {"conflicts", std::move(open)},
                   {"newConflicts", newConflictsJson(report)},
                   {"refused", refusedJson(report)},
                   {"kept", report.kept},
                   {"notes", report.notes},
                   {"plan", planJson(report)},
                   {"requests", report.requests},
                   {"bytes", report.bytes},
                   {"seconds", report.seconds}});
  }
  return all;
}

ExitCode exitCodeOf(const std::vector<BookReport>& reports) {
  const auto any = [&](auto fits) { return std::ranges::any_of(reports, fits); };
  for (const auto code : {kInterrupted, kFailed, kBusy}) {
    if (any([&](const BookReport& each) { return rowOf(each.state).code == code; })) return code;
  }
  const bool isLeft =
      any([](const BookReport& each) { return each.conflicts > 0 || !each.refused.empty(); });
  return isLeft ? kDoneWithRefusals : kDone;
}

}  // namespace ox::program
