#pragma once

#include <cstddef>
#include <string>

namespace ox::vcard {

// Something that was repaired, passed over or refused, with the 1-based line of the file.
struct Problem {
  std::size_t line = 0;
  std::string reason;

  bool operator==(const Problem&) const = default;
};

}  // namespace ox::vcard
