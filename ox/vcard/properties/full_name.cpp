#include "ox/vcard/properties/full_name.hpp"

#include "ox/base/text/script.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

// Most names start with a Latin letter, and need not be looked at further.
bool isEastAsian(std::string_view text) {
  return !text.empty() && static_cast<unsigned char>(text.front()) >= 0xE0 && isHanKanaHangul(text);
}

bool fitsEastAsian(std::string_view text) {
  return text.empty() || isEastAsian(text);
}

}  // namespace

void composeFullName(const NameParts& parts, std::string& out) {
  out.clear();
  const bool named = !parts.last.empty() || !parts.first.empty() || !parts.middle.empty();
  if (named && fitsEastAsian(parts.last) && fitsEastAsian(parts.middle) &&
      fitsEastAsian(parts.first) && parts.title.empty() && parts.suffix.empty()) {
    out.append(parts.last).append(parts.middle).append(parts.first);
    return;
  }
  for (const auto part : {parts.title, parts.first, parts.middle, parts.last, parts.suffix}) {
    if (part.empty()) continue;
    if (!out.empty()) out += ' ';
    out.append(part);
  }
}

NameParts partsOfFullName(std::string_view full) {
  full = trimmed(full);
  const auto blank = full.find_last_of(" \t");
  if (blank == std::string_view::npos) return {.first = full};
  const auto front = trimmed(full.substr(0, blank));
  const auto back = full.substr(blank + 1);
  if (isEastAsian(front) && isEastAsian(back)) return {.last = front, .first = back};
  return {.last = back, .first = front};
}

}  // namespace ox::vcard
