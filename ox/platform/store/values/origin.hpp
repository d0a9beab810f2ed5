#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ox {

// Who wrote an act.
struct Origin {
  std::string program;
  std::string command;  // what the program was asked to do, in its own words; may be empty
  // All acts of this origin are one command, to be listed and taken back as one.
  bool together = false;
  // The number of the first act of the command that it takes back.
  std::optional<std::int64_t> undoes = std::nullopt;

  bool operator==(const Origin&) const = default;
};

}  // namespace ox
