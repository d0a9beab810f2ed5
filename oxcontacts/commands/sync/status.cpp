#include "oxcontacts/commands/sync/status.hpp"

#include <algorithm>
#include <functional>
#include <iostream>

#include "ox/sync/synchronise.hpp"
#include "oxcontacts/commands/sync/book_reports.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/time_text.hpp"

namespace ox::program {
namespace {

Json timeJson(std::int64_t milliseconds) {
  return milliseconds == 0 ? Json() : Json(utcTime(milliseconds));
}

constexpr std::size_t kRunsShown = 10;

Json runsJson(const std::string& container) {
  Json runs = Json::array();
  for (const auto& run : sync::lastRuns(container, kRunsShown)) {
    runs.push_back({{"start", timeJson(run.start)},
                    {"end", timeJson(run.end)},
                    {"down", countsJson(run.down)},
                    {"up", countsJson(run.up)},
                    {"conflicts", run.conflicts},
                    {"refused", run.refused},
                    {"failure", run.failure.empty() ? Json() : Json(run.failure)}});
  }
  return runs;
}

// What a run did, and why it did no more.
std::string outcomeOf(const sync::KnownRun& run) {
  const bool didNothing = run.down == sync::SyncCounts() && run.up == sync::SyncCounts();
  std::string text = didNothing && !run.failure.empty() ? "" : countsText(run.down, run.up);
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : "; ") + part; };
  if (run.conflicts > 0) add(counted(run.conflicts, "conflict"));
  if (run.refused > 0) add(std::to_string(run.refused) + " refused");
  if (!run.failure.empty()) add("failed: " + run.failure);
  return text;
}

void printRuns(const Context& context, const std::vector<sync::KnownBook>& books) {
  struct RunOfBook {
    std::string account;
    sync::KnownRun run;
  };
  std::vector<RunOfBook> runs;
  for (const auto& book : books) {
    for (auto& run : sync::lastRuns(book.container, kRunsShown)) {
      runs.push_back({book.account, std::move(run)});
    }
  }
  if (runs.empty()) return;
  std::ranges::stable_sort(runs, std::ranges::greater(),
                           [](const RunOfBook& each) { return each.run.end; });
  if (runs.size() > kRunsShown) runs.resize(kRunsShown);
  Table table({{"LAST RUNS"}, {"ACCOUNT"}, {"OUTCOME", Table::Align::Left, Table::Room::MayCut}});
  for (const auto& [account, run] : runs) {
    table.addRow({localTime(run.end), account, outcomeOf(run)});
  }
  std::cout << '\n';
  table.print(context);
}

std::string stateOf(const sync::KnownBook& book) {
  if (book.isAway) return "away";
  if (!book.lastError.empty()) return "failed";
  return book.lastSuccess == 0 ? "new" : "in step";
}

}  // namespace

Json syncJson(const sync::KnownBook& book) {
  return {{"login", book.login},
          {"url", book.url},
          {"book", book.name},
          {"readOnly", book.isReadOnly},
          {"away", book.isAway},
          {"lastSuccess", timeJson(book.lastSuccess)},
          {"lastRun", timeJson(book.lastRun)},
          {"lastError", book.lastError.empty() ? Json() : Json(book.lastError)}};
}

void printStatus(const Context& context, const std::vector<sync::KnownBook>& books) {
  if (context.json) {
    JsonList list;
    for (const auto& book : books) {
      Json json = {{"account", book.account}, {"identifier", book.container}};
      json.update(syncJson(book));
      json["runs"] = runsJson(book.container);
      list.add(json);
    }
    list.close();
    return;
  }
  using Align = Table::Align;
  using Room = Table::Room;
  Table table({{"ACCOUNT"},
               {"STATE"},
               {"LAST SUCCESS"},
               {"WITH", Align::Left, Room::MayCut},
               {"LAST ERROR", Align::Left, Room::MayCut}});
  for (const auto& book : books) {
    table.addRow({book.account, stateOf(book),
                  book.lastSuccess == 0 ? "never" : localTime(book.lastSuccess),
                  book.url + (book.isReadOnly ? " (read-only)" : ""), book.lastError});
  }
  table.print(context);
  printRuns(context, books);
}

}  // namespace ox::program
