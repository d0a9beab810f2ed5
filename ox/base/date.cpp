#include "ox/base/date.hpp"

#include <array>
#include <cassert>
#include <cstdio>

namespace ox {
namespace {

// Reads a run of exactly `digits` decimal digits from the front of the text.
std::optional<int> takeNumber(std::string_view& text, std::size_t digits) {
  if (text.size() < digits) return std::nullopt;
  int number = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    if (text[i] < '0' || text[i] > '9') return std::nullopt;
    number = number * 10 + (text[i] - '0');
  }
  text.remove_prefix(digits);
  return number;
}

bool takeMark(std::string_view& text, std::string_view mark) {
  if (!text.starts_with(mark)) return false;
  text.remove_prefix(mark.size());
  return true;
}

// "", "Z", "+hh", "+hhmm" or "+hh:mm" up to the end of the text.
bool readOffset(std::string_view text, Date& date) {
  if (text.empty()) return true;
  if (text == "Z" || text == "z") {
    date.utcOffsetMinutes = std::int16_t{0};
    return true;
  }
  const int sign = text.front() == '-' ? -1 : 1;
  if (text.front() != '+' && text.front() != '-') return false;
  text.remove_prefix(1);
  const auto hours = takeNumber(text, 2);
  if (!hours || *hours > 23) return false;
  int minutes = 0;
  if (!text.empty()) {
    takeMark(text, ":");
    const auto read = takeNumber(text, 2);
    if (!read || *read > 59) return false;
    minutes = *read;
  }
  date.utcOffsetMinutes = static_cast<std::int16_t>(sign * (*hours * 60 + minutes));
  return text.empty();
}

// "hh", "hhmm", "hhmmss" with or without colons, then an optional fraction and offset.
bool readTime(std::string_view text, Date& date) {
  const auto hours = takeNumber(text, 2);
  if (!hours || *hours > 23) return false;
  int seconds = *hours * 3600;
  for (const int unit : {60, 1}) {
    auto rest = text;
    takeMark(rest, ":");
    const auto number = takeNumber(rest, 2);
    if (!number) break;
    if (*number > 59 && !(unit == 1 && *number == 60)) return false;
    seconds += *number * unit;
    text = rest;
  }
  if (takeMark(text, ".") || takeMark(text, ",")) {
    if (!takeNumber(text, 1)) return false;
    while (takeNumber(text, 1)) {
    }
  }
  date.secondOfDay = seconds;
  return readOffset(text, date);
}

// The part before "T": year, month and day in any RFC 6350 truncation (section 4.3.1).
bool readCalendarPart(std::string_view text, Date& date) {
  if (text.empty()) return true;
  if (takeMark(text, "---")) {
    const auto day = takeNumber(text, 2);
    if (!day) return false;
    date.day = static_cast<std::uint8_t>(*day);
    return text.empty();
  }
  if (!takeMark(text, "--")) {
    const auto year = takeNumber(text, 4);
    if (!year) return false;
    date.year = static_cast<std::int16_t>(*year);
    if (text.empty()) return true;
    takeMark(text, "-");
  }
  const auto month = takeNumber(text, 2);
  if (!month) return false;
  date.month = static_cast<std::uint8_t>(*month);
  if (text.empty()) return true;
  takeMark(text, "-");
  const auto day = takeNumber(text, 2);
  if (!day) return false;
  date.day = static_cast<std::uint8_t>(*day);
  return text.empty();
}

int daysIn(int month, std::optional<std::int16_t> year) {
  assert(month >= 1 && month <= 12);
  constexpr std::array<int, 12> kDays = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool shortFebruary = year && (*year % 4 != 0 || (*year % 100 == 0 && *year % 400 != 0));
  return month == 2 && shortFebruary ? 28 : kDays[static_cast<std::size_t>(month - 1)];
}

template <typename... Numbers>
void append(std::string& text, const char* format, Numbers... numbers) {
  std::array<char, 40> buffer{};
  std::snprintf(buffer.data(), buffer.size(), format, numbers...);
  text += buffer.data();
}

}  // namespace

bool Date::isValid() const {
  if (year && (*year < 0 || *year > 9999)) return false;
  if (month && (*month < 1 || *month > 12)) return false;
  if (day && (*day < 1 || *day > (month ? daysIn(*month, year) : 31))) return false;
  if (year && day && !month) return false;
  if (secondOfDay && (*secondOfDay < 0 || *secondOfDay > 86400)) return false;
  if (utcOffsetMinutes && (*utcOffsetMinutes <= -1440 || *utcOffsetMinutes >= 1440)) return false;
  return year || month || day || secondOfDay;
}

std::string Date::toText() const {
  std::string text;
  if (year) {
    append(text, "%04d", int{*year});
    if (month) append(text, "-%02d", int{*month});
    if (day) append(text, "-%02d", int{*day});
  } else if (month) {
    append(text, "--%02d", int{*month});
    if (day) append(text, "-%02d", int{*day});
  } else if (day) {
    append(text, "---%02d", int{*day});
  }
  if (!secondOfDay) return text;
  const int leap = *secondOfDay == 86400 ? 1 : 0;  // 23:59:60, not 24:00:00
  const int second = *secondOfDay - leap;
  append(text, "T%02d:%02d:%02d", second / 3600, second / 60 % 60, second % 60 + leap);
  if (!utcOffsetMinutes) return text;
  if (*utcOffsetMinutes == 0) return text + "Z";
  const int minutes = *utcOffsetMinutes < 0 ? -*utcOffsetMinutes : *utcOffsetMinutes;
  append(text, "%c%02d:%02d", *utcOffsetMinutes < 0 ? '-' : '+', minutes / 60, minutes % 60);
  return text;
}

std::optional<Date> Date::fromText(std::string_view text) {
  Date date;
  const auto mark = text.find_first_of("Tt ");
  if (!readCalendarPart(text.substr(0, mark), date)) return std::nullopt;
  if (mark != std::string_view::npos && !readTime(text.substr(mark + 1), date)) return std::nullopt;
  return date.isValid() ? std::optional(date) : std::nullopt;
}

}  // namespace ox
