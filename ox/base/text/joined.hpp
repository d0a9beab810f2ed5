#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace ox {

// The texts that are not empty, with the mark between them.
template <typename Texts>
std::string joined(const Texts& texts, std::string_view mark) {
  std::string all;
  for (const std::string_view text : texts) {
    if (text.empty()) continue;
    if (!all.empty()) all += mark;
    all += text;
  }
  return all;
}

inline std::string joined(std::initializer_list<std::string_view> texts, std::string_view mark) {
  return joined<std::initializer_list<std::string_view>>(texts, mark);
}

}  // namespace ox
