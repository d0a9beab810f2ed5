#pragma once

#include <string>

namespace ox::program_tests {

// All that the store and its tags hold, row numbers, identifiers, links and pictures included, as
// text to be compared: two that are equal cannot be told apart by any command.
std::string storeContent();
// The same without the tags.
std::string contactsContent();

}  // namespace ox::program_tests
