#pragma once

#include <string>

#include "oxcontacts/find.hpp"

namespace ox::program {

// How a list of persons is ordered: "name" and "family" as readers of the user's language expect,
// "pinyin" by the name in Latin letters, "store" as they were added.
inline constexpr const char* kUsualOrder = "name";
inline constexpr const char* kOrders = "name, family, pinyin or store";

// Persons in that order, each under the letter that an index of such names lists it below; letters
// are empty in the order of the store.
struct OrderedPersons {
  Persons persons;
  std::vector<std::string> letters;
};
// Letters are only looked for where they are wanted.
OrderedPersons inOrder(Persons persons, const std::string& order, bool withLetters);

}  // namespace ox::program
