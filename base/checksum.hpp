#pragma once

#include <cstdint>
#include <string_view>

namespace ox {

// XXH3, 64 bits: tells accidental damage, not malice. The same bytes give the same number on every
// machine.
std::uint64_t checksum64(std::string_view bytes);

}  // namespace ox
