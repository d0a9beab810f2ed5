#include <array>
#include <memory>
#include <span>
#include <unicode/uchar.h>
#include <unicode/ucsdet.h>
#include <unicode/uscript.h>
#include <vector>

#include "ox/base/text/charset.hpp"

// ICU judges by the frequencies of running text, which a handful of names does not have. So the
// candidates are compared by how much their result looks like names; ICU has the word when it is
// sure of a multi-byte charset, and among the Latin ones, which look alike.

namespace ox {
namespace {

enum class Family { Latin, Alphabet, MultiByte };

// Which lead bytes stand for common characters.
struct Candidate {
  const char* charset;
  Family family;
  unsigned char firstCommon = 0;
  unsigned char lastCommon = 0;
};

// Where the scores are equal the first one wins.
constexpr std::array kCandidates = {
    Candidate{"windows-1252", Family::Latin},
    Candidate{"windows-1250", Family::Latin},
    Candidate{"windows-1251", Family::Alphabet},
    Candidate{"windows-1253", Family::Alphabet},
    Candidate{"KOI8-R", Family::Alphabet},
    Candidate{"windows-1255", Family::Alphabet},
    Candidate{"windows-1256", Family::Alphabet},
    Candidate{"GB18030", Family::MultiByte, 0xB0, 0xD7},
    Candidate{"Shift_JIS", Family::MultiByte, 0x81, 0x98},
    Candidate{"Big5", Family::MultiByte, 0xA4, 0xC6},
    Candidate{"windows-949", Family::MultiByte, 0xB0, 0xC8},
    Candidate{"EUC-JP", Family::MultiByte, 0xA4, 0xCF},
};

struct Detected {
  std::string_view name;  // ICU's
  const char* charset;
};

constexpr std::array kSureNames = {
    Detected{"GB18030", "GB18030"},    Detected{"Shift_JIS", "Shift_JIS"}, Detected{"Big5", "Big5"},
    Detected{"EUC-KR", "windows-949"}, Detected{"EUC-JP", "EUC-JP"},
};
constexpr int kSure = 70;

constexpr std::array kLatinNames = {
    Detected{"ISO-8859-1", "windows-1252"}, Detected{"windows-1252", "windows-1252"},
    Detected{"ISO-8859-2", "windows-1250"}, Detected{"windows-1250", "windows-1250"},
    Detected{"ISO-8859-9", "windows-1254"}, Detected{"windows-1254", "windows-1254"},
};
constexpr int kBelievable = 20;

bool isAsciiLetter(UChar32 c) {
  return c < 0x80 && u_isalpha(c) != 0;
}

// The characters of a valid UTF-8 text.
std::vector<UChar32> charactersOf(std::string_view text) {
  std::vector<UChar32> characters;
  characters.reserve(text.size());
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    if ((value & 0xC0U) == 0x80U) {
      characters.back() = characters.back() << 6 | (value & 0x3F);
    } else {
      const int bits = value < 0x80 ? 0x7F : value < 0xE0 ? 0x1F : value < 0xF0 ? 0x0F : 0x07;
      characters.push_back(value & bits);
    }
  }
  return characters;
}

UScriptCode scriptOf(UChar32 c) {
  UErrorCode status = U_ZERO_ERROR;
  return uscript_getScript(c, &status);
}

// How well one letter or sign beyond ASCII fits between its neighbours.
int scoreOf(UChar32 before, UChar32 c, UChar32 after, Family family) {
  const bool besideAscii = isAsciiLetter(before) || isAsciiLetter(after);
  if (u_isalpha(c) == 0) return besideAscii || before >= 0x80 || after >= 0x80 ? -2 : 0;
  if (u_isupper(c) != 0 && u_islower(before) != 0) return -3;
  if (family == Family::Latin) return besideAscii ? 2 : before >= 0x80 || after >= 0x80 ? -1 : 0;
  if (besideAscii || scriptOf(c) == USCRIPT_LATIN) return -2;
  const bool amongItsOwn = (before >= 0x80 && scriptOf(before) == scriptOf(c)) ||
                           (after >= 0x80 && scriptOf(after) == scriptOf(c));
  return amongItsOwn ? 2 : 0;
}

int scoreOfLetters(const std::vector<UChar32>& text, Family family) {
  int score = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] < 0x80) continue;
    const UChar32 before = i > 0 ? text[i - 1] : ' ';
    const UChar32 after = i + 1 < text.size() ? text[i + 1] : ' ';
    score += scoreOf(before, text[i], after, family);
  }
  return score;
}

// A character of two bytes counts as two letters do: its lead byte tells whether it is common.
int scoreOfPairs(std::string_view bytes, const Candidate& candidate) {
  const bool shiftJis = candidate.firstCommon == 0x81;
  int score = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    if (lead < 0x80) continue;
    if (shiftJis && lead >= 0xA1 && lead <= 0xDF) {
      score += 2;  // half-width katakana, one byte
      continue;
    }
    score += lead >= candidate.firstCommon && lead <= candidate.lastCommon ? 3 : -2;
    ++i;
  }
  return score;
}

// Lower than any score: the bytes cannot be written in that charset.
constexpr int kImpossible = -1000000;

int score(std::string_view bytes, const Candidate& candidate) {
  const auto text = utf8FromCharset(bytes, candidate.charset);
  if (!text) return kImpossible;
  const auto characters = charactersOf(*text);
  for (const UChar32 c : characters) {
    const bool control = c >= 0x80 && c < 0xA0;
    if (control || c == 0xFFFD || (c >= 0xE000 && c < 0xF900)) return kImpossible;
  }
  if (candidate.family == Family::MultiByte) return scoreOfPairs(bytes, candidate);
  return scoreOfLetters(characters, candidate.family);
}

struct CloseDetector {
  void operator()(UCharsetDetector* detector) const { ucsdet_close(detector); }
};

// The first of ICU's guesses that stands in the rows; null when there is none above the limit.
const char* icuGuess(std::string_view bytes, std::span<const Detected> rows, int limit) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UCharsetDetector, CloseDetector> detector(ucsdet_open(&status));
  if (U_FAILURE(status) != 0) return nullptr;
  ucsdet_setText(detector.get(), bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
  std::int32_t count = 0;
  const UCharsetMatch** matches = ucsdet_detectAll(detector.get(), &count, &status);
  if (U_FAILURE(status) != 0) return nullptr;
  for (const auto* match : std::span(matches, static_cast<std::size_t>(count))) {
    const std::string_view name = ucsdet_getName(match, &status);
    if (ucsdet_getConfidence(match, &status) < limit) return nullptr;
    for (const auto& row : rows) {
      if (row.name == name) return row.charset;
    }
  }
  return nullptr;
}

}  // namespace

std::string detectCharset(std::string_view bytes) {
  constexpr std::size_t kEnough = 64 * 1024;
  bytes = bytes.substr(0, kEnough);
  if (const char* sure = icuGuess(bytes, kSureNames, kSure)) return sure;
  const Candidate* best = &kCandidates.front();
  int bestScore = score(bytes, *best);
  for (const auto& candidate : kCandidates) {
    const int found = score(bytes, candidate);
    if (found <= bestScore) continue;
    best = &candidate;
    bestScore = found;
  }
  if (best == &kCandidates.front()) {
    if (const char* latin = icuGuess(bytes, kLatinNames, kBelievable)) return latin;
  }
  return best->charset;
}

}  // namespace ox
