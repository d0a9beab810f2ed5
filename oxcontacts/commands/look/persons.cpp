// persons: the list, by book, group, tag or text.
#include <algorithm>
#include <charconv>
#include <optional>
#include <unordered_set>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/OxMacAddressBookSDK/registry/person_book.hpp"
#include "ox/base/text/case.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {
namespace {

using Person = std::shared_ptr<_ABPerson>;

struct Arguments {
  std::string book;
  std::string group;
  std::shared_ptr<_ABGroup> inGroup;  // that group
  std::string tag;
  std::optional<std::string> find;
  std::string sort = "store";
  std::optional<std::size_t> limit;
};

Text mainPhone(const _ABPerson& person) {
  const auto phone = person.mainPhone();
  return phone ? phone->phoneNumber() : std::nullopt;
}

Text mainEmail(const _ABPerson& person) {
  const auto email = person.mainEmail();
  return email ? email->email() : std::nullopt;
}

// The persons to choose from, in store order.
Persons startingPersons(const Context& context, const Arguments& arguments) {
  Persons persons;
  if (!arguments.group.empty()) {
    for (const auto& member : arguments.inGroup->persons()) {
      if (auto person = recordOf(member)) persons.push_back(std::move(person));
    }
  } else if (arguments.book.empty()) {
    for (const auto& record : ABAddressBook::sharedAddressBook()->people()) {
      if (auto person = hostPerson(record)) persons.push_back(std::move(person));
    }
  }
  if (arguments.book.empty()) return persons;
  const auto book = findBook(discoveredBooks(context), arguments.book);
  if (arguments.group.empty()) {
    if (const auto held = book->allPersons()) {
      for (const auto& person : held->snapshot()) persons.push_back(recordOf(person));
    }
    return persons;
  }
  std::erase_if(persons,
                [&](const Person& person) { return person->addressBookID() != book->ID(); });
  return persons;
}

void sortBy(const std::string& order, Persons& persons) {
  if (order == "store") return;
  std::vector<std::pair<std::string, Person>> keyed;
  keyed.reserve(persons.size());
  for (auto& person : persons) {
    auto key = order == "name" ? foldedForSearch(person->displayName().value_or(""))
                               : person->nameChineesPinyin().value_or("");
    keyed.emplace_back(std::move(key), std::move(person));
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (std::size_t i = 0; i < keyed.size(); ++i) persons[i] = std::move(keyed[i].second);
}

// The persons that the search finds, of those to choose from.
Persons foundPersons(const Context& context, const Arguments& arguments) {
  Persons found;
  for (auto& record : ABAddressBook::sharedAddressBook()->peopleMatching(*arguments.find)) {
    if (auto person = hostPerson(std::move(record))) found.push_back(std::move(person));
  }
  if (arguments.book.empty() && arguments.group.empty()) {
    for (const auto& person : found) makeBookOf(*person);
    return found;
  }
  std::unordered_set<RecordKey> matching;
  for (const auto& person : found) matching.insert(person->key());
  auto persons = startingPersons(context, arguments);
  std::erase_if(persons, [&](const Person& person) { return !matching.contains(person->key()); });
  return persons;
}

Persons chosenPersons(const Context& context, const Arguments& arguments) {
  auto persons =
      arguments.find ? foundPersons(context, arguments) : startingPersons(context, arguments);
  if (!arguments.tag.empty()) {
    std::erase_if(persons, [&](const Person& person) {
      const auto tags = person->tagArray();
      return std::find(tags.begin(), tags.end(), arguments.tag) == tags.end();
    });
  }
  if (arguments.find && persons.empty()) {
    throw CommandError(kNotFound, "nobody matches \"" + *arguments.find + "\"");
  }
  sortBy(arguments.sort, persons);
  if (arguments.limit && *arguments.limit < persons.size()) persons.resize(*arguments.limit);
  return persons;
}

Json personJson(const _ABPerson& person) {
  return {{"ID", jsonOf(person.ID())},
          {"addressBookID", jsonOf(person.addressBookID())},
          {"displayName", jsonOf(person.displayName())},
          {"nameChineesPinyin", jsonOf(person.nameChineesPinyin())},
          {"mainPhone", jsonOf(mainPhone(person))},
          {"mainEmail", jsonOf(mainEmail(person))},
          {"tags", person.tagArray()}};
}

std::size_t limitOf(const std::string& text) {
  std::size_t limit = 0;
  const auto* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, limit);
  if (read.ec != std::errc() || read.ptr != end) {
    throw CommandError(kUsage, "--limit: \"" + text + "\" is no number of persons");
  }
  return limit;
}

void printJsonList(const Context& context, const Arguments& arguments) {
  const OneMoment moment;
  const auto persons = chosenPersons(context, arguments);
  JsonList list;
  for (const auto& person : persons) list.add(personJson(*person));
  list.close();
}

Table tableOfPersons(const Context& context, const Arguments& arguments) {
  const OneMoment moment;
  Table table({{"NAME"}, {"PHONE"}, {"E-MAIL"}, {"BOOK"}, {"ID"}});
  const auto persons = chosenPersons(context, arguments);
  const BookNames books;
  for (const auto& person : persons) {
    table.addRow({person->displayName().value_or(""), mainPhone(*person).value_or(""),
                  mainEmail(*person).value_or(""), books.nameOf(person->addressBookID()),
                  person->key().shortText()});
  }
  return table;
}

void listPersons(const Context& context, Arguments& arguments) {
  if (!arguments.group.empty()) arguments.inGroup = findGroup(arguments.group);
  if (context.json) return printJsonList(context, arguments);
  tableOfPersons(context, arguments).print(context);
}

}  // namespace

void declarePersons(CLI::App& program, const Context& context) {
  auto* persons = program.add_subcommand("persons", "List persons");
  const auto arguments = std::make_shared<Arguments>();
  persons->add_option("--book", arguments->book, "Only those of this book")->type_name("BOOK");
  persons->add_option("--group", arguments->group, "Only direct members of this group")
      ->type_name("GROUP");
  persons->add_option("--tag", arguments->tag, "Only those with this tag")->type_name("TAG");
  persons
      ->add_option("--find", arguments->find,
                   "Only those in whom each of these words occurs; field:word looks into one field")
      ->type_name("WORDS");
  persons->add_option("--sort", arguments->sort, "name, pinyin or store (the default)")
      ->check(CLI::IsMember({"name", "pinyin", "store"}))
      ->type_name("ORDER");
  persons
      ->add_option_function<std::string>(
          "--limit", [arguments](const std::string& text) { arguments->limit = limitOf(text); },
          "At most so many")
      ->type_name("N");
  persons->callback([&context, arguments] { listPersons(context, *arguments); });
}

}  // namespace ox::program
