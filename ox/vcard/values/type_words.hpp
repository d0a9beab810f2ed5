#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/records/property_types.hpp"
#include "ox/vcard/lines/content_line.hpp"

namespace ox::vcard {

// Words of the TYPE parameter that labels are made of, as bits.
namespace type_word {
inline constexpr std::uint32_t kHome = 1U << 0U;
inline constexpr std::uint32_t kWork = 1U << 1U;
inline constexpr std::uint32_t kOther = 1U << 2U;
inline constexpr std::uint32_t kCell = 1U << 3U;
inline constexpr std::uint32_t kIPhone = 1U << 4U;
inline constexpr std::uint32_t kMain = 1U << 5U;
inline constexpr std::uint32_t kPager = 1U << 6U;
inline constexpr std::uint32_t kFax = 1U << 7U;
inline constexpr std::uint32_t kVoice = 1U << 8U;
inline constexpr std::uint32_t kInternet = 1U << 9U;
inline constexpr std::uint32_t kMobile = 1U << 10U;  // another word for kCell
}  // namespace type_word

// What the TYPE and PREF parameters of one line say.
struct TypeWords {
  std::uint32_t known = 0;                // type_word bits
  unsigned rank = 0;                      // of preference: 1 is the most preferred, 0 none
  std::vector<std::string_view> unknown;  // words that no label is made of, borrowed from the line
};

void readTypeWords(const ContentLine& line, TypeWords& words);

// The words of TYPE parameters that were preserved. Owns what the words are borrowed from.
class PreservedTypeWords {
 public:
  explicit PreservedTypeWords(std::string_view parameters);
  PreservedTypeWords(const PreservedTypeWords&) = delete;
  PreservedTypeWords& operator=(const PreservedTypeWords&) = delete;

  const TypeWords& words() const { return words_; }

 private:
  std::string head_;
  ContentLine line_;
  TypeWords words_;
};

// The words that say nothing of an entry of that property: every phone number is a voice, every
// e-mail address one of the internet.
std::uint32_t understoodWords(PropertyId property);

// The label that known words give an entry of that property: empty when they give none. `used` are
// the words that the label stands for; the others would be lost with it.
struct TypeLabel {
  std::string_view label;
  std::uint32_t used = 0;
};
TypeLabel typeLabel(PropertyId property, std::uint32_t known);

// The label that another word gives such an entry when no known one does, as telephones write
// theirs where they have no other: "Boat" of "X-Boat". Empty for none; borrowed like the words.
std::string_view extendedLabel(PropertyId property, const TypeWords& words);

// The TYPE parameters that give an entry of that property its label, and their words as bits; no
// parameters when TYPE cannot say it. Of vCard 4.0 (`lowerCase`) only words that RFC 6350, section
// 5.6, knows, in lower case.
struct LabelParameters {
  std::string_view parameters;
  std::uint32_t words = 0;
};
LabelParameters labelParameters(PropertyId property, std::string_view label, bool lowerCase);

// The word of one bit, as a card writes it.
std::string_view typeWordText(std::uint32_t bit);

}  // namespace ox::vcard
