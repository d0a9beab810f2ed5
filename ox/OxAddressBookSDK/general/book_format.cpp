#include "ox/OxAddressBookSDK/general/book_format.hpp"

#include "ox/base/checksum.hpp"

namespace ox::book_format {
namespace {

std::string endOf(std::string_view checksum) {
  return std::string(R"(,"checksum":")").append(checksum).append("\"}\n");
}

}  // namespace

bool hasKnownHeader(std::string_view file) {
  return file.starts_with(kHeader) || file.starts_with(kHeaderWithFiles);
}

std::string trailer(std::string_view body, std::size_t groups, std::size_t persons) {
  return trailerOf(checksum128(body), groups, persons);
}

std::string trailerOf(std::string_view checksum, std::size_t groups, std::size_t persons) {
  return "{\"groups\":" + std::to_string(groups) + ",\"persons\":" + std::to_string(persons) +
         endOf(checksum);
}

std::string trailerEnd(std::string_view body) {
  return endOf(checksum128(body));
}

}  // namespace ox::book_format
