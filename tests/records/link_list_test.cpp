#include "ox/records/link_list.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

const NumberedLinks kLinks = {{7, 1}, {8, 2}, {3, 900}, {4'000'000'000'000, 5}, {1, INT64_MAX}};

TEST(LinkList, ComesBackAsItWasStored) {
  for (const auto& links :
       {kLinks, NumberedLinks{}, NumberedLinks{{INT64_MIN, -1}, {INT64_MAX, 0}}}) {
    EXPECT_EQ(decodeLinks(encodeLinks(links)), links);
  }
}

TEST(LinkList, TakesTwoBytesALinkOfPersonsAddedOneAfterAnother) {
  NumberedLinks links;
  for (int i = 0; i < 1000; ++i) links.push_back({500 + i, 90 + i});
  EXPECT_LE(encodeLinks(links).size(), 2 * links.size() + 16);
}

TEST(LinkList, IsRefusedWithAnyByteCutOffOrAnyBitFlipped) {
  const auto bytes = encodeLinks(kLinks);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_THROW(decodeLinks(bytes.substr(0, size)), DamagedLinks) << size;
  }
  for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
    auto flipped = bytes;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
    EXPECT_THROW(decodeLinks(flipped), DamagedLinks) << bit;
  }
}

}  // namespace
}  // namespace ox
