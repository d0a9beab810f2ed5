#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

namespace ox::faults {

// What happens to files on disks that age, and to files that were copied badly.
struct Damage {
  enum class Kind : std::uint8_t {
    FlippedBit,
    ZeroedSector,
    NoisySector,
    ZeroedPage,
    NoisyPage,
    Truncated,
    SwappedPages,
    DuplicatedPage,
    FirstPageGone,
  };
  static constexpr int kKinds = 9;

  Kind kind;
  std::string text;  // what was done, and where
};

// A file whose first bytes make no page, as those of a log.
struct Pages {
  std::size_t start = 0;
  std::size_t bytes = 4096;
};

// Damages the file's bytes in the way of that kind, at a place of chance. They differ afterwards.
Damage damage(std::string& bytes, Damage::Kind kind, Pages pages, std::mt19937_64& chance);

// How many damages of each file are tried: the environment asks for more (OX_DAMAGES).
int damagesOr(int usual);

}  // namespace ox::faults
