#pragma once

#include <array>
#include <cstdint>

namespace ox {

// What a character turns into when it is transcribed, and how it stands to its neighbours.
struct Transcribed {
  static constexpr std::uint8_t kSpace = 6;  // bytes of text at most

  // At most kSpace bytes, then anything: fixed in size, to be copied as a whole.
  std::array<char, kSpace> text{};
  std::uint8_t length = 0;
  // Flags.
  std::uint8_t traits = 0;
};

namespace traits {
constexpr std::uint8_t kKnown = 1;          // the entry is filled in
constexpr std::uint8_t kLetter = 2;         // general category L
constexpr std::uint8_t kBlankToLetter = 4;  // a letter right after it is set off by a blank
constexpr std::uint8_t kBlankAtLetter = 8;  // set off by a blank from a letter right before it
constexpr std::uint8_t kContextual = 16;    // read otherwise beside some other contextual character
constexpr std::uint8_t kNotHere = 32;       // only ICU can tell; nothing else is filled in
}  // namespace traits

// What ICU makes of that character, worked out when it is first asked for and kept in a table of
// the process. Known are the letters and signs up to U+024F and the Han characters of U+3400 to
// U+9FFF; every other character is kNotHere. Safe from any thread.
Transcribed transcribed(char32_t character);

}  // namespace ox
