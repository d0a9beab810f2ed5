#include "ox/vcard/source/charset_findings.hpp"

#include <algorithm>

#include "ox/base/text/charset.hpp"
#include "ox/base/text/utf8.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"

namespace ox::vcard {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::size_t kFirstBlock = 16U << 10U;  // most cards come alone
constexpr std::size_t kBlock = 1U << 20U;
constexpr std::size_t kMostLanguages = 4;

// The value of the parameter in the head of a line, which is given as ";NAME="; empty without one.
std::string_view parameterOf(std::string_view head, std::string_view name) {
  for (auto at = head.find(';'); at != npos; at = head.find(';', at + 1)) {
    if (!startsWithWord(head.substr(at), name)) continue;
    auto value = head.substr(at + name.size());
    value = trimmed(value.substr(0, value.find(';')));
    if (value.size() > 1 && value.front() == '"') value = value.substr(1, value.size() - 2);
    return value;
  }
  return {};
}

bool isPlain(std::string_view charset) {
  return isWord(charset, "UTF-8") || isWord(charset, "UTF8") || isWord(charset, "US-ASCII");
}

bool saysQuoted(std::string_view head) {
  for (auto at = head.find(';'); at != npos; at = head.find(';', at + 1)) {
    if (startsWithWord(head.substr(at), ";QUOTED-PRINTABLE") ||
        startsWithWord(head.substr(at), ";ENCODING=QUOTED-PRINTABLE")) {
      return true;
    }
  }
  return false;
}

// The language that a line names: "zh-TW" as "zh_TW". That of a program counts unless it is
// English, which most programs speak whatever their users do.
std::string languageOf(std::string_view line, std::string_view head) {
  auto language = parameterOf(head, ";LANGUAGE=");
  if (language.empty() && isWord(head, "LANG")) language = trimmed(line.substr(head.size() + 1));
  const bool isProgram = isWord(head, "PRODID") || isWord(head, "SOFTWARE") ||
                         isWord(head, "X-SOFTWARE") || isWord(head, "X-PRODID");
  if (isProgram) {
    const auto mark = line.rfind("//");
    if (mark != npos) language = trimmed(line.substr(mark + 2));
    if (isWord(language, "EN")) return {};
  }
  std::string text(language.substr(0, language.find_first_of("-_")));
  if (text.size() < 2 || text.size() > 3 || !std::ranges::all_of(text, isLetter)) return {};
  std::ranges::transform(text, text.begin(),
                         [](char c) { return static_cast<char>(upper(c) - 'A' + 'a'); });
  const auto territory = language.substr(std::min(text.size() + 1, language.size()));
  if (isWord(territory, "TW") || isWord(territory, "HANT")) return text + "_TW";
  if (isWord(territory, "HK")) return text + "_HK";
  return text;
}

}  // namespace

bool isMostlyUtf8(std::string_view repaired) {
  constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  std::size_t wrong = 0;
  for (auto at = repaired.find(kReplacement); at != npos;
       at = repaired.find(kReplacement, at + 3)) {
    ++wrong;
  }
  const auto leads =
      std::ranges::count_if(repaired, [](char c) { return static_cast<unsigned char>(c) >= 0xC0; });
  return static_cast<std::size_t>(leads) > 2 * wrong;
}

bool CharsetFindings::look(std::string_view line) {
  if (!named.empty()) return false;
  const auto colon = isQuoted_ ? npos : line.find(':');
  const auto head = colon == npos ? std::string_view() : line.substr(0, colon);
  if (!head.empty()) {
    const auto charset = parameterOf(head, ";CHARSET=");
    if (!charset.empty() && !isPlain(charset) && utf8FromCharset("", charset)) {
      named = charset;
      return false;
    }
    auto language = languageOf(line, head);
    if (!language.empty() && languages.size() < kMostLanguages &&
        std::ranges::find(languages, language) == languages.end()) {
      languages.push_back(std::move(language));
    }
  }
  auto value = head.empty() ? line : line.substr(colon + 1);
  std::string decoded;
  if (isQuoted_ || (!head.empty() && saysQuoted(head))) {
    isQuoted_ = value.ends_with('=');
    appendQuotedPrintable(value, decoded);
    value = decoded;
  }
  if (isValidUtf8(value) || isMostlyUtf8(validUtf8(std::string(value)))) return true;
  sample.add(value);
  return true;
}

CharsetFindings findingsOf(const RawCard& card) {
  CharsetFindings findings;
  for (std::size_t i = 0; i < card.lines.size(); ++i) {
    if (!findings.look(card.lineAt(i))) break;
  }
  return findings;
}

// What a block cuts in two is two lines, which tell nearly the same.
CharsetFindings findingsOf(ByteSource& source, std::uint64_t most) {
  CharsetFindings findings;
  std::string block(kFirstBlock, '\0');
  std::uint64_t offset = 0;
  while (offset < most) {
    const auto got = source.peekAt(offset, block.data(), block.size());
    if (got == 0) break;
    auto text = std::string_view(block).substr(0, got);
    while (!text.empty()) {
      const auto stop = std::min(text.find_first_of("\r\n"), text.size());
      if (stop > 0 && !findings.look(text.substr(0, stop))) return findings;
      text.remove_prefix(std::min(stop + 1, text.size()));
    }
    offset += got;
    if (got == block.size()) block.resize(kBlock);
  }
  return findings;
}

}  // namespace ox::vcard
