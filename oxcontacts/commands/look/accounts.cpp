// accounts, accounts add, accounts remove: the containers of the store.
#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"

#include <array>
#include <optional>
#include <string_view>

#include "ox/sync/logins.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/commands/sync/add_login.hpp"
#include "oxcontacts/commands/sync/status.hpp"
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

// What the account is in step with; missing when that is nothing.
std::optional<sync::KnownBook> bookElsewhere(const std::vector<sync::KnownBook>& known,
                                             const CNContainer& account) {
  for (const auto& book : known) {
    if (book.container == account.identifier()) return book;
  }
  return std::nullopt;
}

Json accountJson(const CNContainer& account, const std::optional<sync::KnownBook>& book) {
  return {{"identifier", jsonOf(account.identifier())},
          {"name", jsonOf(account.name())},
          {"type", typeWord(account.type())},
          {"sync", book ? syncJson(*book) : Json()}};
}

void listAccounts(const Context& context) {
  const auto all = accounts();
  const auto known = sync::knownBooks();
  if (context.json) {
    JsonList list;
    for (const auto& account : all) list.add(accountJson(*account, bookElsewhere(known, *account)));
    list.close();
    return;
  }
  std::vector<Table::Column> columns = {{"NAME"}, {"TYPE"}, {"IDENTIFIER"}};
  if (!known.empty()) columns.push_back({"IN STEP WITH"});
  Table table(std::move(columns));
  for (const auto& account : all) {
    std::vector<std::string> cells = {account->name().value_or(""), typeWord(account->type()),
                                      account->identifier().value_or("")};
    const auto book = bookElsewhere(known, *account);
    if (!known.empty()) cells.push_back(book ? book->url : "");
    table.addRow(std::move(cells));
  }
  table.print(context);
}

struct NewAccount {
  std::string name;
  std::string type = "carddav";
  std::string identifier;
  LoginArguments login;
};

void tellAccount(const Context& context, const CNContainer& account,
                 const std::optional<sync::KnownBook>& book, const std::string& what) {
  if (context.json) {
    printJson(accountJson(account, book));
  } else {
    context.tell(what);
  }
}

void add(const Context& context, const NewAccount& wanted) {
  if (wanted.login.namesPlace() || wanted.login.needsPlace()) {
    return addLoginFor(context, wanted.name, wanted.login);
  }
  const auto& identifier = wanted.identifier;
  if (!identifier.empty() && OxMacAddressBook::standID(identifier)->empty()) {
    throw CommandError(kUsage, "\"" + identifier + "\" is no identifier");
  }
  const auto account = addAccount(wanted.name, typeOf(wanted.type), identifier);
  tellAccount(
      context, *account, std::nullopt,
      "added " + account->name().value_or("") + " (" + account->identifier().value_or("") + ")");
}

void remove(const Context& context, const std::string& text, WithRecords withRecords) {
  const auto account = findAccount(text);
  const auto identifier = account->identifier().value_or("");
  const auto name = account->name().value_or("");
  const auto book = bookElsewhere(sync::knownBooks(), *account);
  const bool holdsPersons = !recordsOfAccount(identifier, RecordKind::Person).empty();
  const bool holdsGroups = !recordsOfAccount(identifier, RecordKind::Group).empty();
  if (withRecords == WithRecords::No && (holdsPersons || holdsGroups)) {
    throw CommandError(kFailed, name + " holds records; --force removes them with it");
  }
  if (holdsPersons || holdsGroups) keepCopyBefore(context, "accounts-remove");
  const failures::Watch watch;
  if (!removeAccount(identifier, withRecords)) refuseTagsLeft(watch);
  tellAccount(context, *account, book,
              "removed " + name + (book ? "; nothing was deleted at " + book->url : ""));
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
  declareLoginOptions(*command, account->login);
  for (const auto* place : {"--url", "--folder"}) {
    for (const auto* own : {"--type", "--identifier"}) {
      command->get_option(place)->excludes(command->get_option(own));
    }
  }
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
