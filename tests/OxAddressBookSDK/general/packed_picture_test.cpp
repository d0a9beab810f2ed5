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
#include "ox/images/image_codec.hpp"

namespace ox {
namespace {

Image graded(std::uint32_t width, std::uint32_t height) {
  Pixels pixels;
  for (std::uint32_t i = 0; i < width * height * 4; ++i) {
    pixels.push_back(static_cast<std::uint8_t>(i * i >> 5U));
  }
  return {width, height, pixels};
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
  const auto largest = PackedPicture::ofPixels(8192, 8192, packed);
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
  const auto fast = PackedPicture::ofPixels(64, 64, packedZeros(64 * 64 * 4, 1));
  const auto stored = PackedPicture::ofPixels(64, 64, packedZeros(64 * 64 * 4, 0));
  ASSERT_TRUE(fast && stored);
  EXPECT_NE(fast->bytes(), stored->bytes());
  EXPECT_TRUE(fast->equals(*stored));
  EXPECT_FALSE(fast->equals(*PackedPicture::ofPixels(32, 128, fast->bytes())));
  EXPECT_FALSE(fast->equals(*PackedPicture::pack(graded(64, 64))));
}

// A picture as it comes from a store, and the bytes that stand there.
struct Stored {
  explicit Stored(Data bytes) : file(std::move(bytes)), image(images::pictureOfFile(file)) {}
  Data file;
  ImagePtr image;
};

Stored jpegOf(std::uint32_t width, std::uint32_t height) {
  return Stored(images::encodeJpeg(graded(width, height)));
}

std::string fileJson(std::uint32_t width, std::uint32_t height, const std::string& file) {
  return R"({"kind":"image","width":)" + std::to_string(width) + R"(,"height":)" +
         std::to_string(height) + R"(,"file":")" + base64(file) + "\"}";
}

std::shared_ptr<OxAddressBookGeneral> readBack(const std::string& json, std::string_view header) {
  auto body = std::string(header) + personLine("p", json);
  return OxAddressBookGeneral::addressBookWithData(
      makeData(body + book_format::trailer(body, 0, 1)));
}

TEST(PackedPicture, IsTheFileThatItCameFrom) {
  const auto stored = jpegOf(40, 30);
  EXPECT_EQ(fileOf(stored.image), [&] {
    const auto body = std::string(book_format::kHeaderWithFiles) +
                      R"({"person":"p","values":[{"property":"OxProPertyThumbnail",)"
                      R"("type":0,"value":)" +
                      fileJson(40, 30, *stored.file) + "}]}\n";
    return body + book_format::trailer(body, 0, 1);
  }());
  const auto book = readBack(fileJson(40, 30, *stored.file), book_format::kHeaderWithFiles);
  ASSERT_TRUE(book);
  const auto picture = book->personsDic().objectForKey("p")->thumbnail();
  ASSERT_TRUE(picture);
  EXPECT_EQ(*picture, *stored.image);
  ASSERT_TRUE(picture->file());
  EXPECT_EQ(*picture->file(), *stored.file);
}

TEST(PackedPicture, OfChangedPixelsIsNotTheFileThatTheyCameFrom) {
  const auto stored = jpegOf(40, 30);
  auto pixels = stored.image->pixels();
  pixels[0] ^= 1U;
  const auto changed = std::make_shared<const Image>(40, 30, pixels);
  EXPECT_FALSE(changed->file());
  const auto person = OxGeneralPerson::make("p");
  person->setThumbnail(changed);
  EXPECT_EQ(*person->thumbnail(), *changed);
  EXPECT_NE(*person->thumbnail(), *stored.image);
}

TEST(PackedPicture, IsEqualWhateverItIsKeptAs) {
  const auto stored = jpegOf(40, 30);
  const auto file = PackedPicture::pack(*stored.image);
  const auto pixels = PackedPicture::pack(Image(40, 30, stored.image->pixels()));
  EXPECT_EQ(file->form(), PackedPicture::Form::File);
  EXPECT_EQ(file->bytes(), *stored.file);
  EXPECT_EQ(pixels->form(), PackedPicture::Form::Packed);
  EXPECT_TRUE(file->equals(*pixels));
  EXPECT_TRUE(pixels->equals(*file));
  EXPECT_FALSE(file->equals(*PackedPicture::pack(*jpegOf(30, 40).image)));
}

TEST(PackedPicture, ThatIsSmallerThanItsFileIsItsPixels) {
  const Stored tiff(images::encodeTiff(graded(1, 1)));
  ASSERT_GT(tiff.file->size(), 4U);
  EXPECT_EQ(PackedPicture::pack(*tiff.image)->form(), PackedPicture::Form::Packed);
  EXPECT_FALSE(PackedPicture::ofFile(1, 1, *tiff.file));
}

TEST(PackedPicture, IsReadOnlyFromAWholeFileOfItsSize) {
  const auto whole = *jpegOf(40, 30).file;
  const auto isRead = [](std::uint32_t width, std::uint32_t height, const std::string& file,
                         std::string_view header = book_format::kHeaderWithFiles) {
    return readBack(fileJson(width, height, file), header) != nullptr;
  };
  EXPECT_TRUE(isRead(40, 30, whole));
  EXPECT_FALSE(isRead(30, 40, whole));
  EXPECT_FALSE(isRead(40, 30, whole.substr(0, whole.size() / 2)));
  EXPECT_FALSE(isRead(40, 30, "no picture"));
  EXPECT_FALSE(isRead(40, 30, ""));
  EXPECT_FALSE(isRead(40, 30, whole, book_format::kHeader)) << "no program wrote that";
  EXPECT_TRUE(readBack(pictureJson(1, 1, PackedPicture::pack(graded(1, 1))->bytes()),
                       book_format::kHeaderWithFiles));
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
