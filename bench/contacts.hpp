#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Contacts as an international office keeps them, made up by a fixed rule: the same count and seed
// give the same bytes.
namespace ox::bench {

inline constexpr std::uint64_t kSeed = 20'240'229;

// vCard 3.0 cards (RFC 2426), CRLF, folded at 75 octets, about 900 bytes each: 60 % Latin names of
// twelve languages, 35 % Chinese, 5 % companies; every twentieth has a picture of 3 to 10 kB. Each
// has a UID.
std::string contactCards(std::size_t count, std::uint64_t seed = kSeed);

// Chinese names, family name first, of two to four characters.
std::vector<std::string> chineseNames(std::size_t count, std::uint64_t seed = kSeed);

}  // namespace ox::bench
