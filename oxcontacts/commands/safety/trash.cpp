// trash: who was removed and can come back.
#include "ox/platform/journal/journal.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/past_values.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/time_text.hpp"

namespace ox::program {
namespace {

const char* kindOf(const PastRecord& record) {
  return record.kind == RecordKind::Person ? "person" : "group";
}

void listRemoved(const Context& context, std::size_t limit) {
  const auto removed = journal::removedRecords(limit);
  if (context.json) {
    JsonList list;
    for (const auto& each : removed) {
      list.add({{"ID", each.record.key.text()},
                {"kind", kindOf(each.record)},
                {"displayName", nameIn(each.record.properties)},
                {"time", utcTime(each.at)},
                {"number", each.command}});
    }
    list.close();
    return;
  }
  Table table({{"NAME"}, {"KIND"}, {"REMOVED"}, {"NUMBER", Table::Align::Right}, {"ID"}});
  for (const auto& each : removed) {
    table.addRow({nameIn(each.record.properties), kindOf(each.record), localTime(each.at),
                  std::to_string(each.command), each.record.key.text()});
  }
  table.print(context);
}

}  // namespace

void declareTrash(CLI::App& program, const Context& context) {
  auto* trash = program.add_subcommand("trash", "List the persons and groups that were removed");
  const auto limit = std::make_shared<std::size_t>(SIZE_MAX);
  trash->add_option("--limit", *limit, "At most so many")->type_name("N");
  trash->footer("`undo NUMBER` takes the command back that removed them.");
  trash->callback([&context, limit] { listRemoved(context, *limit); });
}

}  // namespace ox::program
