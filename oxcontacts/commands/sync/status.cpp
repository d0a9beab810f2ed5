#include "oxcontacts/commands/sync/status.hpp"

#include "oxcontacts/output/table.hpp"
#include "oxcontacts/time_text.hpp"

namespace ox::program {
namespace {

Json timeJson(std::int64_t milliseconds) {
  return milliseconds == 0 ? Json() : Json(utcTime(milliseconds));
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
}

}  // namespace ox::program
