#include "oxcontacts/output/terminal_text.hpp"

#include <array>
#include <cstdio>

#include "ox/base/text/showing.hpp"

namespace ox::program {
namespace {

constexpr std::string_view kReplacement = "\uFFFD";
constexpr std::string_view kDottedCircle = "\u25CC";
constexpr int kMostMarks = 16;

// Most of most texts: ASCII that shows as it is.
std::size_t plainFront(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && text[at] >= ' ' && text[at] <= '~') ++at;
  return at;
}

std::string shown(std::string_view text, char lineBreak) {
  std::string safe;
  safe.reserve(text.size());
  int marks = -1;  // on the character before; -1 when there is none
  while (!text.empty()) {
    if (const auto plain = plainFront(text); plain > 0) {
      safe += text.substr(0, plain);
      marks = text[plain - 1] == ' ' ? -1 : 0;
      text.remove_prefix(plain);
      continue;
    }
    const auto next = firstShown(text);
    text.remove_prefix(next.bytes.size());
    if (next.showing == Showing::Mark) {
      if (marks < 0) safe += kDottedCircle;
      marks = marks < 0 ? 1 : marks + 1;
      if (marks <= kMostMarks) safe += next.bytes;
      continue;
    }
    marks = next.showing == Showing::LineBreak ? -1 : 0;
    if (next.showing == Showing::AsItIs) {
      safe += next.bytes;
    } else if (next.showing == Showing::LineBreak) {
      safe += lineBreak;
    } else {
      safe += kReplacement;
    }
  }
  return safe;
}

void appendEscape(char32_t character, std::string& json) {
  const auto append = [&](unsigned unit) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\u%04x", unit & 0xFFFFU);
    json += text.data();
  };
  if (character >= 0x10000) {
    append(0xD800U + ((character - 0x10000U) >> 10U));
    append(0xDC00U + ((character - 0x10000U) & 0x3FFU));
  } else {
    append(character);
  }
}

}  // namespace

std::string terminalText(std::string_view text) {
  return shown(text, ' ');
}

std::string terminalLines(std::string_view text) {
  return shown(text, '\n');
}

std::string terminalJson(std::string_view json) {
  std::string safe;
  safe.reserve(json.size());
  int marks = kMostMarks;  // on the character before, so many where it may bear none
  while (!json.empty()) {
    if (const auto plain = plainFront(json); plain > 0) {
      safe += json.substr(0, plain);
      // Neither a blank nor a quotation mark, where a text begins, bears one.
      const char last = json[plain - 1];
      marks = last == ' ' || last == '"' ? kMostMarks : 0;
      json.remove_prefix(plain);
      continue;
    }
    const auto next = firstShown(json);
    json.remove_prefix(next.bytes.size());
    const bool isLayout = next.character == U'\n';  // between values; within one it is escaped
    const bool isMark = next.showing == Showing::Mark;
    if (next.showing == Showing::AsItIs || isLayout || (isMark && marks < kMostMarks)) {
      safe += next.bytes;
    } else {
      appendEscape(next.character, safe);
    }
    marks = isMark ? marks + 1 : isLayout ? kMostMarks : 0;
  }
  return safe;
}

}  // namespace ox::program
