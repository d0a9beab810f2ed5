#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "ox/base/export.hpp"
#include "ox/records/property_bag.hpp"

// What a person is found by: lines, each of one byte that names its field, a text as people type it
// (ox/base/text/search_forms.hpp), and a line feed. Of a telephone number the digits, with a plus
// before them when it begins with the prefix of its country.

namespace ox {

// Stored: a number that changes its meaning makes every index wrong, so kSearchTextVersion rises.
enum class SearchField : char {
  Name = 'A',
  Nickname,
  Phonetic,
  Company,
  Email,
  Town,
  Note,
  Phone,
  // Of these a word is looked for only where it names the field.
  Department,
  Job,
  Street,
  State,
  Zip,
  Country,
  Url,
  Chat,
  Profile,
  Related,
  Date,
  Other,
};
inline constexpr SearchField kLastSearchedField = SearchField::Phone;
inline constexpr int kSearchTextVersion = 1;

OX_EXPORT std::string searchText(const PropertyBag& properties);

// The digits of a number as they stand in a line; empty when it has none.
OX_EXPORT std::string searchedDigits(std::string_view number);

// The fields that such a word names, as in `town:bern`; none when it names none.
OX_EXPORT std::span<const SearchField> fieldsNamed(std::string_view word);

// Every character of a text, every two and every three in a row, each as one of so many numbers: a
// text that holds another one has all of its numbers. Each length has numbers of its own, since a
// text has few different characters, and somebody may look for a family name of one.
inline constexpr std::size_t kSingleGrams = 1024;
inline constexpr std::size_t kPairGrams = 512;
inline constexpr std::size_t kTripleGrams = 1024;
inline constexpr std::size_t kSearchGrams = kSingleGrams + kPairGrams + kTripleGrams;
template <typename Use>
void forEachGram(std::string_view text, Use use);

namespace search_detail {

// The character that begins there; moves past it. Ill-formed bytes count as one each.
inline std::uint32_t nextCharacter(std::string_view text, std::size_t& at) {
  const auto lead = static_cast<std::uint8_t>(text[at]);
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  std::uint32_t character = lead;
  const auto end = at + length < text.size() ? at + length : text.size();
  for (++at; at < end; ++at) {
    character = (character << 8U) | static_cast<std::uint8_t>(text[at]);
  }
  return character;
}

inline std::size_t mixed(std::uint64_t before, std::uint32_t character) {
  const auto both = (before + character) * 0x9E3779B97F4A7C15U;
  return static_cast<std::size_t>(both ^ (both >> 29U));
}

}  // namespace search_detail

template <typename Use>
void forEachGram(std::string_view text, Use use) {
  std::size_t before = 0;      // the character before, mixed
  std::size_t beforeBoth = 0;  // the two before
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++count) {
    const auto character = search_detail::nextCharacter(text, at);
    const auto one = search_detail::mixed(0, character);
    const auto two = search_detail::mixed(before, character);
    const auto three = search_detail::mixed(beforeBoth, character);
    use(one % kSingleGrams);
    if (count > 0) use(kSingleGrams + two % kPairGrams);
    if (count > 1) use(kSingleGrams + kPairGrams + three % kTripleGrams);
    before = one;
    beforeBoth = two;
  }
}

}  // namespace ox
