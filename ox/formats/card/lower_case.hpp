#pragma once

#include <string>
#include <string_view>

namespace ox::formats {

// Letters of ASCII alone, as the names of properties and columns are compared.
inline std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (auto& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

}  // namespace ox::formats
