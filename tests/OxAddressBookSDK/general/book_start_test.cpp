#include "ox/OxAddressBookSDK/general/book_start.hpp"

#include <gtest/gtest.h>
#include <vector>

namespace ox {
namespace {

TEST(BookStart, TellsABookOfThisVersionFromAnyOtherFile) {
  struct Row {
    std::string_view bytes;
    BookStart start;
  };
  const std::string_view header = "{\"format\":\"OxAddressBookGeneral\",\"version\":1}\n";
  const std::vector<Row> rows = {
      {header, BookStart::ThisVersion},
      {"{\"format\":\"OxAddressBookGeneral\",\"version\":1}\n{\"group\"", BookStart::ThisVersion},
      {"{\"format\":\"OxAddressBookGeneral\",\"version\":2}\n", BookStart::ThisVersion},
      {"{\"format\":\"OxAddressBookGeneral\",\"version\":3}\n", BookStart::OtherVersion},
      {header.substr(0, header.size() - 1), BookStart::OtherVersion},
      {R"({"format":"OxAddressBookGeneral",)", BookStart::OtherVersion},
      {"{\"format\":\"Other\",\"version\":1}\n", BookStart::NoBook},
      {"BEGIN:VCARD\r\n", BookStart::NoBook},
      {"", BookStart::NoBook},
  };
  for (const auto& row : rows) EXPECT_EQ(bookStartOf(row.bytes), row.start) << row.bytes;
}

}  // namespace
}  // namespace ox
