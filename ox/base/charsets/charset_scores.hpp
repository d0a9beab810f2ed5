#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace ox {

// Judges which charset bytes are written in that do not tell it themselves and are no UTF-8: a sum
// of evidence. Every charset that people's cards are found in gets a weight, the natural logarithm
// of how probable the bytes are if they are written in it; weights of several texts, and what else
// speaks for a charset, are added. Words are compared with models of the languages that a charset
// is used for (language_model.hpp). Safe from any thread.

inline constexpr std::size_t kCharsetCount = 15;
using CharsetWeights = std::array<double, kCharsetCount>;

enum class Certainty { Guess, Likely, NearlyCertain };
// "a guess", "likely", "nearly certain"
std::string_view wordFor(Certainty certainty);

struct JudgedCharset {
  std::string_view charset;  // a name that utf8FromCharset knows
  Certainty certainty = Certainty::Guess;
};

// Words of raw bytes, each once, as far as they tell anything.
class CharsetSample {
 public:
  // Takes the words of a text that is no UTF-8. False when there is enough.
  bool add(std::string_view text);
  bool isEmpty() const { return words_.empty(); }
  std::string_view words() const { return words_; }  // parted by line feeds

 private:
  std::string words_;
};

// What the words tell.
CharsetWeights weightsOf(const CharsetSample& sample);
// What is known before any text was seen: which charsets are common, and which ones are where
// those languages (ISO 639, with a territory where it matters: "zh_TW") are spoken.
CharsetWeights weightsOfLanguages(std::span<const std::string> languages);
// Adds what a charset that was named elsewhere tells; one that is none of these tells nothing.
void addNamed(std::string_view charset, CharsetWeights& weights);
// The weights of one text of a batch, made of what is known before and of those of the others:
// texts that came together are mostly written in one charset.
CharsetWeights amongOthers(const CharsetWeights& known, std::span<const CharsetWeights> others);

// The charset of the greatest weight. It is the more certain the less weight charsets have in which
// the words read differently.
JudgedCharset judged(const CharsetSample& sample, const CharsetWeights& weights);

// The charset of a text that came alone, whatever it is: what is no card, say.
JudgedCharset judgedAlone(std::string_view text, std::span<const std::string> languages);
// True when the words may well be meant in that charset, one that judged() gave.
bool fits(const CharsetSample& sample, std::string_view charset);

}  // namespace ox
