#pragma once

#include <memory>
#include <string>
#include <utility>

namespace ox {

// Raw bytes. Shared and never changed once made; a null pointer is missing data.
using Data = std::shared_ptr<const std::string>;

inline Data makeData(std::string bytes) {
  return std::make_shared<const std::string>(std::move(bytes));
}

// Equal when both are missing or both hold the same bytes.
inline bool sameData(const Data& a, const Data& b) {
  if (a == b) return true;
  return a && b && *a == *b;
}

}  // namespace ox
