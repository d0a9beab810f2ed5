#include "ox/OxAddressBookSDK/general/packed_picture.hpp"

#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <vector>
#include <zlib.h>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/OxAddressBookSDK/general/picture_bytes.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/base/base64.hpp"
#include "ox/base/failures.hpp"

namespace ox {
namespace {

Image graded(std::uint32_t width, std::uint32_t height) {
  Image image{width, height, {}};
  for (std::uint32_t i = 0; i < width * height * 4; ++i) {
    image.pixels.push_back(static_cast<std::uint8_t>(i * i >> 5U));
  }
  return image;
}

std::shared_ptr<OxMutableSingleValue> single(Object object) {
  auto value = OxMutableSingleValue::init();
  value->setValue(std::move(object));
  return value;
}

Object objectOf(const OxValuePtr& value) {
  const auto held = std::dynamic_pointer_cast<OxMutableSingleValue>(value);
  return held ? held->value() : Object();
}

// A zlib stream of so many zeros, made in little memory: what a picture of nothing packs to.
std::string packedZeros(std::uint64_t count, int level) {
  std::vector<Bytef> zeros(1U << 16U);
  std::string packed(1U << 20U, '\0');
  z_stream stream{};
  EXPECT_EQ(deflateInit(&stream, level), Z_OK);
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  int result = Z_OK;
  while (result == Z_OK) {
    const auto size = std::min<std::uint64_t>(zeros.size(), count - stream.total_in);
    stream.next_in = zeros.data();
    stream.avail_in = static_cast<uInt>(size);
    result = deflate(&stream, size == 0 ? Z_FINISH : Z_NO_FLUSH);
  }
  EXPECT_EQ(result, Z_STREAM_END);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

long peakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

std::string pictureJson(std::uint32_t width, std::uint32_t height, const std::string& packed) {
  return R"({"kind":"image","width":)" + std::to_string(width) + R"(,"height":)" +
         std::to_string(height) + R"(,"pixels":")" + base64(packed) + "\"}";
}

std::string sealed(const std::string& lines, std::size_t persons) {
  const auto body = std::string(book_format::kHeader) + lines;
  return body + book_format::trailer(body, 0, persons);
}

std::string personLine(const std::string& key, const std::string& json) {
  return R"({"person":")" + key +
         R"(","values":[{"property":"OxProPertyThumbnail","type":2,"value":)" + json + "}]}\n";
}

TEST(PackedPicture, IsAllThatANeutralPersonKeepsOfItsPictures) {
  auto image = std::make_shared<const Image>(graded(20, 30));
  const std::weak_ptr<const Image> given = image;
  const auto person = OxGeneralPerson::make("p");
  person->setThumbnail(image);
  person->setValue_byPropertyName(single(Array{"x", Dictionary{{"k", image}}}), OxProPertyNote);
  const auto several = OxMutableMultipleValue::init();
  several->addValue(single(image));
  person->takeValue(several, OxProperty::propertyWithName(OxProPertyOther));
  image.reset();
  EXPECT_TRUE(given.expired());

  ASSERT_TRUE(person->thumbnail());
  EXPECT_EQ(*person->thumbnail(), graded(20, 30));
  const Object again(std::make_shared<const Image>(graded(20, 30)));
  EXPECT_EQ(objectOf(person->valueByPropertyName(OxProPertyNote)),
            Object(Array{"x", Dictionary{{"k", again}}}));
  const auto read = std::dynamic_pointer_cast<OxMutableMultipleValue>(
      person->valueByPropertyName("OxProPertyOther"));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->valueAtIndex(0)->value(), again);
  for (const auto& [property, value] : person->values()) {
    EXPECT_EQ(pixelsInPackedPictures(*value), 600U) << property->name();
  }
}

TEST(PackedPicture, ThatCannotBePackedStaysWhatItIs) {
  const auto incomplete = std::make_shared<const Image>(Image{2, 2, {1, 2, 3}});
  const auto person = OxGeneralPerson::make("p");
  person->setThumbnail(incomplete);
  EXPECT_EQ(person->thumbnail(), incomplete);
}

// The file of a book of one person with that picture, or why there is none.
std::string fileOf(Object picture) {
  const auto person = OxGeneralPerson::make("p");
  person->setValue_byPropertyName(single(std::move(picture)), OxProPertyThumbnail);
  const auto book = OxAddressBookGeneral::init();
  book->addPerson(person);
  const failures::Watch watch;
  const auto file = book->saveToData();
  return file ? *file : watch.lastReason();
}

TEST(PackedPicture, OfMoreThan64MPixelsInOneValueIsNeitherWrittenNorRead) {
  const std::string refusal = "the neutral book cannot be written: OxProPertyThumbnail of p: ";
  const auto over = std::make_shared<const Image>(
      Image{8192, 8193, std::vector<std::uint8_t>(std::size_t{8192} * 8193 * 4)});
  EXPECT_EQ(fileOf(over), refusal + "a picture of more than 64 M pixels");

  const auto packed = packedZeros(kMaxPackedPixels * 4, 9);
  const auto largest = PackedPicture::ofBytes(8192, 8192, packed);
  const auto small = PackedPicture::pack(graded(1, 1));
  ASSERT_TRUE(largest && small);
  EXPECT_EQ(fileOf(Array{largest, Dictionary{{"k", small}}}),
            refusal + "pictures of more than 64 M pixels in one value");
  const auto isReadable = [](const std::string& json) {
    const auto file = makeData(sealed(personLine("p", json), 1));
    return OxAddressBookGeneral::addressBookWithData(file) != nullptr;
  };
  const auto first = pictureJson(8192, 8192, packed);
  EXPECT_TRUE(isReadable("[" + first + ",[]]"));
  EXPECT_FALSE(isReadable("[" + first + ",[" + pictureJson(1, 1, small->bytes()) + "]]"));
}

TEST(PackedPicture, IsEqualToOneOfTheSamePixelsPackedByAnotherVersion) {
  const auto fast = PackedPicture::ofBytes(64, 64, packedZeros(64 * 64 * 4, 1));
  const auto stored = PackedPicture::ofBytes(64, 64, packedZeros(64 * 64 * 4, 0));
  ASSERT_TRUE(fast && stored);
  EXPECT_NE(fast->bytes(), stored->bytes());
  EXPECT_TRUE(fast->equals(*stored));
  EXPECT_FALSE(fast->equals(*PackedPicture::ofBytes(32, 128, fast->bytes())));
  EXPECT_FALSE(fast->equals(*PackedPicture::pack(graded(64, 64))));
}

// All of them unpacked at once would take 1 GB.
TEST(PackedPicture, IsReadFromAFileInLittleMemory) {
  constexpr std::uint32_t kSide = 8192;
  constexpr std::size_t kPersons = 4;
  const auto picture = pictureJson(kSide, kSide, packedZeros(std::uint64_t{kSide} * kSide * 4, 9));
  std::string lines;
  for (std::size_t i = 0; i < kPersons; ++i) lines += personLine(std::to_string(i), picture);
  const auto file = makeData(sealed(lines, kPersons));
  const auto before = peakKilobytes();
  const auto book = OxAddressBookGeneral::addressBookWithData(file);
  ASSERT_TRUE(book);
  EXPECT_EQ(book->personsDic().count(), kPersons);
  EXPECT_EQ(*book->saveToData(), *file);
  EXPECT_LT(peakKilobytes() - before, 100'000);
}

}  // namespace
}  // namespace ox
