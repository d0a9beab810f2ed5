#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/base/charsets/name_samples.hpp"

namespace ox {

// Natural logarithms of how probable text is in a language, made of its samples. Models are made
// once, when the first text has to be judged, and never change.

// A character that stands in a word, and the length of the bytes it was decoded from.
struct WordCharacter {
  char32_t c = 0;
  bool isCommon = true;  // its bytes are those of the charset's common characters
};

// A language with an alphabet: which letter follows which. Letters of ASCII cost the same in every
// model, wherever they stand among each other, so that words are told by their other letters.
class AlphabetModel {
 public:
  explicit AlphabetModel(const AlphabetSample& sample);

  double scoreOf(const std::vector<WordCharacter>& word) const;

 private:
  static constexpr std::size_t kCodes = 0x700;  // Latin to Arabic
  static constexpr std::uint8_t kEdge = 0;      // what stands around words
  static constexpr std::uint8_t kUnknown = 0xFF;

  std::uint8_t indexOf(char32_t c) const;
  double pair(std::uint8_t before, std::uint8_t next) const {
    return pairs_[before * letters_ + next];
  }

  std::array<std::uint8_t, kCodes> indices_{};
  std::size_t letters_ = 1;
  std::vector<float> pairs_;
};

// A language of syllables or ideographs: which characters names start with and go on with.
class CharacterModel {
 public:
  explicit CharacterModel(const CharacterSample& sample);

  double scoreOf(const std::vector<WordCharacter>& word) const;

 private:
  struct Weight {
    double first = 0;
    double next = 0;
  };
  double scoreOf(const WordCharacter& at, char32_t before) const;

  bool isKorean_;
  bool hasKana_;
  std::unordered_map<char32_t, Weight> weights_;
};

// By their language.
const AlphabetModel& alphabetModel(std::string_view language);
const CharacterModel& characterModel(std::string_view language);

// The characters of a valid UTF-8 text.
std::vector<char32_t> charactersOf(std::string_view text);

}  // namespace ox
