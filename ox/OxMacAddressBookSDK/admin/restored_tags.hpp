#pragma once

#include <string>
#include <vector>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/base/export.hpp"
#include "ox/base/record_key.hpp"

namespace ox {

// Of each person of a book, in order.
using TagLists = std::vector<std::vector<std::string>>;

// What a load into the book leaves to do: it keeps the tags of the persons that it removed, and a
// book that held no record when the books were discovered is not among those that its new persons
// find their tags through. `loaded` are the tags of those that were loaded. To be called in the
// act of the load or after it, when it had no failures, before the book's persons change again.
OX_EXPORT void settleRestoredTags(OxMacAddressBook& book, const std::vector<RecordKey>& removed,
                                  const TagLists& loaded);

}  // namespace ox
