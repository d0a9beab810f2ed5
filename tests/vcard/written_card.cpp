#include "written_card.hpp"

#include <gtest/gtest.h>

#include "card_text.hpp"

namespace ox::vcard {

PropertyBag propertiesOf(std::string_view version, std::string_view lines) {
  std::string card = "BEGIN:VCARD\nVERSION:";
  card.append(version).append("\n").append(lines).append("END:VCARD\n");
  return std::get<Card>(readAll(card).at(0)).properties;
}

std::string linesOf(const PropertyBag& bag, WriteOptions options, const Data& photo) {
  auto text = writeCard(bag, photo, options);
  for (const auto* fold : {"\r\n ", "\r"}) {
    for (auto at = text.find(fold); at != text.npos; at = text.find(fold, at)) {
      text.erase(at, std::string_view(fold).size());
    }
  }
  const auto from = text.find("VERSION:") + 12;
  return text.substr(from, text.rfind("END:VCARD\n") - from);
}

void expectWritten(const std::vector<WrittenRow>& rows) {
  for (const auto& row : rows) {
    EXPECT_EQ(linesOf(row.bag, {.version = CardVersion::V30}), row.in30);
    EXPECT_EQ(linesOf(row.bag, {.version = CardVersion::V40}), row.in40);
  }
}

void expectThrough(const std::vector<ThroughRow>& rows) {
  const std::string names = "N:Ray;Al;;;\nFN:Al Ray\n";
  for (const auto& row : rows) {
    const auto bag = propertiesOf(row.version, names + row.lines);
    const auto in30 = linesOf(bag, {.version = CardVersion::V30});
    const auto in40 = linesOf(bag, {.version = CardVersion::V40});
    EXPECT_EQ(in30, names + row.in30) << row.lines;
    EXPECT_EQ(in40, names + row.in40) << row.lines;
    for (const auto& [version, lines] : {std::pair("3.0", in30), std::pair("4.0", in40)}) {
      const auto again = propertiesOf(version, lines);
      EXPECT_EQ(linesOf(again, {.version = CardVersion::V30}), in30) << "from " << version;
      EXPECT_EQ(linesOf(again, {.version = CardVersion::V40}), in40) << "from " << version;
    }
  }
}

}  // namespace ox::vcard
