#include <gtest/gtest.h>
#include <png.h>

#include "ox/OxMacAddressBookSDK/_ABPerson/vcard_photo.hpp"
#include "ox/base/base64.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/images/picture_files.hpp"

namespace ox::test {
namespace {

using namespace std::string_literals;

constexpr std::string_view kPrefix = "PHOTO;BASE64;ENCODING=b;TYPE=JPEG:";

ImagePtr redSquare() {
  Pixels pixels;
  for (int i = 0; i < 64; ++i) pixels.insert(pixels.end(), {200, 0, 0, 255});
  return std::make_shared<const Image>(8, 8, pixels);
}

TEST(CardWithPhoto, PutsTheLineInTheEndLinesPlaceByteForByte) {
  struct Row {
    std::string card;
    std::string expected;  // empty: as it was
  };
  const std::vector<Row> rows = {
      {"BEGIN:VCARD\r\nN:x\r\nEND:VCARD\r\n", "BEGIN:VCARD\r\nN:x\r\nPHOTO:1\r\n\nEND:VCARD"},
      {"BEGIN:VCARD\nEND:VCARD", "BEGIN:VCARD\nPHOTO:1\nEND:VCARD"},
      {"END:VCARD\nEND:VCARD\n", "PHOTO:1\nPHOTO:1\n\nEND:VCARD"},
      {"PHOTO:0\nEND:VCARD", "PHOTO:0\nPHOTO:1\nEND:VCARD"},
      {"BEGIN:VCARD\nend:vcard\n", ""},
      {"BEGIN:VCARD\n\xFF\nEND:VCARD\n", ""},
      {"", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(cardWithPhoto(row.card, "PHOTO:1").value_or(""), row.expected) << row.card;
  }
}

TEST(NewCreateVcard, WithoutAPictureIsThePlatformsOwn) {
  const auto made = newPersonWith({.first = "Ann", .image = makeData("no picture")});
  EXPECT_EQ(made->vcardImageDataString(), std::nullopt);
  EXPECT_EQ(*made->newCreateVcard(), *made->vCardRepresentation());
  made->setThumbnail(nullptr);
  EXPECT_EQ(made->vcardImageDataString(), std::nullopt);
  EXPECT_EQ(*made->newCreateVcard(), *made->vCardRepresentation());
}

TEST(NewCreateVcard, CarriesAFreshJpegInOneLine) {
  const auto made = newPersonWith({.first = "Ann"});
  made->setThumbnail(redSquare());
  const auto line = made->vcardImageDataString();
  ASSERT_TRUE(line);
  EXPECT_EQ(line->substr(0, kPrefix.size()), kPrefix);
  EXPECT_EQ(line->find_first_of("\r\n "), std::string::npos);
  const auto jpeg = bytesOfBase64(line->substr(kPrefix.size()));
  ASSERT_TRUE(jpeg);
  EXPECT_EQ(jpeg->substr(0, 2), "\xFF\xD8");
  const auto image = images::decodeImage(*jpeg);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width, 8U);
  EXPECT_NEAR(image->pixels()[0], 200, 12);

  const std::string platform = *made->vCardRepresentation();
  ASSERT_TRUE(platform.ends_with("END:VCARD\r\n"));
  EXPECT_EQ(*made->newCreateVcard(),
            platform.substr(0, platform.size() - 11) + *line + "\r\n\nEND:VCARD");
}

TEST(NewCreateVcard, EncodesAnewWhateverIsStored) {
  std::string rows;
  for (int i = 0; i < 4 * 8; ++i) rows += "\xC8\x00\x00"s;
  const auto jpeg = images::flatJpeg(8, 4, {200, 0, 0});
  // All show a red picture, 4 wide and 8 high; one JPEG only when it is turned.
  const std::vector<std::pair<std::string, std::string>> rowsByName = {
      {"png", images::pngFile(4, 8, {PNG_COLOR_TYPE_RGB, 8}, rows)},
      {"progressive", images::flatJpeg(4, 8, {200, 0, 0}, true)},
      {"turned", images::withExif(jpeg, 6, true)},
  };
  for (const auto& [name, stored] : rowsByName) {
    StoreBuilder().person(name, {.first = "Ann", .image = makeData(stored)});
    const auto line = person(name)->vcardImageDataString();
    ASSERT_TRUE(line) << name;
    const auto fresh = bytesOfBase64(line->substr(kPrefix.size()));
    ASSERT_TRUE(fresh) << name;
    EXPECT_EQ(fresh->substr(0, 2), "\xFF\xD8") << name;
    EXPECT_NE(*fresh, stored) << name;
    const auto image = images::decodeImage(*fresh);
    ASSERT_TRUE(image) << name;
    EXPECT_EQ(image->width, 4U) << name;
    EXPECT_EQ(image->height, 8U) << name;
    EXPECT_NEAR(image->pixels()[0], 200, 12) << name;
  }
}

TEST(NewCreateVcard, OfAPictureThatNoJpegCanHoldIsThePlatformsOwn) {
  const auto made = newPersonWith({.first = "Ann"});
  made->setThumbnail(std::make_shared<Image>(images::patterned(65501, 1)));
  ASSERT_TRUE(made->thumbnail());
  EXPECT_EQ(made->vcardImageDataString(), std::nullopt);
  EXPECT_EQ(*made->newCreateVcard(), *made->vCardRepresentation());
}

TEST(NewCreateVcard, OfAPictureThatCannotBeReadIsThePlatformsOwn) {
  const auto made = newPersonWith({.first = "Ann"});
  made->setThumbnail(redSquare());
  SwitchedSource::install().raiseOnImageOf("p");
  EXPECT_EQ(made->vcardImageDataString(), std::nullopt);
  EXPECT_EQ(*made->newCreateVcard(), *made->vCardRepresentation());
}

}  // namespace
}  // namespace ox::test
