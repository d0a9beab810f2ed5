#pragma once

#include <functional>

#include "ox/OxAddressBookSDK/general/book_sink.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/base/export.hpp"

namespace ox {

// Writes the book as the data that saveDataBlock hands out, on the calling thread and piece by
// piece, so that neither its records nor its pictures are in memory together; but for a book that
// lists a record twice, which comes as one piece. The progress, which may be empty, gets the same
// percents. False, and noticed as a failure, when a value has no place in the data; what the sink
// throws, and any other failure, comes through.
OX_EXPORT bool writeBook(OxMacAddressBook& book, BookSink& sink,
                         const std::function<void(double)>& progress);

}  // namespace ox
