#pragma once

#include <vector>

#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox {

class ABRecord;

// The questions that several walks ask of the container database.

// The first container that holds the person or group; null when none is known.
CNContainerPtr containerOf(CNContactStore& store, const ABRecord& record);
// With identifiers only.
std::vector<CNContactPtr> contactsIn(CNContactStore& store, const CNContainer& container);

}  // namespace ox
