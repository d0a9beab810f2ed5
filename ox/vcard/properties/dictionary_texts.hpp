#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "ox/base/object.hpp"
#include "ox/vcard/lines/line_writer.hpp"

namespace ox::vcard {

// The texts of a dictionary under known keys. Borrows the dictionary.
template <std::size_t N>
class DictionaryTexts {
 public:
  DictionaryTexts(const Dictionary& dictionary, const std::array<std::string_view, N>& keys) {
    for (const auto& [key, value] : dictionary.entries()) {
      const auto found = std::find(keys.begin(), keys.end(), key);
      const auto* text = value.text();
      if (found == keys.end() || text == nullptr) {
        isExact_ = false;
      } else {
        texts_[static_cast<std::size_t>(found - keys.begin())] = text;
      }
    }
  }

  // All values are texts under one of the keys.
  bool isExact() const { return isExact_; }
  // All of them read back as they are.
  bool arePlain() const {
    return std::all_of(texts_.begin(), texts_.end(),
                       [](const auto* text) { return text == nullptr || isPlain(*text); });
  }
  bool has(std::size_t key) const { return texts_[key] != nullptr; }
  // By the key's place among the keys; empty when there is none.
  std::string_view operator[](std::size_t key) const {
    return has(key) ? std::string_view(*texts_[key]) : std::string_view();
  }

 private:
  std::array<const std::string*, N> texts_{};
  bool isExact_ = true;
};

}  // namespace ox::vcard
