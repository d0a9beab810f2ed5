#pragma once

#include <string>
#include <string_view>

namespace ox::vcard {

// The parts of a name as N orders them (RFC 6350, section 6.2.2). Borrowed.
struct NameParts {
  std::string_view last = {};
  std::string_view first = {};
  std::string_view middle = {};
  std::string_view title = {};
  std::string_view suffix = {};
};

// The formatted name that the parts make: title, first, middle, last and suffix with one blank
// between them, or last, middle and first joined when all that is there is East Asian. A card whose
// FN differs keeps its FN line. Replaces what `out` holds.
void composeFullName(const NameParts& parts, std::string& out);

// The parts that a formatted name alone gives away: the last word is the last name, what stands
// before it the first; in East Asian names the order is the other way round. Borrowed from `full`.
NameParts partsOfFullName(std::string_view full);

}  // namespace ox::vcard
