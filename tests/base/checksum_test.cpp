#include "ox/base/checksum.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

// The sums that the algorithm's own test program gives: files are to be readable for ever.
TEST(Checksum, IsXxh3InItsCanonicalForm) {
  EXPECT_EQ(checksum64(""), 0x2D06800538D394C2U);
  EXPECT_EQ(checksum128(""), "99aa06d3014798d86001c324468d497f");
  EXPECT_EQ(checksum128("a"), "a96faf705af16834e6c632b61e964e1f");
  EXPECT_NE(checksum128("ab"), checksum128("ba"));
}

TEST(Checksum, IsTheSameOfPartsAsOfTheWhole) {
  const std::string bytes(100'000, 'x');
  for (const std::size_t part : {std::size_t{1}, std::size_t{999}, bytes.size()}) {
    Checksum128 sum;
    for (std::size_t from = 0; from < bytes.size(); from += part) sum.add(bytes.substr(from, part));
    EXPECT_EQ(sum.text(), checksum128(bytes)) << part;
  }
  EXPECT_EQ(Checksum128().text(), checksum128(""));
}

}  // namespace
}  // namespace ox
