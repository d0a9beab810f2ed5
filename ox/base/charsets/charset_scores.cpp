#include "ox/base/charsets/charset_scores.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <string>
#include <vector>

#include "ox/base/charsets/language_model.hpp"
#include "ox/base/text/charset.hpp"

namespace ox {
namespace {

// Which lead bytes stand for common characters; none in a charset of single bytes.
struct Candidate {
  std::string_view charset;
  double share;  // of cards in charsets that are not UTF-8, where nothing else is known
  std::array<std::string_view, 7> languages;
  unsigned char firstCommon = 0;
  unsigned char lastCommon = 0;
};

constexpr std::array<Candidate, kCharsetCount> kCandidates = {{
    {"windows-1252", 0.34, {"de", "fr", "es", "pt", "sv", "da", "it"}},
    {"windows-1250", 0.08, {"pl", "cs", "hu", "hr", "ro"}},
    {"windows-1251", 0.10, {"ru", "uk", "bg"}},
    {"windows-1253", 0.03, {"el"}},
    {"windows-1254", 0.04, {"tr"}},
    {"windows-1255", 0.03, {"he"}},
    {"windows-1256", 0.03, {"ar"}},
    {"windows-1257", 0.01, {"lt"}},
    {"KOI8-R", 0.02, {"ru"}},
    {"ISO-8859-2", 0.01, {"pl", "cs", "hu", "hr", "ro"}},
    {"GB18030", 0.11, {"zh-Hans"}, 0xB0, 0xD7},
    {"Big5", 0.06, {"zh-Hant"}, 0xA4, 0xC6},
    {"Shift_JIS", 0.07, {"ja"}, 0x88, 0x97},
    {"EUC-JP", 0.02, {"ja"}, 0xB0, 0xCF},
    {"windows-949", 0.05, {"ko"}, 0xB0, 0xC8},
}};

// The charsets of a language, the common ones first.
struct LanguageRow {
  std::string_view language;
  std::array<std::string_view, 3> charsets;
};

constexpr std::array kLanguages = {
    LanguageRow{"zh_TW", {"Big5", "GB18030"}},
    LanguageRow{"zh_HK", {"Big5", "GB18030"}},
    LanguageRow{"zh_MO", {"Big5", "GB18030"}},
    LanguageRow{"zh", {"GB18030", "Big5"}},
    LanguageRow{"ja", {"Shift_JIS", "EUC-JP"}},
    LanguageRow{"ko", {"windows-949"}},
    LanguageRow{"ru", {"windows-1251", "KOI8-R"}},
    LanguageRow{"uk", {"windows-1251", "KOI8-R"}},
    LanguageRow{"be", {"windows-1251", "KOI8-R"}},
    LanguageRow{"bg", {"windows-1251"}},
    LanguageRow{"mk", {"windows-1251"}},
    LanguageRow{"sr", {"windows-1251", "windows-1250"}},
    LanguageRow{"pl", {"windows-1250", "ISO-8859-2"}},
    LanguageRow{"cs", {"windows-1250", "ISO-8859-2"}},
    LanguageRow{"sk", {"windows-1250", "ISO-8859-2"}},
    LanguageRow{"hu", {"windows-1250", "ISO-8859-2"}},
    LanguageRow{"sl", {"windows-1250", "ISO-8859-2"}},
    LanguageRow{"hr", {"windows-1250", "ISO-8859-2"}},
    LanguageRow{"bs", {"windows-1250", "ISO-8859-2"}},
    LanguageRow{"ro", {"windows-1250", "ISO-8859-2"}},
    LanguageRow{"el", {"windows-1253"}},
    LanguageRow{"tr", {"windows-1254"}},
    LanguageRow{"az", {"windows-1254"}},
    LanguageRow{"he", {"windows-1255"}},
    LanguageRow{"iw", {"windows-1255"}},
    LanguageRow{"yi", {"windows-1255"}},
    LanguageRow{"ar", {"windows-1256"}},
    LanguageRow{"lt", {"windows-1257"}},
    LanguageRow{"lv", {"windows-1257"}},
    LanguageRow{"et", {"windows-1257"}},
};
// Languages that are written in windows-1252. English is not among them: it is what programs speak
// by themselves.
constexpr std::string_view kWestern = " de fr es pt it nl sv da nb nn no fi is ca gl eu ";

// Other names of the candidates.
struct Alias {
  std::string_view name;
  std::string_view charset;
};
constexpr std::array kAliases = {
    Alias{"ISO88591", "windows-1252"},
    Alias{"LATIN1", "windows-1252"},
    Alias{"CP1252", "windows-1252"},
    Alias{"ISO885915", "windows-1252"},
    Alias{"CP1250", "windows-1250"},
    Alias{"CP1251", "windows-1251"},
    Alias{"ISO88597", "windows-1253"},
    Alias{"CP1253", "windows-1253"},
    Alias{"ISO88599", "windows-1254"},
    Alias{"CP1254", "windows-1254"},
    Alias{"ISO88598", "windows-1255"},
    Alias{"CP1255", "windows-1255"},
    Alias{"CP1256", "windows-1256"},
    Alias{"CP1257", "windows-1257"},
    Alias{"KOI8U", "KOI8-R"},
    Alias{"GB2312", "GB18030"},
    Alias{"GBK", "GB18030"},
    Alias{"CP936", "GB18030"},
    Alias{"CP950", "Big5"},
    Alias{"BIG5HKSCS", "Big5"},
    Alias{"SJIS", "Shift_JIS"},
    Alias{"CP932", "Shift_JIS"},
    Alias{"WINDOWS31J", "Shift_JIS"},
    Alias{"EUCKR", "windows-949"},
    Alias{"KSC56011987", "windows-949"},
    Alias{"CP949", "windows-949"},
};

std::size_t indexOf(std::string_view charset) {
  const auto found = std::ranges::find(kCandidates, charset, &Candidate::charset);
  return static_cast<std::size_t>(found - kCandidates.begin());
}

// Letters and digits only, in capitals: how names of charsets are compared.
std::string bareName(std::string_view name) {
  std::string bare;
  for (const char c : name) {
    if (c >= 'a' && c <= 'z') {
      bare += static_cast<char>(c - 'a' + 'A');
    } else if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
      bare += c;
    }
  }
  return bare;
}

bool isMultiByte(const Candidate& candidate) {
  return candidate.lastCommon != 0;
}

// Bytes that part words, which are no second byte of a character in any charset.
bool partsWords(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x30 || (byte > 0x39 && byte < 0x40);
}

bool isBeyondAscii(std::string_view word) {
  return std::ranges::any_of(word, [](char c) { return (c & 0x80) != 0; });
}

// Of the character that the bytes start with, in a charset of several bytes.
std::size_t lengthOf(std::string_view bytes, std::string_view charset) {
  const auto byteAt = [&](std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U;
  };
  const auto lead = byteAt(0);
  if (lead <= 0x80 || lead == 0xFF) return 1;
  if (charset == "Shift_JIS" && lead >= 0xA0 && lead <= 0xDF) return 1;
  if (charset == "EUC-JP" && lead == 0x8F) return 3;
  if (charset == "GB18030" && byteAt(1) >= 0x30 && byteAt(1) <= 0x39) return 4;
  return 2;
}

void markCommon(std::string_view bytes, const Candidate& candidate,
                std::vector<WordCharacter>& word) {
  std::size_t at = 0;
  for (auto& character : word) {
    if (at >= bytes.size()) return;
    const auto lead = static_cast<unsigned char>(bytes[at]);
    character.isCommon = lead >= candidate.firstCommon && lead <= candidate.lastCommon;
    at += lengthOf(bytes.substr(at), candidate.charset);
  }
}

double logOfSum(double a, double b) {
  const double high = std::max(a, b);
  return high + std::log(std::exp(a - high) + std::exp(b - high));
}

// Each language is as probable as the others.
double scoreOfWord(const std::vector<WordCharacter>& word, const Candidate& candidate) {
  if (isMultiByte(candidate)) return characterModel(candidate.languages.front()).scoreOf(word);
  double sum = -1e9;
  double count = 0;
  for (const auto language : candidate.languages) {
    if (language.empty()) break;
    sum = logOfSum(sum, alphabetModel(language).scoreOf(word));
    ++count;
  }
  return sum - std::log(count);
}

// Calls back with each word.
template <typename Use>
void forEachLine(std::string_view text, Use&& use) {
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    use(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

double scoreOf(std::string_view words, const Candidate& candidate) {
  const auto decoded = utf8FromCharset(words, candidate.charset);
  assert(decoded && "every candidate is a charset that can be read");
  std::vector<std::string_view> raw;
  forEachLine(words, [&](std::string_view word) { raw.push_back(word); });
  double score = 0;
  std::size_t place = 0;
  std::vector<WordCharacter> word;
  forEachLine(*decoded, [&](std::string_view text) {
    word.clear();
    for (const auto c : charactersOf(text)) word.push_back({c, true});
    if (isMultiByte(candidate) && place < raw.size()) markCommon(raw[place], candidate, word);
    score += scoreOfWord(word, candidate);
    ++place;
  });
  return score;
}

// As logarithms of shares that add up to one.
void normalize(CharsetWeights& weights) {
  double sum = weights.front();
  for (std::size_t i = 1; i < weights.size(); ++i) sum = logOfSum(sum, weights[i]);
  for (auto& weight : weights) weight -= sum;
}

}  // namespace

std::string_view wordFor(Certainty certainty) {
  switch (certainty) {
    case Certainty::NearlyCertain:
      return "nearly certain";
    case Certainty::Likely:
      return "likely";
    default:
      return "a guess";
  }
}

bool CharsetSample::add(std::string_view text) {
  constexpr std::size_t kEnough = 16U << 10U;
  for (std::size_t at = 0; at < text.size() && words_.size() < kEnough;) {
    if (partsWords(text[at])) {
      ++at;
      continue;
    }
    const auto end = static_cast<std::size_t>(
        std::find_if(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), partsWords) -
        text.begin());
    const auto word = text.substr(at, end - at);
    at = end;
    // A single letter is one in any charset.
    if (word.size() == 1 || !isBeyondAscii(word)) continue;
    // A word that comes again tells nothing new.
    const auto line = std::string(word) + '\n';
    const auto known = words_.find(line);
    if (known != std::string::npos && (known == 0 || words_[known - 1] == '\n')) continue;
    words_ += line;
  }
  return words_.size() < kEnough;
}

CharsetWeights weightsOf(const CharsetSample& sample) {
  CharsetWeights weights{};
  if (sample.isEmpty()) return weights;
  // Words of one text resemble each other more than the models know.
  constexpr double kTrust = 0.8;
  for (std::size_t i = 0; i < kCharsetCount; ++i) {
    weights[i] = kTrust * scoreOf(sample.words(), kCandidates[i]);
  }
  const double best = *std::ranges::max_element(weights);
  for (auto& weight : weights) weight -= best;
  return weights;
}

CharsetWeights weightsOfLanguages(std::span<const std::string> languages) {
  CharsetWeights weights{};
  for (std::size_t i = 0; i < kCharsetCount; ++i) weights[i] = std::log(kCandidates[i].share);
  constexpr std::array kFor = {5.0, 4.0, 2.0};
  for (const auto& language : languages) {
    const auto found = std::ranges::find_if(kLanguages, [&](const LanguageRow& row) {
      return std::string_view(language).starts_with(row.language) &&
             (language.size() == row.language.size() || language[row.language.size()] == '_');
    });
    if (found == kLanguages.end()) {
      const auto name = " " + language.substr(0, language.find('_')) + " ";
      if (kWestern.find(name) != std::string_view::npos) weights[indexOf("windows-1252")] += 2;
      continue;
    }
    for (std::size_t i = 0; i < found->charsets.size() && !found->charsets[i].empty(); ++i) {
      weights[indexOf(found->charsets[i])] += kFor[i];
    }
  }
  normalize(weights);
  return weights;
}

void addNamed(std::string_view charset, CharsetWeights& weights) {
  constexpr double kNamed = 5;
  const auto bare = bareName(charset);
  for (const auto& alias : kAliases) {
    if (alias.name == bare) charset = alias.charset;
  }
  for (std::size_t i = 0; i < kCharsetCount; ++i) {
    if (bareName(kCandidates[i].charset) == bareName(charset)) weights[i] += kNamed;
  }
}

// Nine texts of ten are in the charset of their batch, the others in any.
CharsetWeights amongOthers(const CharsetWeights& known, std::span<const CharsetWeights> others) {
  const double mostly = std::log(0.9);
  const double rarely = std::log(0.1);
  auto batch = known;
  for (const auto& other : others) {
    double any = known.front() + other.front();
    for (std::size_t i = 1; i < kCharsetCount; ++i) any = logOfSum(any, known[i] + other[i]);
    for (std::size_t i = 0; i < kCharsetCount; ++i) {
      batch[i] += logOfSum(mostly + other[i], rarely + any);
    }
  }
  normalize(batch);
  for (std::size_t i = 0; i < kCharsetCount; ++i) {
    batch[i] = logOfSum(mostly + batch[i], rarely + known[i]);
  }
  return batch;
}

JudgedCharset judgedAlone(std::string_view text, std::span<const std::string> languages) {
  CharsetSample sample;
  sample.add(text);
  auto weights = weightsOfLanguages(languages);
  const auto words = weightsOf(sample);
  for (std::size_t i = 0; i < kCharsetCount; ++i) weights[i] += words[i];
  return judged(sample, weights);
}

bool fits(const CharsetSample& sample, std::string_view charset) {
  constexpr double kLeast = -5.5;  // for each byte beyond ASCII
  const auto bytes = std::ranges::count_if(sample.words(), [](char c) { return (c & 0x80) != 0; });
  if (bytes == 0) return true;
  return scoreOf(sample.words(), kCandidates[indexOf(charset)]) >
         kLeast * static_cast<double>(bytes);
}

JudgedCharset judged(const CharsetSample& sample, const CharsetWeights& weights) {
  auto shares = weights;
  normalize(shares);
  const auto best = static_cast<std::size_t>(std::ranges::max_element(shares) - shares.begin());
  if (sample.isEmpty()) return {kCandidates[best].charset, Certainty::Guess};
  // Charsets in which the words read the same: the most common one stands for them, unless another
  // one fits much better.
  constexpr double kNoMatter = -7;
  constexpr double kClearly = 3;
  const auto text = utf8FromCharset(sample.words(), kCandidates[best].charset);
  double share = 0;
  auto chosen = best;
  for (std::size_t i = 0; i < kCharsetCount; ++i) {
    const auto& candidate = kCandidates[i];
    const bool isSame = i == best || (shares[i] > kNoMatter &&
                                      utf8FromCharset(sample.words(), candidate.charset) == text);
    if (!isSame) continue;
    share += std::exp(shares[i]);
    if (shares[i] > shares[best] - kClearly && candidate.share > kCandidates[chosen].share) {
      chosen = i;
    }
  }
  constexpr double kCertain = 0.99;
  constexpr double kLikely = 0.8;
  return {kCandidates[chosen].charset, share >= kCertain  ? Certainty::NearlyCertain
                                       : share >= kLikely ? Certainty::Likely
                                                          : Certainty::Guess};
}

}  // namespace ox
