#pragma once

#include <memory>

#include "ox/base/text.hpp"

namespace ox {

class OxMacAddressBook;

// The books that were made for single persons, without a discovery (registry/person_book.hpp). Kept
// for the life of the process; safe from any thread.

// Null when none has that ID.
std::shared_ptr<OxMacAddressBook> knownBook(TextView id);
void keepKnownBook(std::shared_ptr<OxMacAddressBook> book);

}  // namespace ox
