#pragma once

#include <vector>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "oxcontacts/edit/assignment.hpp"

namespace ox::program {

// Changes the person, in memory until the save; what the store refuses is noticed. Without label or
// "+", the whole property; with a label, the entries of that label; a part of an address, the entry
// of that label or the main one. A person that had a main value, or no value, has a main value
// afterwards.
void applyAssignments(const std::vector<Assignment>& assignments, _ABPerson& person);

}  // namespace ox::program
