#pragma once

#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// True when both texts are equal after Unicode full case folding ("Straße" equals "STRASSE"). The
// comparison is literal otherwise: nothing is normalised, so a letter with an accent and the same
// letter followed by a combining accent differ. No locale takes part.
OX_EXPORT bool equalsIgnoringCase(std::string_view a, std::string_view b);

// The text as a search compares it: case-folded, every combining mark stripped, letters of full
// width and ligatures as plain ones, and letters such as ø, ł, đ, ı and æ as those that are typed
// for them (o, l, d, i, ae); composed (NFC). Two texts that differ only in case and accents give
// the same result.
OX_EXPORT std::string foldedForSearch(std::string_view text);

}  // namespace ox
