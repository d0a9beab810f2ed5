#include "ox/OxAddressBookSDK/general/book_format.hpp"

#include "ox/base/checksum.hpp"

namespace ox::book_format {

bool hasKnownHeader(std::string_view file) {
  return file.starts_with(kHeader) || file.starts_with(kHeaderWithFiles);
}

std::string trailer(std::string_view body, std::size_t groups, std::size_t persons) {
  return "{\"groups\":" + std::to_string(groups) + ",\"persons\":" + std::to_string(persons) +
         trailerEnd(body);
}

std::string trailerEnd(std::string_view body) {
  return R"(,"checksum":")" + checksum128(body) + "\"}\n";
}

}  // namespace ox::book_format
