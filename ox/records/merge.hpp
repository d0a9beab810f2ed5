#pragma once

#include <string>
#include <vector>

#include "ox/records/property_bag.hpp"

namespace ox {

// What two sides that set out from the same base have made of it, brought together. Mine is the
// side that asks and decides; theirs stands already. What only one side has changed is as that side
// has it, so a side that changed nothing gives the other one unchanged.

// By the identifiers of the entries; one that took the place of an old one (entry_identity.hpp)
// counts as that one, changed. Additions and removals of both sides stand; of additions that
// are equal in label and value one stands, under the identifier it has there. An entry that both
// sides have changed is as mine has it, and so is one that one side has changed and the other one
// removed. Entries are in theirs' order, or in mine when only mine has moved any; those that only
// the other side has follow the neighbour they have there. Appends to `overtaken` what mine won
// over: entries as theirs has them, or as they were when theirs removed them.
MultiValue mergedEntries(const MultiValue& base, const MultiValue& mine, const MultiValue& theirs,
                         std::vector<MultiEntry>& overtaken);

// The same for whatever a property holds; a missing multi-value counts as an empty one. One object
// that both sides have changed is as mine has it, and theirs is appended without identifier and
// label, a missing one too.
PropertyValue mergedValue(const PropertyValue& base, const PropertyValue& mine,
                          const PropertyValue& theirs, std::vector<MultiEntry>& overtaken);

// The same for tags, which are what they say: one that a list holds twice counts once.
std::vector<std::string> mergedTags(const std::vector<std::string>& base,
                                    const std::vector<std::string>& mine,
                                    const std::vector<std::string>& theirs);

}  // namespace ox
