#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// A number for a text, for tables whose keys come from outside: each process has other ones, so
// nobody can choose texts that share a place. Safe from any thread.
OX_EXPORT std::uint64_t keyedHash(std::string_view text);

// The same as a hash table wants it.
struct KeyedHash {
  std::size_t operator()(std::string_view text) const { return keyedHash(text); }
};

}  // namespace ox
