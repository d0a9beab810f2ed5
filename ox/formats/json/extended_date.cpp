#include "ox/formats/json/extended_date.hpp"

#include <algorithm>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::formats {
namespace {

constexpr auto npos = std::string_view::npos;

// True for a text of that form, where 0 stands for a digit.
bool hasForm(std::string_view text, std::string_view form) {
  return text.size() == form.size() &&
         std::equal(text.begin(), text.end(), form.begin(), [](char c, char wanted) {
           return wanted == '0' ? vcard::isDigit(c) : c == wanted;
         });
}

std::string separated(std::string_view text, std::size_t at, char mark) {
  return std::string(text.substr(0, at)).append(1, mark).append(text.substr(at));
}

std::string extendedDate(std::string_view date) {
  if (hasForm(date, "00000000")) return separated(separated(date, 6, '-'), 4, '-');
  if (hasForm(date, "--0000")) return separated(date, 4, '-');
  return std::string(date);
}

std::string extendedClock(std::string_view clock) {
  if (hasForm(clock, "000000")) return separated(separated(clock, 4, ':'), 2, ':');
  if (hasForm(clock, "0000")) return separated(clock, 2, ':');
  if (hasForm(clock, "-0000")) return separated(clock, 3, ':');
  return std::string(clock);
}

// Where the zone of a time begins: its sign stands after a digit, that of a truncated time at the
// front or after another.
std::size_t zoneOf(std::string_view time) {
  for (std::size_t at = 1; at < time.size(); ++at) {
    const char c = time[at];
    if (c == 'Z' || c == 'z') return at;
    if ((c == '+' || c == '-') && vcard::isDigit(time[at - 1])) return at;
  }
  return time.size();
}

}  // namespace

std::string extendedOffset(std::string_view text) {
  const bool isLong = hasForm(text, "+0000") || hasForm(text, "-0000");
  return isLong ? separated(text, 3, ':') : std::string(text);
}

std::string extendedTime(std::string_view text) {
  const auto zone = zoneOf(text);
  return extendedClock(text.substr(0, zone)) + extendedOffset(text.substr(zone));
}

std::string extendedDateTime(std::string_view text) {
  const auto mark = text.find('T');
  auto result = extendedDate(text.substr(0, mark));
  if (mark != npos) result.append(1, 'T').append(extendedTime(text.substr(mark + 1)));
  return result;
}

}  // namespace ox::formats
