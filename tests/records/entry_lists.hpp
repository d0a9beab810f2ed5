#pragma once

#include <sstream>
#include <string>

#include "ox/records/property_bag.hpp"

namespace ox::testing {

// Multi-values as text: "a:1/home b:2*" holds the value 1 labelled home under the identifier 'a'
// and the value 2, which is primary, without a label under the identifier 'b'.
inline MultiValue entryList(const std::string& text) {
  MultiValue values;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    MultiEntry entry;
    entry.identifier = static_cast<unsigned char>(word.front());
    if (word.back() == '*') {
      values.primary = entry.identifier;
      word.pop_back();
    }
    if (const auto slash = word.find('/'); slash != std::string::npos) {
      entry.label = word.substr(slash + 1);
      word.resize(slash);
    }
    entry.value = word.substr(2);
    values.entries.push_back(std::move(entry));
  }
  return values;
}

inline std::string textOf(const std::vector<MultiEntry>& entries, std::uint64_t primary = 0) {
  std::string text;
  for (const auto& entry : entries) {
    if (!text.empty()) text += ' ';
    text += static_cast<char>(entry.identifier);
    text += ":" + entry.value.toText().value_or("?");
    if (entry.label) text += "/" + *entry.label;
    if (primary != 0 && entry.identifier == primary) text += '*';
  }
  return text;
}

inline std::string textOf(const MultiValue& values) {
  return textOf(values.entries, values.primary);
}

}  // namespace ox::testing
