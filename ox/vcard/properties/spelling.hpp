#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/properties/full_name.hpp"

// How values of several parts are spelt: RFC 6350, section 3.4. A spelling has the escapes of vCard
// 3.0 and 4.0, and lists keep their commas.

namespace ox::vcard {

// True when unescaped commas part a list somewhere in the value.
bool hasList(std::string_view value, Dialect dialect);

// A list in our spelling.
std::string listSpelling(std::string_view value, Dialect dialect);

// Components that a card parted, in our spelling; commas part lists within them.
std::string structureSpelling(std::span<const std::string_view> components, Dialect dialect);

// The five components of N for these parts.
std::string nameSpelling(const NameParts& parts);
// True when a reader makes these parts of the spelling.
bool isNameSpelling(std::string_view spelling, const NameParts& parts);

// The company and its units as ORG gives them: the department holds the units as the card parts
// them.
struct Organization {
  std::string company;
  std::string department;

  bool operator==(const Organization&) const = default;
};
Organization organizationOf(std::string_view value, Dialect dialect);
// ORG as a card spelt it, in our spelling, and the one for such a company.
std::string unitsSpelling(std::string_view value, Dialect dialect);
std::string organizationSpelling(std::string_view company, std::string_view department);

// True when a reader makes these components of ADR's spelling.
bool isAddressSpelling(std::string_view spelling,
                       const std::array<std::string_view, 7>& components);

// The readings of the last and the first name that a SORT-AS parameter gives (RFC 6350, section
// 5.9); some programs part them by a semicolon.
struct SortedAs {
  std::string last;
  std::string first;

  bool operator==(const SortedAs&) const = default;
};
SortedAs sortedAs(const Parameter& sortAs);
// The same for the parameter as it was kept: ";SORT-AS=...".
SortedAs keptSortedAs(std::string_view parameters);

}  // namespace ox::vcard
