#include "ox/base/text/sixteen_bytes.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace ox {
namespace {

TEST(SixteenBytes, OfAShortTextAreItsOwnAndBlanksBehindThem) {
  for (std::size_t size = 0; size <= SixteenBytes::kCount + 1; ++size) {
    for (std::size_t place = 0; place < size; ++place) {
      std::vector<char> text(size, 'a');  // with nothing behind it that might be read
      text[place] = '\xFF';
      const SixteenBytes bytes(std::string_view(text.data(), size));
      const auto marks = bytes.equalTo('\xFF');
      ASSERT_EQ(marks.isZero(), place >= SixteenBytes::kCount) << size << " " << place;
      if (marks.isZero()) continue;
      EXPECT_EQ(marks.firstSet(), place) << size;
      EXPECT_FALSE(bytes.isAscii()) << size;
    }
    const std::string text(size, 'a');
    const auto blanks = SixteenBytes(std::string_view(text)).equalTo(' ');
    ASSERT_EQ(blanks.isZero(), size >= SixteenBytes::kCount) << size;
    EXPECT_EQ(blanks.isZero() ? SixteenBytes::kCount : blanks.firstSet(),
              std::min(size, SixteenBytes::kCount));
  }
}

}  // namespace
}  // namespace ox
