// copies: what is kept of the store from before it was changed.
#include "ox/OxMacAddressBookSDK/admin/store_copies.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {
namespace {

Json copyJson(const StoredCopy& copy) {
  const auto count = [&](std::uint64_t RecordCounts::*kind) {
    return copy.counts ? Json((*copy.counts).*kind) : Json();
  };
  return {{"name", copy.name},
          {"path", copy.path},
          {"time", copy.time},
          {"reason", copy.reason},
          {"persons", count(&RecordCounts::persons)},
          {"groups", count(&RecordCounts::groups)},
          {"bytes", copy.bytes}};
}

void listCopies(const Context& context) {
  const auto copies = storeCopies();
  if (context.json) {
    JsonList list;
    for (const auto& copy : copies) list.add(copyJson(copy));
    list.close();
    return;
  }
  Table table({{"TIME"},
               {"BEFORE"},
               {"PERSONS", Table::Align::Right},
               {"GROUPS", Table::Align::Right},
               {"BYTES", Table::Align::Right},
               {"NAME"}});
  for (const auto& copy : copies) {
    const auto count = [&](std::uint64_t RecordCounts::*kind) {
      return copy.counts ? std::to_string((*copy.counts).*kind) : std::string("unreadable");
    };
    table.addRow({copy.time, copy.reason, count(&RecordCounts::persons),
                  count(&RecordCounts::groups), std::to_string(copy.bytes), copy.name});
  }
  table.print(context);
}

}  // namespace

void declareCopies(CLI::App& program, const Context& context) {
  auto* copies = program.add_subcommand("copies", "List the copies kept of the store");
  copies->footer(
      "A copy is kept from before each migration of the store and each command that replaces much "
      "(restore, accounts remove --force); the last three stay, in the folder STORE.copies. Each "
      "is a store: `--store PATH` works with it.");
  copies->callback([&context] { listCopies(context); });
}

}  // namespace ox::program
