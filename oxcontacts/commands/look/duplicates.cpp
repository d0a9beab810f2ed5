// duplicates: records that may be of one person.
#include <algorithm>
#include <iostream>

#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/OxMacAddressBookSDK/persons/likely_duplicates.hpp"
#include "oxcontacts/choice.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

const char* wordFor(Likeness likeness) {
  switch (likeness) {
    case Likeness::SameName:
      return "same name";
    case Likeness::SameEmail:
      return "same e-mail";
    case Likeness::SamePhone:
      return "same number";
    case Likeness::NearName:
      return "near name";
  }
  return "";
}

template <typename Value>
std::vector<std::string> textsOf(const _ABPerson& person, std::string_view property,
                                 const Text& (Value::*text)() const) {
  std::vector<std::string> texts;
  const auto values = multipleOf(person.valueByPropertyName(property));
  for (std::uint64_t i = 0; values && i < values->count(); ++i) {
    const auto value = values->valueAtIndex(i)->value().template host<Value>();
    if (value && (value.get()->*text)()) texts.push_back(*(value.get()->*text)());
  }
  return texts;
}

KnownBy knownBy(const _ABPerson& person) {
  KnownBy known;
  known.name = person.displayName().value_or("");
  const bool isLatin = std::ranges::all_of(known.name, [](char c) { return (c & 0x80) == 0; });
  if (!isLatin) known.latinName = person.nameChineesPinyin().value_or("");
  known.emails = textsOf<OxObjectEmail>(person, OxProPertyEmail, &OxObjectEmail::email);
  known.phones = textsOf<OxObjectPhone>(person, OxProPertyPhone, &OxObjectPhone::phoneNumber);
  return known;
}

std::string reasonsOf(const LikelyDuplicate& duplicate) {
  std::string text;
  for (const auto& reason : duplicate.reasons) {
    text += (text.empty() ? "" : ", ") + std::string(wordFor(reason.likeness));
    const bool isName =
        reason.likeness == Likeness::SameName || reason.likeness == Likeness::NearName;
    if (!isName) text += " " + reason.shared;
  }
  return text;
}

Json personJson(const _ABPerson& person) {
  return {{"ID", jsonOf(person.ID())},
          {"addressBookID", jsonOf(person.addressBookID())},
          {"displayName", jsonOf(person.displayName())}};
}

Json duplicateJson(const LikelyDuplicate& duplicate, const Persons& persons) {
  Json reasons = Json::array();
  for (const auto& reason : duplicate.reasons) {
    reasons.push_back({{"reason", wordFor(reason.likeness)}, {"shared", reason.shared}});
  }
  return {{"persons", Json::array({personJson(*persons[duplicate.first]),
                                   personJson(*persons[duplicate.second])})},
          {"reasons", std::move(reasons)}};
}

// As merge takes it: with the book where that tells them apart.
std::string nameOf(const _ABPerson& person, const BookNames& books, bool inOneBook) {
  auto name = person.displayName().value_or("");
  return inOneBook ? name : books.nameOf(person.addressBookID()) + "/" + name;
}

Table tableOf(const std::vector<LikelyDuplicate>& duplicates, const Persons& persons) {
  using Room = Table::Room;
  constexpr auto kLeft = Table::Align::Left;
  Table table({{"PERSON", kLeft, Room::MayCut},
               {"ID", kLeft, Room::MayLack},
               {"MAY BE", kLeft, Room::MayCut},
               {"ID", kLeft, Room::MayLack},
               {"WHY", kLeft, Room::MayCut}});
  const BookNames books;
  for (const auto& each : duplicates) {
    const auto& first = *persons[each.first];
    const auto& second = *persons[each.second];
    const bool inOneBook = first.addressBookID() == second.addressBookID();
    table.addRow({nameOf(first, books, inOneBook), first.key().shortText(),
                  nameOf(second, books, inOneBook), second.key().shortText(), reasonsOf(each)});
  }
  return table;
}

void listDuplicates(const Context& context, Choice& choice) {
  prepare(context, choice);
  const OneMoment moment;
  const auto persons = chosenPersons(context, choice);
  std::vector<KnownBy> known;
  known.reserve(persons.size());
  for (const auto& person : persons) known.push_back(knownBy(*person));
  const auto duplicates = likelyDuplicates(known);
  if (context.json) {
    JsonList list;
    for (const auto& duplicate : duplicates) list.add(duplicateJson(duplicate, persons));
    list.close();
  } else if (duplicates.empty()) {
    context.tell("no two records seem to be of one person");
  } else {
    tableOf(duplicates, persons).print(context);
  }
}

}  // namespace

void declareDuplicates(CLI::App& program, const Context& context) {
  auto* command = program.add_subcommand(
      "duplicates", "List records that may be of one person, with the reason (see merge)");
  const auto choice = std::make_shared<Choice>();
  declareChoice(*command, *choice);
  command->callback([&context, choice] { listDuplicates(context, *choice); });
}

}  // namespace ox::program
