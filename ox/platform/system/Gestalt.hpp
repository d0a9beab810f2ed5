#pragma once

#include <cstdint>

namespace ox {

// A request code from its four characters.
constexpr std::uint32_t fourCharacterCode(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i) code = (code << 8U) | static_cast<std::uint8_t>(text[i]);
  return code;
}

inline constexpr std::uint32_t gestaltSystemVersionMajor = fourCharacterCode("sys1");
inline constexpr std::uint32_t gestaltSystemVersionMinor = fourCharacterCode("sys2");

// Writes that number of the system version and answers 0. The version is 10.15 unless
// $OX_SYSTEM_VERSION ("major.minor", decimal) says otherwise; it is read on each call, and an empty
// one counts as unset. Another request code, a null response or a malformed version gives a result
// other than 0 and leaves the response alone. Safe from any thread.
std::int32_t Gestalt(std::uint32_t selector, std::int32_t* response);

}  // namespace ox
