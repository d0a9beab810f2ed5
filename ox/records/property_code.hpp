#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

// The marks of the form that property_codec.hpp describes, for its two directions.

namespace ox::property_code {

static_assert(std::endian::native == std::endian::little, "the stored form is little endian");

inline constexpr std::uint8_t kVersion = 1;
inline constexpr std::size_t kChecksumSize = 8;

enum class Tag : std::uint8_t {
  String = 1,
  Integer = 2,
  Real = 3,
  Date = 4,
  Data = 5,
  Array = 6,
  Dictionary = 7,
  Missing = 8,
  Multi = 16,
};

// Which parts of a date are present, as bits.
inline constexpr std::uint8_t kHasYear = 1;
inline constexpr std::uint8_t kHasMonth = 2;
inline constexpr std::uint8_t kHasDay = 4;
inline constexpr std::uint8_t kHasTime = 8;
inline constexpr std::uint8_t kHasOffset = 16;

}  // namespace ox::property_code
