// accounts, accounts add, accounts remove: the containers of the store.
#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"

#include <array>
#include <string_view>

#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/guarded_copy.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {
namespace {

constexpr std::array kTypeWords = {"unassigned", "local", "exchange", "carddav"};

std::string typeWord(std::int32_t type) {
  const auto index = static_cast<std::size_t>(type);
  return index < kTypeWords.size() ? kTypeWords[index] : std::to_string(type);
}

CNContainerType typeOf(std::string_view word) {
  for (std::size_t i = 0; i < kTypeWords.size(); ++i) {
    if (kTypeWords[i] == word) return static_cast<CNContainerType>(i);
  }
  return CNContainerTypeUnassigned;
}

Json accountJson(const CNContainer& account) {
  return {{"identifier", jsonOf(account.identifier())},
          {"name", jsonOf(account.name())},
          {"type", typeWord(account.type())}};
}

void listAccounts(const Context& context) {
  const auto all = accounts();
  if (context.json) {
    JsonList list;
    for (const auto& account : all) list.add(accountJson(*account));
    list.close();
    return;
  }
  Table table({{"NAME"}, {"TYPE"}, {"IDENTIFIER"}});
  for (const auto& account : all) {
    table.addRow({account->name().value_or(""), typeWord(account->type()),
                  account->identifier().value_or("")});
  }
  table.print(context);
}

struct NewAccount {
  std::string name;
  std::string type = "carddav";
  std::string identifier;
};

void tellAccount(const Context& context, const CNContainer& account, const std::string& what) {
  if (context.json) {
    printJson(accountJson(account));
  } else {
    context.tell(what);
  }
}

void add(const Context& context, const NewAccount& wanted) {
  const auto& identifier = wanted.identifier;
  if (!identifier.empty() && OxMacAddressBook::standID(identifier)->empty()) {
    throw CommandError(kUsage, "\"" + identifier + "\" is no identifier");
  }
  const auto account = addAccount(wanted.name, typeOf(wanted.type), identifier);
  tellAccount(
      context, *account,
      "added " + account->name().value_or("") + " (" + account->identifier().value_or("") + ")");
}

void remove(const Context& context, const std::string& text, WithRecords withRecords) {
  const auto account = findAccount(text);
  const auto identifier = account->identifier().value_or("");
  const auto name = account->name().value_or("");
  const bool holdsPersons = !recordsOfAccount(identifier, RecordKind::Person).empty();
  const bool holdsGroups = !recordsOfAccount(identifier, RecordKind::Group).empty();
  if (withRecords == WithRecords::No && (holdsPersons || holdsGroups)) {
    throw CommandError(kFailed, name + " holds records; --force removes them with it");
  }
  if (holdsPersons || holdsGroups) keepCopyBefore(context, "accounts-remove");
  const failures::Watch watch;
  if (!removeAccount(identifier, withRecords)) refuseTagsLeft(watch);
  tellAccount(context, *account, "removed " + name);
}

void declareAdd(CLI::App& accounts, const Context& context) {
  auto* command = accounts.add_subcommand("add", "Add an account");
  const auto account = std::make_shared<NewAccount>();
  command->add_option("NAME", account->name, "What it is called")->required();
  command->add_option("--type", account->type, "local, exchange or carddav (the default)")
      ->check(CLI::IsMember({"local", "exchange", "carddav"}))
      ->type_name("TYPE");
  command->add_option("--identifier", account->identifier, "Its identifier (else a new one)")
      ->type_name("ID");
  command->callback([&context, account] { add(context, *account); });
}

void declareRemove(CLI::App& accounts, const Context& context) {
  auto* command = accounts.add_subcommand("remove", "Remove an account");
  const auto name = std::make_shared<std::string>();
  const auto withRecords = std::make_shared<WithRecords>(WithRecords::No);
  command->add_option("ACCOUNT", *name, "Which")->required();
  command->add_flag_callback(
      "--force", [withRecords] { *withRecords = WithRecords::Yes; }, "With everything in it");
  command->callback([&context, name, withRecords] { remove(context, *name, *withRecords); });
}

}  // namespace

void declareAccounts(CLI::App& program, const Context& context) {
  auto* accounts = program.add_subcommand("accounts", "List, add or remove accounts");
  declareAdd(*accounts, context);
  declareRemove(*accounts, context);
  accounts->require_subcommand(0, 1);
  accounts->callback([accounts, &context] {
    if (accounts->get_subcommands().empty()) listAccounts(context);
  });
}

}  // namespace ox::program
