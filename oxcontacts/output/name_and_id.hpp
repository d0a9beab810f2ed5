#pragma once

#include <string>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox::program {

// How a message names a person: "Ann Lee (ID)", with the short ID; "(ID)" without a name.
inline std::string nameAndId(const _ABPerson& person) {
  const auto name = person.displayName().value_or("");
  return name + (name.empty() ? "(" : " (") + person.key().shortText() + ")";
}

// How a list names one: the name, or "(ID)" without one, so that no row stands for nobody.
inline std::string nameOrId(const _ABPerson& person) {
  auto name = person.displayName().value_or("");
  return name.empty() ? nameAndId(person) : name;
}

}  // namespace ox::program
