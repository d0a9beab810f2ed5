#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// What the first bytes of a file say of it, before a whole one is read.
enum class BookStart : std::uint8_t {
  ThisVersion,   // a neutral book that OxAddressBookGeneral reads, if the rest is whole
  OtherVersion,  // a neutral book that only another version can read
  NoBook,
};

// How many bytes it takes.
inline constexpr std::size_t kBookStartBytes = 64;

// Of the first kBookStartBytes of a file, or of all where there are fewer.
OX_EXPORT BookStart bookStartOf(std::string_view bytes);

}  // namespace ox
