#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {

// Finds rows of a constant table by their `name`, which is in upper case and not empty, for names
// in any case. Made at compile time; borrows the rows.
template <typename Row, std::size_t Count>
class NameTable {
 public:
  constexpr explicit NameTable(const std::array<Row, Count>& rows) : rows_(rows) {
    slots_.fill(kFree);
    for (std::size_t row = 0; row < Count; ++row) {
      auto slot = slotOf(rows[row].name);
      while (slots_[slot] != kFree) slot = (slot + 1) % kSlots;
      slots_[slot] = static_cast<std::uint8_t>(row);
    }
  }

  // Null when no row has that name.
  constexpr const Row* find(std::string_view name) const {
    if (name.empty()) return nullptr;
    for (auto slot = slotOf(name); slots_[slot] != kFree; slot = (slot + 1) % kSlots) {
      const auto& row = rows_[slots_[slot]];
      if (isWord(name, row.name)) return &row;
    }
    return nullptr;
  }

 private:
  static constexpr std::uint8_t kFree = std::numeric_limits<std::uint8_t>::max();
  static_assert(Count < kFree);
  static constexpr std::size_t kSlots = std::bit_ceil(Count * 4);

  static constexpr std::size_t slotOf(std::string_view name) {
    const auto at = [&](std::size_t i) { return static_cast<std::size_t>(upper(name[i])); };
    const std::size_t mixed =
        name.size() * 7 + at(0) * 31 + at(name.size() / 2) * 17 + at(name.size() - 1) * 5;
    return mixed % kSlots;
  }

  const std::array<Row, Count>& rows_;
  std::array<std::uint8_t, kSlots> slots_{};
};

}  // namespace ox::vcard
