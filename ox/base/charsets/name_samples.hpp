#pragma once

#include <span>
#include <string_view>

namespace ox {

// What names look like, for judging which charset bytes are written in. Common names and words of
// addresses, from memory; neither complete nor in any strict order. To teach another language, add
// a row and name it in charset_scores.cpp.

// Of a language with an alphabet: words between blanks.
struct AlphabetSample {
  std::string_view language;  // ISO 639
  std::string_view words;
};

// Of a language of syllables or ideographs: characters, the common ones first.
struct CharacterSample {
  std::string_view language;
  std::string_view surnames;  // what a family name starts with
  std::string_view given;     // of given names, and what else is in family names
  std::string_view other;     // of companies, streets and towns
};

std::span<const AlphabetSample> alphabetSamples();
std::span<const CharacterSample> characterSamples();

}  // namespace ox
