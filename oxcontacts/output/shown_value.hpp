#pragma once

#include <string>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox::program {

// What the person's record says of the property; null when it says nothing. An address in the model
// always has a country code, the user's own where the record has none: here it has none then.
OxValuePtr shownValue(const _ABPerson& person, const OxPropertyPtr& property);

// The label for readers: the word that the model has for it, else the words within a built-in one
// of other programs ("_$!<AssistantPhone>!$_" as "Assistant Phone"), else the text as it is.
std::string labelWords(std::string_view shownByModel);

}  // namespace ox::program
