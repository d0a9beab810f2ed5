#pragma once

#include <cstdint>
#include <string>

namespace ox::program {

// "1 person", "2 persons".
inline std::string counted(std::uint64_t number, const char* what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

}  // namespace ox::program
