#pragma once

#include <functional>

#include "ox/OxAddressBookSDK/general/book_sink.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/base/export.hpp"

namespace ox {

// Writes the book as the data that saveDataBlock hands out, but piece by piece and on the calling
// thread: what a book takes in memory does not grow with its pictures. Reports the same percents.
// False, and noticed as a failure, when a value has no place in the data; what the sink throws, and
// any other failure, comes through.
OX_EXPORT bool writeBook(OxMacAddressBook& book, BookSink& sink,
                         const std::function<void(double)>& report);

}  // namespace ox
