#include "ox/base/charsets/language_model.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <map>

#include "ox/base/text/letters.hpp"

namespace ox {
namespace {

// Logarithms of what no sample tells.
constexpr double kAsciiLetter = -3.0;
constexpr double kForeignLetter = -11.0;  // of another language
constexpr double kAmongAscii = -9.0;      // two scripts in one word
constexpr double kMark = -6.0;            // a quote, a dash
constexpr double kSign = -12.0;
constexpr double kNoCharacter = -25.0;

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kDottedCapitalI = 0x130;  // its small letter would be one of ASCII

bool isNoCharacter(char32_t c) {
  return c == kReplacement || (c >= 0x80 && c < 0xA0) || (c >= 0xE000 && c < 0xF900);
}

bool isMark(char32_t c) {
  return (c >= 0x2010 && c <= 0x2026) || c == 0xA0 || c == 0xAB || c == 0xBB || c == 0xB0;
}

char32_t small(char32_t c) {
  return c == kDottedCapitalI ? c : smallLetterOf(c);
}

bool isAsciiLetter(char32_t c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// A name starts with a capital letter; capitals after small ones are strange.
double scoreOfCase(const std::vector<WordCharacter>& word) {
  std::size_t capitals = 0;
  std::size_t smalls = 0;
  std::size_t breaks = 0;
  bool startsCapital = false;
  bool wasSmall = false;
  for (const auto& [c, isCommon] : word) {
    if (isUpperLetter(c)) {
      if (capitals + smalls == 0) startsCapital = true;
      ++capitals;
      if (wasSmall) ++breaks;
      wasSmall = false;
    } else if (isLowerLetter(c)) {
      ++smalls;
      wasSmall = true;
    }
  }
  if (capitals + smalls == 0) return 0;
  constexpr double kBreak = -4.5;
  if (breaks > 0) return kBreak * static_cast<double>(breaks) - 1;
  if (capitals == 0) return std::log(0.1);
  if (smalls == 0) return std::log(capitals == 1 ? 0.5 : 0.1);
  if (startsCapital && capitals == 1) return std::log(0.75);
  return kBreak * static_cast<double>(capitals - 1);
}

}  // namespace

std::vector<char32_t> charactersOf(std::string_view text) {
  std::vector<char32_t> characters;
  characters.reserve(text.size());
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    if ((value & 0xC0U) == 0x80U) {
      assert(!characters.empty() && "the text is UTF-8");
      characters.back() = characters.back() << 6U | (value & 0x3FU);
    } else {
      const unsigned bits = value < 0x80 ? 0x7F : value < 0xE0 ? 0x1F : value < 0xF0 ? 0x0F : 0x07;
      characters.push_back(value & bits);
    }
  }
  return characters;
}

std::uint8_t AlphabetModel::indexOf(char32_t c) const {
  if (c >= kCodes) return kUnknown;
  return indices_[c];
}

// Pairs that no word of the sample has are made of how common the second letter is.
AlphabetModel::AlphabetModel(const AlphabetSample& sample) {
  indices_.fill(kUnknown);
  std::vector<std::uint8_t> text{kEdge};
  for (const auto c : charactersOf(sample.words)) {
    if (c == ' ') {
      text.push_back(kEdge);
      continue;
    }
    auto& index = indices_[small(c)];
    if (index == kUnknown) index = static_cast<std::uint8_t>(letters_++);
    text.push_back(index);
  }
  text.push_back(kEdge);
  assert(letters_ < kUnknown);
  std::vector<double> alone(letters_, 0.3);
  std::vector<double> before(letters_, 0);
  std::vector<double> together(letters_ * letters_, 0);
  double all = 0;
  for (const auto count : alone) all += count;
  for (std::size_t i = 1; i < text.size(); ++i) {
    alone[text[i]] += 1;
    all += 1;
    before[text[i - 1]] += 1;
    together[text[i - 1] * letters_ + text[i]] += 1;
  }
  constexpr double kBackOff = 6;
  pairs_.resize(letters_ * letters_);
  for (std::size_t i = 0; i < letters_; ++i) {
    for (std::size_t j = 0; j < letters_; ++j) {
      const auto at = i * letters_ + j;
      const double probability =
          (together[at] + kBackOff * alone[j] / all) / (before[i] + kBackOff);
      pairs_[at] = static_cast<float>(std::log(probability));
    }
  }
}

double AlphabetModel::scoreOf(const std::vector<WordCharacter>& word) const {
  double score = scoreOfCase(word);
  std::uint8_t before = kEdge;
  bool wasAscii = true;
  bool wasLetter = false;
  for (const auto& at : word) {
    const auto c = at.c;
    if (isNoCharacter(c)) {
      score += kNoCharacter;
      before = kEdge;
      wasLetter = false;
      continue;
    }
    const bool isAscii = c < 0x80;
    const bool isOfWord = isAscii ? isAsciiLetter(c) : isLetter(c);
    if (!isOfWord) {
      if (!isAscii) score += isMark(c) ? kMark : kSign;
      before = kEdge;
      wasAscii = true;
      wasLetter = false;
      continue;
    }
    const auto index = indexOf(small(c));
    if (isAscii && wasAscii) {
      score += kAsciiLetter;
    } else if (index == kUnknown) {
      score += isAscii ? kAmongAscii : kForeignLetter;
    } else if (before == kUnknown) {
      score += isAscii ? kAsciiLetter : kForeignLetter / 2;
    } else {
      score += pair(before, index);
    }
    // Letters of ASCII that the language does not have: it has a script of its own.
    if (!isAscii && wasAscii && wasLetter && before == kUnknown) score += kAmongAscii;
    before = index;
    wasAscii = isAscii;
    wasLetter = true;
  }
  if (wasLetter && !wasAscii && before != kUnknown) score += pair(before, kEdge);
  return score;
}

namespace {

bool isHiragana(char32_t c) {
  return c >= 0x3041 && c <= 0x309F;
}
bool isKatakana(char32_t c) {
  return c >= 0x30A1 && c <= 0x30FE;
}
bool isHalfKatakana(char32_t c) {
  return c >= 0xFF66 && c <= 0xFF9F;
}
bool isKana(char32_t c) {
  return isHiragana(c) || isKatakana(c) || isHalfKatakana(c);
}
bool isSameKana(char32_t a, char32_t b) {
  return (isHiragana(a) && isHiragana(b)) || (isKatakana(a) && isKatakana(b)) ||
         (isHalfKatakana(a) && isHalfKatakana(b));
}
bool isIdeograph(char32_t c) {
  return (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0x3400 && c <= 0x4DBF);
}
bool isHangul(char32_t c) {
  return c >= 0xAC00 && c <= 0xD7A3;
}

// The shares of the parts of a sample in the first character of a word, and in the others.
struct Share {
  double first;
  double next;
};
constexpr Share kSurnames{0.50, 0.04};
constexpr Share kGiven{0.28, 0.62};
constexpr Share kOther{0.12, 0.22};
constexpr Share kCommon{0.07, 0.10};
constexpr Share kRare{0.01, 0.01};
constexpr double kCommonCharacters = 3500;
constexpr double kRareCharacters = 15000;
constexpr double kSyllables = 2350;

}  // namespace

CharacterModel::CharacterModel(const CharacterSample& sample)
    : isKorean_(sample.language == "ko"), hasKana_(sample.language == "ja") {
  // The first ones are the more common by far among surnames, and less so among the others.
  const auto add = [&](std::string_view characters, const Share& share, double evenness) {
    std::map<char32_t, double> ranks;
    double all = 0;
    double rank = evenness;
    for (const auto c : charactersOf(characters)) {
      if (ranks.emplace(c, 1 / rank).second) all += 1 / rank;
      rank += 1;
    }
    for (const auto& [c, weight] : ranks) {
      weights_[c].first += share.first * weight / all;
      weights_[c].next += share.next * weight / all;
    }
  };
  add(sample.surnames, kSurnames, 8);
  add(sample.given, kGiven, 80);
  add(sample.other, kOther, 200);
}

double CharacterModel::scoreOf(const WordCharacter& at, char32_t before) const {
  const auto c = at.c;
  const bool isFirst = before == 0;
  if (isNoCharacter(c)) return kNoCharacter;
  if (isKana(c)) {
    constexpr double kLetters = 80;
    if (!hasKana_) return kSign;
    double probability = isHalfKatakana(c) ? 0.02 : 0.12;
    if (!isFirst) probability = isSameKana(c, before) ? 0.85 : probability / 2;
    return std::log(probability / kLetters);
  }
  if (!isIdeograph(c) && !isHangul(c) && c != U'々') {
    if (c >= 0x3000 && c <= 0x303F) return kSign + 3;
    return isMark(c) ? kMark - 2 : kSign;
  }
  const auto shareOf = [&](const Share& share) { return isFirst ? share.first : share.next; };
  double probability = shareOf(kRare) / kRareCharacters;
  if (isKorean_ ? isHangul(c) : at.isCommon) {
    probability = shareOf(kCommon) / (isKorean_ ? kSyllables : kCommonCharacters);
  }
  if (const auto found = weights_.find(c); found != weights_.end()) {
    probability += isFirst ? found->second.first : found->second.next;
  }
  // Kana at the end of a name and ideographs behind kana are rarer than others.
  if (isKana(before)) probability *= 0.2;
  return std::log(probability);
}

double CharacterModel::scoreOf(const std::vector<WordCharacter>& word) const {
  double score = 0;
  char32_t before = 0;
  for (const auto& at : word) {
    const bool isAscii = at.c < 0x80;
    if (isAscii && !isAsciiLetter(at.c)) {
      before = 0;
      continue;
    }
    if (before != 0 && isAscii != (before < 0x80)) score += kAmongAscii / 2;
    score += isAscii ? kAsciiLetter : scoreOf(at, before < 0x80 ? 0 : before);
    before = at.c;
  }
  return score;
}

const AlphabetModel& alphabetModel(std::string_view language) {
  static const auto& models =
      *[] {
        auto made = std::make_unique<std::map<std::string_view, AlphabetModel>>();
        for (const auto& sample : alphabetSamples()) made->emplace(sample.language, sample);
        return made;
      }()
           .release();
  return models.at(language);
}

const CharacterModel& characterModel(std::string_view language) {
  static const auto& models =
      *[] {
        auto made = std::make_unique<std::map<std::string_view, CharacterModel>>();
        for (const auto& sample : characterSamples()) made->emplace(sample.language, sample);
        return made;
      }()
           .release();
  return models.at(language);
}

}  // namespace ox
