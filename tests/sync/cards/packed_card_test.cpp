#include "ox/sync/cards/packed_card.hpp"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "ox/base/base64.hpp"
#include "ox/records/damaged_bytes.hpp"

namespace ox::sync {
namespace {

Data randomPicture(std::size_t size) {
  std::mt19937 random(7);
  std::string bytes = "\xFF\xD8\xFF\xE0";
  while (bytes.size() < size) bytes += static_cast<char>(random());
  return makeData(std::move(bytes));
}

// Base64 over lines of that width, the first one of another.
std::string folded(const std::string& letters, std::size_t first, std::size_t further,
                   const std::string& joint) {
  std::string text = letters.substr(0, first);
  for (auto at = first; at < letters.size(); at += further) {
    text += joint + letters.substr(at, further);
  }
  return text;
}

std::string cardWith(const std::string& photo) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann\r\n" + photo + "\r\nUID:u\r\nEND:VCARD\r\n";
}

TEST(PackedCard, LeavesOutAPictureHoweverItsLinesAreFolded) {
  const auto picture = randomPicture(5000);
  const auto letters = base64(*picture);
  const auto unpadded = letters.substr(0, letters.find('='));
  const std::vector<std::string> photos = {
      "PHOTO;ENCODING=b;TYPE=JPEG:" + folded(letters, 48, 74, "\r\n "),
      "PHOTO;ENCODING=b;TYPE=JPEG:" + letters,
      "item3.photo;BASE64:\r\n  " + folded(letters, 72, 72, "\r\n  "),
      "PHOTO:data:image/jpeg;base64," + folded(letters, 46, 74, "\r\n\t"),
      "PHOTO;ENCODING=b:" + folded(letters, 10, 60, "\n "),
      "PHOTO;ENCODING=b:" + folded(unpadded, 10, 60, "\r\n "),
  };
  for (const auto& photo : photos) {
    const auto text = cardWith(photo);
    const auto packed = packedCard(text, picture);
    EXPECT_TRUE(needsPicture(packed)) << photo.substr(0, 200);
    EXPECT_LT(packed.size(), 250U);
    EXPECT_EQ(unpackedCard(packed, picture), text);
  }
}

TEST(PackedCard, KeepsTheTextWholeWhereThePictureIsAnother) {
  const auto picture = randomPicture(5000);
  auto letters = base64(*picture);
  letters[3000] = letters[3000] == 'A' ? 'B' : 'A';
  const auto text = cardWith("PHOTO;ENCODING=b:" + folded(letters, 48, 74, "\r\n "));
  for (const auto& other : {picture, Data(), makeData("")}) {
    const auto packed = packedCard(text, other);
    EXPECT_FALSE(needsPicture(packed));
    EXPECT_EQ(unpackedCard(packed, nullptr), text);
  }
}

TEST(PackedCard, KeepsUnevenLinesWhole) {
  const auto picture = randomPicture(600);
  const auto letters = base64(*picture);
  const auto text =
      cardWith("PHOTO;ENCODING=b:" + letters.substr(0, 40) + "\r\n " + letters.substr(40, 60) +
               "\r\n " + letters.substr(100, 50) + "\r\n " + letters.substr(150));
  const auto packed = packedCard(text, picture);
  EXPECT_FALSE(needsPicture(packed));
  EXPECT_EQ(unpackedCard(packed, nullptr), text);
}

TEST(PackedCard, HoldsAnyBytes) {
  for (const auto& text : {std::string(), std::string("\0\r\xFF", 3), std::string(100000, 'x')}) {
    EXPECT_EQ(unpackedCard(packedCard(text, nullptr), nullptr), text);
  }
  EXPECT_LT(packedCard(std::string(100000, 'x'), nullptr).size(), 300U);
}

TEST(PackedCard, NoticesEveryDamagedByte) {
  const auto picture = randomPicture(700);
  const auto text = cardWith("PHOTO;ENCODING=b:" + folded(base64(*picture), 48, 74, "\r\n "));
  const auto packed = packedCard(text, picture);
  ASSERT_TRUE(needsPicture(packed));
  for (std::size_t i = 0; i < packed.size(); ++i) {
    auto damaged = packed;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x10);
    EXPECT_THROW(unpackedCard(damaged, picture), DamagedBytes) << i;
    EXPECT_THROW(unpackedCard(packed.substr(0, i), picture), DamagedBytes) << i;
  }
  EXPECT_THROW(unpackedCard(packed, nullptr), DamagedBytes);
  EXPECT_THROW(unpackedCard(packed, randomPicture(701)), DamagedBytes);
}

}  // namespace
}  // namespace ox::sync
