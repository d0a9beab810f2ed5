#pragma once

#include <string>
#include <string_view>

// The letters of ASCII alone, as names of properties, columns and countries are compared and
// written: no locale takes part.

namespace ox {

inline std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (auto& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

inline std::string upperCase(std::string_view text) {
  std::string upper(text);
  for (auto& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

}  // namespace ox
