#include "ox/OxAddressBookSDK/general/book_start.hpp"

#include "ox/OxAddressBookSDK/general/book_format.hpp"

namespace ox {

using book_format::kHeader;
static_assert(kHeader.size() <= kBookStartBytes);

BookStart bookStartOf(std::string_view bytes) {
  constexpr auto kAnyVersion = kHeader.substr(0, kHeader.find("\"version\""));
  if (book_format::hasKnownHeader(bytes)) return BookStart::ThisVersion;
  return bytes.starts_with(kAnyVersion) ? BookStart::OtherVersion : BookStart::NoBook;
}

}  // namespace ox
