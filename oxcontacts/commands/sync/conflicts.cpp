#include "oxcontacts/commands/sync/conflicts.hpp"

#include <algorithm>
#include <charconv>
#include <set>

#include "oxcontacts/arguments.hpp"
#include "oxcontacts/commands/sync/book_reports.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/wanted_name.hpp"

namespace ox::program {
namespace {

using sync::OpenConflict;
using Conflicts = std::vector<OpenConflict>;

std::optional<std::int64_t> numberIn(const std::string& text) {
  std::int64_t number = 0;
  const auto* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return number;
}

Conflicts only(const Conflicts& conflicts, auto fits) {
  Conflicts found;
  std::ranges::copy_if(conflicts, std::back_inserter(found), fits);
  return found;
}

// Two records of one name are two: what is settled must be what was meant.
Conflicts ofOneRecord(const Conflicts& named, const std::string& card) {
  std::set<std::string> records;
  for (const auto& conflict : named) records.insert(conflict.record);
  if (records.size() > 1) {
    throwAmbiguous("record", card, {records.begin(), records.end()}, records.size());
  }
  return named;
}

Conflicts chosen(const Context& context, const Conflicts& conflicts, const std::string& card) {
  if (const auto number = numberIn(card)) {
    auto found = only(conflicts, [&](const OpenConflict& each) { return each.id == *number; });
    if (!found.empty()) return found;
  }
  auto found = only(conflicts, [&](const OpenConflict& each) { return each.record == card; });
  if (!found.empty()) return found;
  const WantedName wanted(card);
  found = only(conflicts, [&](const OpenConflict& each) { return wanted.isNameOf(each.name); });
  if (!found.empty()) return ofOneRecord(found, card);
  const auto person = findPerson(context, card);
  const auto id = person->ID().value_or("");
  found = only(conflicts, [&](const OpenConflict& each) { return each.record == id; });
  if (!found.empty()) return found;
  throw CommandError(kNotFound, person->displayName().value_or(id) + " has no open conflict");
}

}  // namespace

Conflicts conflictsOf(const std::vector<std::string>& containers) {
  const auto all = sync::openConflicts();
  return only(all, [&](const OpenConflict& each) {
    return containers.empty() || std::ranges::count(containers, each.container) > 0;
  });
}

void printConflicts(const Context& context, const Conflicts& conflicts) {
  if (context.json) {
    JsonList list;
    for (const auto& conflict : conflicts) list.add(conflictJson(conflict));
    list.close();
    return;
  }
  if (conflicts.empty()) return context.tell("no conflict is open");
  using Align = Table::Align;
  using Room = Table::Room;
  Table table({{"NUMBER", Align::Right},
               {"ACCOUNT", Align::Left, Room::MayLack},
               {"NAME", Align::Left, Room::MayCut},
               {"PROPERTY"},
               {"THEIRS", Align::Left, Room::MayCut},
               {"OURS", Align::Left, Room::MayCut}});
  for (const auto& conflict : conflicts) {
    table.addRow({std::to_string(conflict.id), conflict.account, conflict.name, conflict.property,
                  conflict.theirs, conflict.ours});
  }
  table.print(context);
  const auto words = "oxcontacts sync --resolve " + std::to_string(conflicts.front().id);
  context.tell("theirs is what stands in the record: `" + words + " theirs` leaves it, `" + words +
               " mine` puts ours in its place and sends it with the next run");
}

void settle(const Context& context, const Conflicts& conflicts, const std::string& card,
            const std::string& side) {
  const auto meant = chosen(context, conflicts, card);
  std::vector<std::int64_t> ids;
  for (const auto& conflict : meant) ids.push_back(conflict.id);
  sync::resolveConflicts(ids, side == "mine" ? sync::Settled::Mine : sync::Settled::Theirs);
  if (context.json) {
    JsonList list;
    for (const auto& conflict : meant) list.add(conflictJson(conflict));
    list.close();
    return;
  }
  context.tell(
      "settled " + counted(meant.size(), "conflict") + " of " + meant.front().name + ": " +
      (side == "mine" ? "ours stands now, and goes there with the next run" : "theirs stays"));
}

}  // namespace ox::program
