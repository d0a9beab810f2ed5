#include "ox/sync/http/retry_after.hpp"

#include <algorithm>
#include <charconv>
#include <curl/curl.h>
#include <system_error>

namespace ox::sync {
namespace {

constexpr std::int64_t kLeast = 1;
constexpr std::int64_t kMost = std::int64_t{24} * 60 * 60;

bool isNumber(const std::string& text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::int64_t numberOf(const std::string& digits) {
  std::int64_t number = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return read.ec == std::errc() ? number : kMost;
}

// Missing for what is no date.
std::optional<std::int64_t> secondsOf(const std::string* date) {
  if (date == nullptr) return {};
  const auto seconds = curl_getdate(date->c_str(), nullptr);
  if (seconds < 0) return {};
  return static_cast<std::int64_t>(seconds);
}

}  // namespace

std::optional<std::chrono::seconds> askedPause(const std::string* retryAfter,
                                               const std::string* date, std::int64_t now) {
  if (retryAfter == nullptr) return {};
  std::int64_t pause = 0;
  if (isNumber(*retryAfter)) {
    pause = numberOf(*retryAfter);
  } else {
    const auto until = secondsOf(retryAfter);
    if (!until) return {};
    pause = *until - secondsOf(date).value_or(now / 1000);
  }
  return std::chrono::seconds(std::clamp(pause, kLeast, kMost));
}

}  // namespace ox::sync
