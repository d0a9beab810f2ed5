#include "ox/base/text/showing.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

TEST(Showing, TellsWhatEveryCharacterDoesToAReader) {
  struct Row {
    std::string text;
    std::size_t length;
    Showing showing;
  };
  const std::vector<Row> rows = {
      {"a\u0301", 1, Showing::AsItIs},
      {"é", 2, Showing::AsItIs},
      {"张", 3, Showing::AsItIs},
      {"\U0001F600", 4, Showing::AsItIs},
      {"\u200D", 3, Showing::AsItIs},  // joins emoji and the letters of some scripts
      {"\u0301", 2, Showing::Mark},
      {"\u20DD", 3, Showing::Mark},
      {"\n", 1, Showing::LineBreak},
      {"\u2028", 3, Showing::LineBreak},
      {std::string(1, '\0'), 1, Showing::Steers},
      {"\x1B[31m", 1, Showing::Steers},
      {"\r", 1, Showing::Steers},
      {"\x7F", 1, Showing::Steers},
      {"\u009B", 2, Showing::Steers},
      {"\u202E", 3, Showing::Steers},
      {"\u2066", 3, Showing::Steers},
      {"\u200F", 3, Showing::Steers},
      {"\u061C", 2, Showing::Steers},
      {"\u206E", 3, Showing::Steers},
      {"\uFFF9", 3, Showing::Steers},
      {"\x9B", 1, Showing::Steers},
      {"\xE5\xBC", 2, Showing::Steers},
      {"\xED\xA0\x80", 1, Showing::Steers},
  };
  for (const auto& row : rows) {
    const auto shown = firstShown(row.text);
    EXPECT_EQ(shown.bytes, row.text.substr(0, row.length));
    EXPECT_EQ(shown.showing, row.showing) << std::hex << static_cast<unsigned>(shown.character);
  }
}

}  // namespace
}  // namespace ox
