#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// A calendar date of a contact: any of year, month and day may be missing (a birthday without a
// year), and a time of day may follow. A plain value in the proleptic Gregorian calendar.
struct OX_EXPORT Date {
  std::optional<std::int16_t> year;
  std::optional<std::uint8_t> month;  // 1 to 12
  std::optional<std::uint8_t> day;    // 1 to 31, valid in its month (29 February without a year)
  std::optional<std::int32_t> secondOfDay;
  std::optional<std::int16_t> utcOffsetMinutes;  // missing: local ("floating") time

  auto operator<=>(const Date&) const = default;

  // ISO 8601 extended form with RFC 6350 truncation: "1990-05-17", "--05-17", "---17", "1990-05",
  // "1990", and "T10:15:00", "T10:15:00Z" or "T10:15:00+02:00" after it when a time is known.
  std::string toText() const;

  // Reads the forms toText writes and their basic spellings ("19900517", "--0517", "T101500Z").
  // Missing when the text is no date or names a day that does not exist.
  static std::optional<Date> fromText(std::string_view text);

  // False when a part is out of range or the day does not exist in that month and year.
  bool isValid() const;
};

}  // namespace ox
