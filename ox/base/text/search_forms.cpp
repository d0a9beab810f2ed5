#include "ox/base/text/search_forms.hpp"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <unicode/translit.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>
#include <unicode/uversion.h>
#include <utility>

#include "ox/base/text/case.hpp"
#include "ox/base/text/transcription.hpp"

namespace ox {
namespace {

icu::UnicodeString wide(std::string_view text) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

std::string narrow(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

// One of ICU's ways into Latin letters, prepared by each thread that needs it.
class Transliteration {
 public:
  explicit Transliteration(const char* id) {
    UErrorCode status = U_ZERO_ERROR;
    prepared_.reset(icu::Transliterator::createInstance(id, UTRANS_FORWARD, status));
    if (U_FAILURE(status) || !prepared_) {
      throw std::runtime_error(std::string("ICU has no transliteration ") + id);
    }
  }
  std::string operator()(std::string_view text) const {
    auto letters = wide(text);
    prepared_->transliterate(letters);
    return narrow(letters);
  }

 private:
  std::unique_ptr<icu::Transliterator> prepared_;
};

std::string anyLatin(std::string_view text) {
  static thread_local const Transliteration way("Any-Latin");
  return way(text);
}

// The spelling of English maps, which people type rather than the scholars' one.
std::string englishFromCyrillic(std::string_view text) {
  static thread_local const Transliteration way("Russian-Latin/BGN");
  return way(text);
}

std::string modernFromGreek(std::string_view text) {
  static thread_local const Transliteration way("Greek-Latin/UNGEGN");
  return way(text);
}

struct Scripts {
  bool han = false;
  bool kana = false;
  bool cyrillic = false;
  bool greek = false;
  bool other = false;  // any letter that is not Latin, those above too
};

Scripts scriptsIn(const icu::UnicodeString& text) {
  Scripts scripts;
  for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
    const auto character = text.char32At(at);
    if (!u_isalpha(character)) continue;
    UErrorCode status = U_ZERO_ERROR;
    switch (uscript_getScript(character, &status)) {
      case USCRIPT_LATIN:
      case USCRIPT_COMMON:
      case USCRIPT_INHERITED:
        continue;
      case USCRIPT_HAN:
        scripts.han = true;
        break;
      case USCRIPT_HIRAGANA:
      case USCRIPT_KATAKANA:
        scripts.kana = true;
        break;
      case USCRIPT_CYRILLIC:
        scripts.cyrillic = true;
        break;
      case USCRIPT_GREEK:
        scripts.greek = true;
        break;
      default:
        break;
    }
    scripts.other = true;
  }
  return scripts;
}

// The text in small letters with each umlaut as the two letters that stand for it.
icu::UnicodeString withUmlautsSpelled(icu::UnicodeString text) {
  constexpr std::array<std::pair<char16_t, const char16_t*>, 4> kSpelled = {
      {{u'ä', u"ae"}, {u'ö', u"oe"}, {u'ü', u"ue"}, {u'ø', u"oe"}}};
  text.foldCase();
  for (const auto& [letter, letters] : kSpelled) {
    text.findAndReplace(icu::UnicodeString(letter), icu::UnicodeString(letters));
  }
  return text.findAndReplace(icu::UnicodeString(u'å'), icu::UnicodeString(u"aa"));
}

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void addLatin(std::string_view text, const Scripts& scripts, std::vector<std::string>& forms) {
  // Folding and transcribing Han take marks away, and with them the voice of a kana. What is folded
  // is transcribed faster, since it is of plain letters.
  auto latin =
      scripts.han && !scripts.kana ? transcribeToLatin(foldedForSearch(text)) : anyLatin(text);
  if (scriptsIn(wide(latin)).other) latin = anyLatin(latin);
  forms.push_back(foldedForSearch(latin));
  if (scripts.cyrillic) forms.push_back(foldedForSearch(englishFromCyrillic(text)));
  if (scripts.greek) forms.push_back(foldedForSearch(modernFromGreek(text)));
}

// ICU replaces in place, which takes square time. Nobody types more than this in other letters.
std::string_view beginningOf(std::string_view text) {
  constexpr std::size_t kMost = 1000;
  if (text.size() <= kMost) return text;
  auto end = kMost;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end);
}

}  // namespace

std::vector<std::string> searchForms(std::string_view text) {
  std::vector<std::string> forms = {foldedForSearch(text)};
  if (isAscii(text)) return forms;
  const auto beginning = beginningOf(text);
  const auto letters = wide(beginning);
  if (const auto scripts = scriptsIn(letters); scripts.other) addLatin(beginning, scripts, forms);
  const auto spelled = foldedForSearch(narrow(withUmlautsSpelled(letters)));
  // That of a part says nothing new where it is as the text itself begins.
  if (!forms.front().starts_with(spelled)) forms.insert(forms.begin() + 1, spelled);
  std::vector<std::string> distinct;
  for (auto& form : forms) {
    if (std::ranges::find(distinct, form) == distinct.end()) distinct.push_back(std::move(form));
  }
  return distinct;
}

std::string searchFormsVersion() {
  UVersionInfo numbers;
  std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
  u_getVersion(numbers);
  u_versionToString(numbers, text.data());
  auto version = std::string("ICU ") + text.data();
  u_getUnicodeVersion(numbers);
  u_versionToString(numbers, text.data());
  return version + ", Unicode " + text.data();
}

}  // namespace ox
