#include "oxcontacts/output/order.hpp"

#include <algorithm>

#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/base/text/collation.hpp"

namespace ox::program {
namespace {

// What the place in the list goes by, the more telling part first.
std::pair<std::string, std::string> sortedTexts(const _ABPerson& person, const std::string& order) {
  if (order == "pinyin") return {person.nameChineesPinyin().value_or(""), {}};
  auto shown = person.displayName().value_or("");
  if (order == "family") {
    const auto value = person.nameValue();
    const auto name = value ? value->value().host<OxObjectPersonName>() : nullptr;
    if (name && name->last() && !name->last()->empty()) return {*name->last(), std::move(shown)};
  }
  return {std::move(shown), {}};
}

}  // namespace

OrderedPersons inOrder(Persons persons, const std::string& order, bool withLetters) {
  OrderedPersons ordered;
  if (order == "store") {
    ordered.letters.resize(persons.size());
    ordered.persons = std::move(persons);
    return ordered;
  }
  const Collation collation;
  struct Place {
    std::string key;
    std::string letter;
    std::size_t index;
  };
  std::vector<Place> places;
  places.reserve(persons.size());
  for (std::size_t i = 0; i < persons.size(); ++i) {
    const auto [first, second] = sortedTexts(*persons[i], order);
    places.push_back(
        {collation.keyOf(first, second), withLetters ? collation.indexLetterOf(first) : "", i});
  }
  std::stable_sort(places.begin(), places.end(),
                   [](const Place& one, const Place& other) { return one.key < other.key; });
  for (auto& place : places) {
    ordered.persons.push_back(std::move(persons[place.index]));
    ordered.letters.push_back(std::move(place.letter));
  }
  return ordered;
}

}  // namespace ox::program
