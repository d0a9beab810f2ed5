#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

// What writing and reading the file form of the neutral book have in common; docs/neutral-book.md
// describes the form.

namespace ox::book_format {

// The first line: of a book that holds pictures as files, and of any other, which earlier programs
// can read. A file that begins otherwise is of another kind or of another version.
inline constexpr std::string_view kHeader = "{\"format\":\"OxAddressBookGeneral\",\"version\":1}\n";
inline constexpr std::string_view kHeaderWithFiles =
    "{\"format\":\"OxAddressBookGeneral\",\"version\":2}\n";
static_assert(kHeader.size() == kHeaderWithFiles.size());

// Arrays and dictionaries in one another, inside of one value.
inline constexpr std::size_t kMaxNesting = 32;
// Entries of one dictionary, and properties of one person: adding one looks through the others.
inline constexpr std::size_t kMaxEntries = 10'000;
// Around a value stand at most five containers, and each dictionary brings two.
inline constexpr std::size_t kMaxJsonDepth = 5 + 2 * kMaxNesting + 1;

// The pictures of one value are limited together: see kMaxPackedPixels.
inline constexpr const char* kTooManyPixels = "pictures of more than 64 M pixels in one value";

// How the value objects and the kinds that JSON lacks are named in the file.
namespace kind {
inline constexpr std::string_view kAddress = "address";
inline constexpr std::string_view kData = "data";
inline constexpr std::string_view kDate = "date";
inline constexpr std::string_view kDictionary = "dictionary";
inline constexpr std::string_view kEmail = "email";
inline constexpr std::string_view kImage = "image";
inline constexpr std::string_view kInstantMessage = "instantMessage";
inline constexpr std::string_view kPersonName = "personName";
inline constexpr std::string_view kPhone = "phone";
inline constexpr std::string_view kReal = "real";  // only what is not finite
}  // namespace kind

// A book that holds what the file form has no room for.
struct Unwritable : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A file that is no neutral book, or not one of this version.
struct Unreadable : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// True for a file that is read.
bool hasKnownHeader(std::string_view file);

// The last line of a file whose other lines are `body`.
std::string trailer(std::string_view body, std::size_t groups, std::size_t persons);
// The same of lines with that checksum.
std::string trailerOf(std::string_view checksum, std::size_t groups, std::size_t persons);
// What the trailer of `body` ends with, whatever it counts.
std::string trailerEnd(std::string_view body);

}  // namespace ox::book_format
