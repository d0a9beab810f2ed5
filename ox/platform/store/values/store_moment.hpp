#pragma once

#include <array>
#include <cstdint>

namespace ox {

// How far a store has come: the number of its last act, and the random name of that act. Equal as
// long as nobody, this process included, commits anything; the number alone may stand for another
// act in a copy that went its own way.
struct StoreMoment {
  std::int64_t number = -1;
  std::array<std::uint8_t, 16> name{};

  bool operator==(const StoreMoment&) const = default;
};

}  // namespace ox
