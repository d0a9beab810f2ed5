#pragma once

#include <cstddef>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// How many columns a terminal shows the text in: 2 for wide and full-width characters and for
// emoji, 0 for combining marks and format characters; an emoji sequence counts as one emoji
// (Unicode standard annex 11, technical standard 51).
OX_EXPORT std::size_t displayWidth(std::string_view text);

// The length in bytes of the longest front of the text that is at most so many columns wide and
// does not end inside a sequence.
OX_EXPORT std::size_t frontOfWidth(std::string_view text, std::size_t columns);

}  // namespace ox
