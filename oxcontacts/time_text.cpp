#include "oxcontacts/time_text.hpp"

#include <array>
#include <ctime>

#include "oxcontacts/context.hpp"

namespace ox::program {
namespace {

std::string textOf(const std::tm& parts, const char* format) {
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), format, &parts);
  return text.data();
}

struct Form {
  const char* format;
  int seconds;  // how long what it names takes
};

constexpr std::array kForms = {
    Form{"%Y-%m-%d", 24 * 60 * 60}, Form{"%Y-%m-%d %H:%M", 60},   Form{"%Y-%m-%dT%H:%M", 60},
    Form{"%Y-%m-%d %H:%M:%S", 1},   Form{"%Y-%m-%dT%H:%M:%S", 1},
};

bool isInCalendar(std::tm parts) {
  const auto day = parts.tm_mday;
  const auto month = parts.tm_mon;
  ::timegm(&parts);
  return parts.tm_mday == day && parts.tm_mon == month;
}

}  // namespace

std::string utcTime(std::int64_t milliseconds) {
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  return textOf(parts, "%Y-%m-%dT%H:%M:%SZ");
}

std::string localTime(std::int64_t milliseconds) {
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts{};
  ::localtime_r(&seconds, &parts);
  return textOf(parts, "%Y-%m-%d %H:%M:%S");
}

std::int64_t endOfTime(const std::string& text) {
  const bool isUtc = text.ends_with('Z');
  const auto words = isUtc ? text.substr(0, text.size() - 1) : text;
  for (const auto& form : kForms) {
    std::tm parts{};
    parts.tm_isdst = -1;
    const char* end = ::strptime(words.c_str(), form.format, &parts);
    if (end == nullptr || *end != '\0' || !isInCalendar(parts)) continue;
    const auto start = isUtc ? ::timegm(&parts) : ::mktime(&parts);
    return (static_cast<std::int64_t>(start) + form.seconds) * 1000 - 1;
  }
  throw CommandError(kUsage, "\"" + text +
                                 "\" is no time: write 2026-12-31, 2026-12-31 23:59 or "
                                 "2026-12-31T23:59:59Z");
}

}  // namespace ox::program
