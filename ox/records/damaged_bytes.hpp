#pragma once

#include <stdexcept>

#include "ox/base/export.hpp"

namespace ox {

// Stored bytes are not what was encoded: their checksum differs, or they break off.
class OX_EXPORT DamagedBytes : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace ox
