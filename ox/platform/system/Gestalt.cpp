#include "ox/platform/system/Gestalt.hpp"

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace ox {
namespace {

constexpr std::int32_t kDone = 0;
constexpr std::int32_t kUnknownVersion = -5550;
constexpr std::int32_t kUnknownSelector = -5551;

struct Version {
  std::int32_t major;
  std::int32_t minor;
};

constexpr Version kBuiltIn = {10, 15};

// Digits alone: no sign, no blank.
std::optional<std::int32_t> decimal(std::string_view text) {
  std::int32_t number = 0;
  if (text.empty() || text.front() == '-') return std::nullopt;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<Version> systemVersion() {
  const char* value = std::getenv("OX_SYSTEM_VERSION");
  if (value == nullptr || *value == '\0') return kBuiltIn;
  const std::string_view text(value);
  const auto point = text.find('.');
  if (point == std::string_view::npos) return std::nullopt;
  const auto major = decimal(text.substr(0, point));
  const auto minor = decimal(text.substr(point + 1));
  if (!major || !minor) return std::nullopt;
  return Version{*major, *minor};
}

}  // namespace

std::int32_t Gestalt(std::uint32_t selector, std::int32_t* response) {
  const bool major = selector == gestaltSystemVersionMajor;
  if (response == nullptr || (!major && selector != gestaltSystemVersionMinor)) {
    return kUnknownSelector;
  }
  const auto version = systemVersion();
  if (!version) return kUnknownVersion;
  *response = major ? version->major : version->minor;
  return kDone;
}

}  // namespace ox
