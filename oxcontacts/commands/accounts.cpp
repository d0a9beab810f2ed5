#include <array>
#include <string_view>

#include "ox/base/uuid.hpp"
#include "ox/platform/Contacts/CNContainer.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/tags_to_remove.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {
namespace {

constexpr std::array kTypeWords = {"unassigned", "local", "exchange", "carddav"};

std::string typeWord(std::int32_t type) {
  const auto index = static_cast<std::size_t>(type);
  return index < kTypeWords.size() ? kTypeWords[index] : std::to_string(type);
}

std::int32_t typeOf(std::string_view word) {
  for (std::size_t i = 0; i < kTypeWords.size(); ++i) {
    if (kTypeWords[i] == word) return static_cast<std::int32_t>(i);
  }
  return CNContainerTypeUnassigned;
}

Json accountJson(const ContainerInfo& container) {
  return {{"identifier", container.identifier},
          {"name", container.name},
          {"type", typeWord(container.type)}};
}

void listAccounts(const Context& context) {
  const auto containers = contactSource().containers();
  if (context.json) {
    JsonList list;
    for (const auto& container : containers) list.add(accountJson(*container));
    list.close();
    return;
  }
  Table table({{"NAME"}, {"TYPE"}, {"IDENTIFIER"}});
  for (const auto& container : containers) {
    table.addRow({container->name, typeWord(container->type), container->identifier});
  }
  table.print(context);
}

void execute(SaveRequest request) {
  if (!contactSource().execute(request)) throw CommandError(kFailed, request.reason);
}

struct NewAccount {
  std::string name;
  std::string type = "carddav";
  std::string identifier;
};

// Two accounts of one standard id could not be told apart where that is what names them.
void refuseTakenId(const std::string& identifier) {
  const auto standId = OxMacAddressBook::standID(identifier);
  if (standId->empty()) throw CommandError(kUsage, "\"" + identifier + "\" is no identifier");
  for (const auto& container : contactSource().containers()) {
    if (OxMacAddressBook::standID(container->identifier) != standId) continue;
    throw CommandError(
        kFailed, "there is an account with the identifier " + container->identifier + " already");
  }
}

void addAccount(const Context& context, const NewAccount& account) {
  ContainerInfo container{account.identifier, account.name, typeOf(account.type)};
  if (container.identifier.empty()) container.identifier = uuidText(makeUuid()) + ":ABAccount";
  refuseTakenId(container.identifier);
  SaveRequest request;
  request.newContainers.push_back(container);
  execute(std::move(request));
  if (context.json) {
    printJson(accountJson(container));
  } else {
    context.tell("added " + container.name + " (" + container.identifier + ")");
  }
}

std::vector<std::shared_ptr<_ABPerson>> hostPersons(const RecordKeys& keys) {
  std::vector<std::shared_ptr<_ABPerson>> persons;
  persons.reserve(keys.size());
  for (const auto& key : keys) {
    auto person = hostPerson(ABAddressBook::sharedAddressBook()->recordForUniqueId(key.text()));
    if (person) persons.push_back(std::move(person));
  }
  return persons;
}

void removeAccount(const Context& context, const std::string& text, bool force) {
  const auto container = findAccount(text);
  const auto persons = contactSource().recordsIn(container->identifier, RecordKind::Person);
  if (!force && (!persons.empty() ||
                 !contactSource().recordsIn(container->identifier, RecordKind::Group).empty())) {
    throw CommandError(kFailed, container->name + " holds records; --force removes them with it");
  }
  if (!persons.empty()) discoveredBooks(context);
  const TagsToRemove tags(hostPersons(persons));
  SaveRequest request;
  request.removedContainers.push_back({container->identifier, force});
  execute(std::move(request));
  tags.remove();
  if (context.json) {
    printJson(accountJson(*container));
  } else {
    context.tell("removed " + container->name);
  }
}

void declareAdd(CLI::App& accounts, const Context& context) {
  auto* add = accounts.add_subcommand("add", "Add an account");
  const auto account = std::make_shared<NewAccount>();
  add->add_option("NAME", account->name, "What it is called")->required();
  add->add_option("--type", account->type, "local, exchange or carddav (the default)")
      ->check(CLI::IsMember({"local", "exchange", "carddav"}))
      ->type_name("TYPE");
  add->add_option("--identifier", account->identifier, "Its identifier (else a new one)")
      ->type_name("ID");
  add->callback([&context, account] { addAccount(context, *account); });
}

void declareRemove(CLI::App& accounts, const Context& context) {
  auto* remove = accounts.add_subcommand("remove", "Remove an account");
  const auto name = std::make_shared<std::string>();
  const auto force = std::make_shared<bool>(false);
  remove->add_option("ACCOUNT", *name, "Which")->required();
  remove->add_flag("--force", *force, "With everything in it");
  remove->callback([&context, name, force] { removeAccount(context, *name, *force); });
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
