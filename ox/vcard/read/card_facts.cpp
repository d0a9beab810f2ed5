#include "ox/vcard/read/card_facts.hpp"

#include <string>

#include "ox/vcard/lines/markers.hpp"

namespace ox::vcard {
namespace {

constexpr auto npos = std::string_view::npos;

std::string_view versionOf(std::string_view line) {
  const auto colon = line.find(':');
  if (colon == npos || !isWord(trimmed(line.substr(0, colon)), "VERSION")) return {};
  return trimmed(line.substr(colon + 1));
}

bool saysGroup(std::string_view line) {
  if (!startsWithWord(line, "KIND") && !startsWithWord(line, "X-ADDRESSBOOKSERVER-K")) return false;
  const auto colon = line.find(':');
  if (colon == npos) return false;
  const auto name = trimmed(line.substr(0, line.find(';')).substr(0, colon));
  return (isWord(name, "KIND") || isWord(name, "X-ADDRESSBOOKSERVER-KIND")) &&
         isWord(trimmed(line.substr(colon + 1)), "GROUP");
}

// False for most lines: those that tell something start with one of these letters.
bool mayTell(std::string_view line) {
  if (line.empty()) return false;
  switch (upper(line.front())) {
    case 'A':
    case 'B':
    case 'E':
    case 'K':
    case 'V':
    case 'X':
      return true;
    default:
      return false;
  }
}

// The line that starts there, unfolded as far as a short property needs.
std::string_view unfolded(const RawCard& card, std::size_t index, std::string& buffer) {
  constexpr std::size_t kEnough = 128;
  const auto line = card.lineAt(index);
  if (line.size() > kEnough || !card.isContinued(index)) return line;
  buffer.assign(line);
  while (buffer.size() <= kEnough && card.isContinued(index)) {
    buffer.append(card.lineAt(++index).substr(1));
  }
  return buffer;
}

// Bare words as parameters, and quoted-printable, are the mark of vCard 2.1.
bool looksLike21(const RawCard& card) {
  ContentLine line;
  for (std::size_t i = 0; i < card.lines.size(); ++i) {
    if (parseHead(card.lineAt(i), line) == npos) continue;
    if (line.encoding == Encoding::QuotedPrintable) return true;
    for (const auto& parameter : line.parameters) {
      if (parameter.name.empty()) return true;
    }
  }
  return false;
}

}  // namespace

CardFacts factsOf(const RawCard& card) {
  CardFacts facts;
  std::size_t depth = 0;
  std::string buffer;
  for (std::size_t i = 0; i < card.lines.size(); ++i) {
    const auto line = card.lineAt(i);
    if (!mayTell(line)) continue;
    const char first = upper(line.front());
    if (first == 'B' && isBegin(line)) ++depth;
    if (first == 'A' && startsWithWord(line, "AGENT") && isBegin(line.substr(line.find(':') + 1))) {
      ++depth;
    }
    if (first == 'E' && depth > 0 && isEnd(line)) --depth;
    if (depth > 0) continue;
    if (first == 'V' && !facts.hasVersion) {
      const auto version = versionOf(line);
      facts.hasVersion = !version.empty();
      if (version == "2.1") facts.dialect = Dialect::V21;
      facts.is40 = version == "4.0";
    }
    if (first != 'K' && first != 'X') continue;
    if (saysGroup(unfolded(card, i, buffer))) facts.isGroup = true;
  }
  if (!facts.hasVersion && looksLike21(card)) facts.dialect = Dialect::V21;
  return facts;
}

}  // namespace ox::vcard
