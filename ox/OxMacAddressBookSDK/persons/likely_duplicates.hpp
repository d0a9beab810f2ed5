#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ox/base/export.hpp"

namespace ox {

// What somebody is known by, as far as it tells whether two records are of one person.
struct KnownBy {
  std::string name;
  std::string latinName;  // the name in Latin letters; empty where it is in them
  std::vector<std::string> emails;
  std::vector<std::string> phones;
};

// Why two records may be of one person.
enum class Likeness : std::uint8_t { SameName, SameEmail, SamePhone, NearName };

struct LikelyDuplicate {
  struct Reason {
    Likeness likeness;
    std::string shared;  // what both hold, as the first one writes it; for NearName the other's
  };
  std::size_t first = 0;  // their places in the list, the first one before the second
  std::size_t second = 0;
  std::vector<Reason> reasons;
};

// Those of the list that may be one person, the likeliest first, then in the order of the list:
//
// - the same name, whatever its case, accents and the order of its words;
// - the same e-mail address, whatever its case;
// - the same telephone number, with the country's prefix or without it;
// - a name that differs in one letter, lacks one word of three or more, or is in other letters.
//
// An address or number that more than eight of them have is that of a house or a company, and tells
// nothing. Of several with one name each is told beside the first one. Takes time by the record and
// not by the pair.
OX_EXPORT std::vector<LikelyDuplicate> likelyDuplicates(const std::vector<KnownBy>& persons);

}  // namespace ox
