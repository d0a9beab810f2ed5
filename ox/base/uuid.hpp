#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ox {

using Uuid = std::array<std::uint8_t, 16>;

// A new time-ordered UUID, version 7 (RFC 9562, section 5.7). Strictly rising within the process,
// whatever the clock does. Safe from any thread.
Uuid makeUuid();

// Upper-case canonical form, 36 characters.
std::string uuidText(const Uuid& uuid);

// Reads exactly that form; lower-case letters and anything else are refused.
std::optional<Uuid> uuidFromText(std::string_view text);

// 64 random bits from the system's generator. Safe from any thread.
std::uint64_t randomBits();

}  // namespace ox
