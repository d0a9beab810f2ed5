#pragma once

#include <cstdint>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "oxcontacts/output/json.hpp"

namespace ox::program {

enum class Maps : std::uint8_t { No, Yes };

// The person as the script of the page wants it: {"name","second","find","fields"}, and where they
// are known "latin" (the name in Latin letters), "isCompany", "picture", "birthday" and "tags".
// "second" is the line below the name in the list; "find" is what the person is found by
// (ox/records/search_text.hpp). A field is {"name","values"}, a value {"text"} or {"date"}, and
// where there are "label", "main", "link" and "map".
Json pagePerson(const _ABPerson& person, Maps maps);

// The picture as the address of an image that holds it; "" for a missing one.
std::string imageAddress(const Data& file, const char* type);

}  // namespace ox::program
