#pragma once

#include "ox/records/property_bag.hpp"

namespace ox {

// The new multi-value with the old identifiers on every entry that the old one holds too: under the
// same label, else under another. Whoever rewrites a whole list to change one entry thus changes
// that one alone, and what is remembered of the others by identifier stays theirs.
MultiValue withIdentifiersOf(const MultiValue& before, MultiValue now);

// The same for entries with another value: one that stands under the same label behind the same
// neighbour as an old entry that is gone has taken that one's place. Nothing that is remembered of
// the old one is true of it.
MultiValue withIdentifiersOfPlaces(const MultiValue& before, MultiValue now);

}  // namespace ox
