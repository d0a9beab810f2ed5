#include "oxcontacts/choice.hpp"

#include <algorithm>
#include <unordered_set>

#include "ox/OxMacAddressBookSDK/registry/person_book.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "oxcontacts/wanted_name.hpp"

namespace ox::program {
namespace {

using Person = std::shared_ptr<_ABPerson>;

// The persons to choose from, in store order.
Persons startingPersons(const Context& context, const Choice& choice) {
  Persons persons;
  if (!choice.group.empty()) {
    // Another program may have removed it since it was found.
    if (!ABAddressBook::sharedAddressBook()->recordForKey(choice.inGroup->key())) {
      throwNotFound("group", choice.group);
    }
    for (const auto& member : choice.inGroup->persons()) {
      if (auto person = recordOf(member)) persons.push_back(std::move(person));
    }
  } else if (choice.book.empty()) {
    for (const auto& record : ABAddressBook::sharedAddressBook()->people()) {
      if (auto person = hostPerson(record)) persons.push_back(std::move(person));
    }
  }
  if (choice.book.empty()) return persons;
  const auto books = discoveredBooks(context);
  const auto book =
      choice.isConfigured ? findConfiguredBook(context, books) : findBook(books, choice.book);
  if (choice.group.empty()) {
    if (const auto held = book->allPersons()) {
      for (const auto& person : held->snapshot()) persons.push_back(recordOf(person));
    }
    return persons;
  }
  std::erase_if(persons,
                [&](const Person& person) { return person->addressBookID() != book->ID(); });
  return persons;
}

// The persons that the search finds, of those to choose from.
Persons foundPersons(const Context& context, const Choice& choice) {
  Persons found;
  for (auto& record : ABAddressBook::sharedAddressBook()->peopleMatching(*choice.find)) {
    if (auto person = hostPerson(std::move(record))) found.push_back(std::move(person));
  }
  if (choice.book.empty() && choice.group.empty()) {
    for (const auto& person : found) makeBookOf(*person);
    return found;
  }
  std::unordered_set<RecordKey> matching;
  for (const auto& person : found) matching.insert(person->key());
  auto persons = startingPersons(context, choice);
  std::erase_if(persons, [&](const Person& person) { return !matching.contains(person->key()); });
  return persons;
}

}  // namespace

void declareChoice(CLI::App& command, Choice& choice) {
  command
      .add_option("--book", choice.book,
                  "Only those of this book; * for all (else the configured one)")
      ->type_name("BOOK");
  command.add_option("--group", choice.group, "Only direct members of this group")
      ->type_name("GROUP");
  command.add_option("--tag", choice.tag, "Only those with this tag")->type_name("TAG");
  command
      .add_option("--find", choice.find,
                  "Only those in whom each of these words occurs; field:word looks into one field")
      ->type_name("WORDS");
}

void declareWords(CLI::App& command, Choice& choice) {
  command
      .add_option_function<std::vector<std::string>>(
          "WORDS",
          [&choice](const std::vector<std::string>& words) {
            std::string text = choice.find.value_or("");
            for (const auto& word : words) text += (text.empty() ? "" : " ") + word;
            choice.find = text;
          },
          "Only those in whom each of these words occurs")
      ->take_all();
}

void prepare(const Context& context, Choice& choice) {
  // A group that is named is looked for everywhere, and so are its members.
  choice.isConfigured = choice.book.empty() && choice.group.empty();
  if (choice.isConfigured) choice.book = context.configuredBook();
  if (choice.book == kAllBooks) choice.book.clear();
  if (!choice.group.empty()) choice.inGroup = findGroup(context, choice.group);
}

Persons chosenPersons(const Context& context, const Choice& choice) {
  auto persons = choice.find ? foundPersons(context, choice) : startingPersons(context, choice);
  if (!choice.tag.empty()) {
    std::erase_if(persons, [&](const Person& person) {
      const auto tags = person->tagArray();
      return std::find(tags.begin(), tags.end(), choice.tag) == tags.end();
    });
  }
  if (choice.find && persons.empty()) {
    auto what = "nobody matches \"" + *choice.find + "\"";
    if (choice.isConfigured && !choice.book.empty()) {
      what += " in the book " + choice.book + " (" + context.config.placeOf("book") +
              "); --book '*' looks in all";
    }
    throw CommandError(kNotFound, what);
  }
  return persons;
}

}  // namespace ox::program
