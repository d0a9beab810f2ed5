#pragma once

#include <string>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox::program {

// How a message names a person: "Ann Lee (ID)", with the short ID; "(ID)" without a name.
inline std::string nameAndId(const _ABPerson& person) {
  const auto name = person.displayName().value_or("");
  return name + (name.empty() ? "(" : " (") + person.key().shortText() + ")";
}

}  // namespace ox::program
