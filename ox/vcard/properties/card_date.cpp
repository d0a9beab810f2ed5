#include "ox/vcard/properties/card_date.hpp"

#include <array>
#include <cstddef>
#include <string>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

// What programs write where they cannot leave the year out.
constexpr std::int16_t kNoYear = 1604;

constexpr std::array<std::string_view, 12> kMonths = {
    "JANUARY", "FEBRUARY", "MARCH",     "APRIL",   "MAY",      "JUNE",
    "JULY",    "AUGUST",   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};

// A date in three parts: what stands between them, and the parts in order.
struct ThreeParts {
  std::array<std::string_view, 3> parts;
  char separator = ' ';
};

// Splits at '/', '.', '-' or blanks and commas; missing when there are not exactly three parts or
// two kinds of separators.
std::optional<ThreeParts> threeParts(std::string_view text) {
  ThreeParts result;
  const auto mark = text.find_first_of("/.-, ");
  if (mark == std::string_view::npos) return std::nullopt;
  const bool spaced = text[mark] == ' ' || text[mark] == ',' || text.find(' ') != text.npos;
  const std::string_view separators =
      spaced ? ", ." : std::string_view("/.-").substr(std::string_view("/.-").find(text[mark]), 1);
  if (!spaced) result.separator = text[mark];
  std::size_t count = 0;
  while (!text.empty()) {
    const auto start = text.find_first_not_of(separators);
    if (start == std::string_view::npos) break;
    if (count == 3) return std::nullopt;
    const auto stop = text.find_first_of(separators, start);
    result.parts[count++] = text.substr(start, stop - start);
    text = stop == std::string_view::npos ? std::string_view() : text.substr(stop);
  }
  return count == 3 ? std::optional(result) : std::nullopt;
}

// A number of at most four digits; -1 for anything else.
int number(std::string_view text) {
  if (text.empty() || text.size() > 4) return -1;
  int value = 0;
  for (const char c : text) {
    if (!isDigit(c)) return -1;
    value = value * 10 + (c - '0');
  }
  return value;
}

// The month of an English name or its first three letters; 0 for anything else.
int monthNamed(std::string_view text) {
  for (std::size_t i = 0; i < kMonths.size(); ++i) {
    const bool whole = isWord(text, kMonths[i]);
    if (whole || isWord(text, kMonths[i].substr(0, 3))) return static_cast<int>(i) + 1;
  }
  return 0;
}

std::optional<Date> dateOf(int year, int month, int day) {
  if (year < 1000 || month < 1 || month > 12 || day < 1 || day > 31) return std::nullopt;
  Date date;
  date.year = static_cast<std::int16_t>(year);
  date.month = static_cast<std::uint8_t>(month);
  date.day = static_cast<std::uint8_t>(day);
  return date.isValid() ? std::optional(date) : std::nullopt;
}

std::optional<Date> readWithMonthName(const ThreeParts& text) {
  const auto& [a, b, c] = text.parts;
  if (monthNamed(a) > 0) return dateOf(number(c), monthNamed(a), number(b));
  if (monthNamed(b) == 0) return std::nullopt;
  return a.size() == 4 ? dateOf(number(a), monthNamed(b), number(c))
                       : dateOf(number(c), monthNamed(b), number(a));
}

std::optional<Date> readUnusual(std::string_view text) {
  const auto split = threeParts(text);
  if (!split) return std::nullopt;
  if (auto named = readWithMonthName(*split)) return named;
  const auto& parts = split->parts;
  const std::array<int, 3> values = {number(parts[0]), number(parts[1]), number(parts[2])};
  if (parts[0].size() == 4) return dateOf(values[0], values[1], values[2]);
  if (parts[2].size() != 4) return std::nullopt;
  if (split->separator == '.') return dateOf(values[2], values[1], values[0]);
  const auto dayFirst = dateOf(values[2], values[1], values[0]);
  const auto monthFirst = dateOf(values[2], values[0], values[1]);
  if (dayFirst && monthFirst && *dayFirst != *monthFirst) return std::nullopt;
  return dayFirst ? dayFirst : monthFirst;
}

void appendDigits(int number, int count, std::string& text) {
  std::array<char, 4> digits{};
  for (int i = count - 1; i >= 0; --i, number /= 10) {
    digits[static_cast<std::size_t>(i)] = static_cast<char>('0' + number % 10);
  }
  text.append(digits.data(), static_cast<std::size_t>(count));
}

// RFC 6350, section 4.3.1: the basic form, but for year and month, which would be taken for a day.
void appendTruncated(const Date& date, std::string& text) {
  if (date.year) {
    appendDigits(*date.year, 4, text);
  } else if (date.month || date.day) {
    text += "--";
  }
  if (date.month) {
    if (date.year && !date.day) text += '-';
    appendDigits(*date.month, 2, text);
  } else if (!date.year && date.day) {
    text += '-';
  }
  if (date.day) appendDigits(*date.day, 2, text);
}

void appendTime(const Date& date, std::string_view separator, std::string& text) {
  const int leap = *date.secondOfDay == 86400 ? 1 : 0;  // 23:59:60, not 24:00:00
  const int second = *date.secondOfDay - leap;
  appendDigits(second / 3600, 2, text += 'T');
  appendDigits(second / 60 % 60, 2, text += separator);
  appendDigits(second % 60 + leap, 2, text += separator);
  if (!date.utcOffsetMinutes) return;
  const int offset = *date.utcOffsetMinutes;
  if (offset == 0) {
    text += 'Z';
    return;
  }
  text += offset < 0 ? '-' : '+';
  const int minutes = offset < 0 ? -offset : offset;
  appendDigits(minutes / 60, 2, text);
  appendDigits(minutes % 60, 2, text += separator);
}

}  // namespace

std::optional<WrittenDate> writeCardDate(const Date& date, CardVersion version) {
  const bool truncated = version == CardVersion::V40;
  if (!date.isValid()) return std::nullopt;
  WrittenDate written;
  const bool wholeDay = date.month && date.day;
  written.isExact =
      (date.secondOfDay || !date.utcOffsetMinutes) && (date.year != kNoYear || !date.month);
  if (!truncated) {
    if (!wholeDay) return std::nullopt;
    written.omitsYear = !date.year;
    appendDigits(date.year.value_or(kNoYear), 4, written.text);
    appendDigits(*date.month, 2, written.text += '-');
    appendDigits(*date.day, 2, written.text += '-');
  } else {
    appendTruncated(date, written.text);
    if (date.secondOfDay && !written.text.empty() && !date.day) {
      written.isExact = false;
      return written;
    }
  }
  if (date.secondOfDay) appendTime(date, truncated ? "" : ":", written.text);
  return written;
}

std::optional<CardDate> readCardDate(std::string_view text, std::string_view omittedYear) {
  text = trimmed(text);
  auto date = Date::fromText(text);
  const bool isUnusual = !date;
  if (!date) date = readUnusual(text);
  if (!date) return std::nullopt;
  if (date->year && (*date->year == kNoYear || *date->year == number(omittedYear)) && date->month) {
    date->year = std::nullopt;
  }
  return CardDate{*date, isUnusual};
}

}  // namespace ox::vcard
