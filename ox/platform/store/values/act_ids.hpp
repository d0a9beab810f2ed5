#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace ox {

// Names a whole act that runs in this process; an unsaved change belongs to one, or to nobody's.
using ActId = std::uint32_t;
inline constexpr ActId kNobodysAct = 0;

// A handful: an act and what became part of it.
using ActIds = std::vector<ActId>;

inline bool isAmong(const ActIds& acts, ActId act) {
  return std::find(acts.begin(), acts.end(), act) != acts.end();
}

}  // namespace ox
