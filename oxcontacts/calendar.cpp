#include "oxcontacts/calendar.hpp"

#include <ctime>

namespace ox::program {

using std::chrono::day;
using std::chrono::month;
using std::chrono::year;
using std::chrono::year_month_day;

year_month_day today() {
  const auto now = std::time(nullptr);
  std::tm parts{};
  ::localtime_r(&now, &parts);
  return {year(parts.tm_year + 1900), month(static_cast<unsigned>(parts.tm_mon) + 1),
          day(static_cast<unsigned>(parts.tm_mday))};
}

std::optional<year_month_day> nextReturn(const Date& date, year_month_day from) {
  if (!date.month || !date.day) return std::nullopt;
  for (auto in = from.year();; ++in) {
    year_month_day returns(in, month(*date.month), day(*date.day));
    if (!returns.ok()) {
      const bool isLeapDay = *date.month == 2 && *date.day == 29;
      if (!isLeapDay) return std::nullopt;
      returns = year_month_day(in, month(2), day(28));
    }
    if (returns >= from) return returns;
  }
}

std::string textOf(year_month_day date) {
  Date text;
  text.year = static_cast<std::int16_t>(static_cast<int>(date.year()));
  text.month = static_cast<std::uint8_t>(static_cast<unsigned>(date.month()));
  text.day = static_cast<std::uint8_t>(static_cast<unsigned>(date.day()));
  return text.toText();
}

}  // namespace ox::program
