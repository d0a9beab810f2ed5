#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/formats/person/person_fields.hpp"

namespace ox::formats {

inline constexpr std::string_view kLdifHeader = "version: 1\n";

// A person as an entry of the classes inetOrgPerson (RFC 2798) and mozillaAbPersonAlpha, a group as
// groupOfNames (RFC 4519), with the blank line that stands before each. Names are those of
// distinguished_name.hpp.
std::string ldifOf(const PersonFields& person);
std::string ldifOf(const GroupFields& group);

}  // namespace ox::formats
