#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <png.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>
#include <zlib.h>

#include "ox/images/image_codec.hpp"
#include "ox/images/image_file.hpp"
#include "tests/images/picture_files.hpp"

namespace ox::images {
namespace {

std::vector<std::string> smallFiles() {
  const auto image = patterned(9, 7);
  const std::string rows(image.pixels().begin(), image.pixels().end());
  return {
      pngFile(9, 7, {PNG_COLOR_TYPE_RGBA, 8}, rows),
      pngFile(9, 7, {.colorType = PNG_COLOR_TYPE_PALETTE, .bitDepth = 2, .interlaced = true}, rows),
      *encodeJpeg(image),
      *encodeJpeg(patterned(40, 35)),
      withExif(flatJpeg(17, 9, {1, 2, 3}, true), 6, true),
      flatJpeg(8, 8, {1, 2, 3, 4}),
      *encodeTiff(image),
      tiffFile(9, 7, 16, 4, 2, 5, rows + rows),
  };
}

TEST(DamagedPictures, EveryTruncationIsRefused) {
  for (const auto& file : smallFiles()) {
    ASSERT_TRUE(decodeImage(file));
    for (std::size_t size = 0; size < file.size(); ++size) {
      std::string reason;
      // Copied, so that reading beyond the end is noticed.
      const std::string cut(file, 0, size);
      EXPECT_FALSE(decodeImage(cut, &reason)) << size << " of " << file.size();
      EXPECT_FALSE(reason.empty());
      EXPECT_FALSE(wholeImageSize(cut)) << size << " of " << file.size();
      imageSize(cut);
    }
  }
}

TEST(DamagedPictures, NoFlippedByteDoesHarm) {
  for (const auto& file : smallFiles()) {
    for (std::size_t at = 0; at < file.size(); ++at) {
      for (const int flip : {0x01, 0x80, 0xFF}) {
        auto damaged = file;
        damaged[at] = static_cast<char>(damaged[at] ^ flip);
        const auto image = decodeImage(damaged);
        const auto size = wholeImageSize(damaged);
        ASSERT_EQ(size.has_value(), image != nullptr) << at << " of " << file.size();
        if (!image) continue;
        EXPECT_EQ(size, (ImageSize{image->width, image->height}));
        EXPECT_EQ(image->pixels().size(), std::size_t{image->width} * image->height * 4);
        EXPECT_LE(std::uint64_t{image->width} * image->height, kMaxPixels);
      }
    }
  }
}

TEST(DamagedPictures, AClaimOfTooManyPixelsIsRefusedFromTheHeader) {
  struct Row {
    std::string file;
    std::string reason;
  };
  const std::string strip(64, '\0');
  auto hugeJpeg = flatJpeg(16, 16, {9});
  const auto frame = hugeJpeg.find("\xFF\xC0");
  ASSERT_NE(frame, std::string::npos);
  hugeJpeg.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");  // 65500 x 65500
  const std::vector<Row> rows = {
      {pngClaiming(100000, 100000), "too many pixels"},
      {pngClaiming(8192, 8193), "too many pixels"},
      {pngClaiming(67108865, 1), "too many pixels"},
      {pngClaiming(8192, 8192), "claims more pixels than its bytes can hold"},
      {tiffFile(100000, 100000, 8, 1, 1, 1, strip), "too many pixels"},
      {tiffFile(8192, 8193, 1, 1, 1, 1, strip), "too many pixels"},
      {tiffFile(8192, 8192, 1, 1, 1, 1, strip), "claims more pixels than its bytes can hold"},
      {hugeJpeg, "too many pixels"},
      {"GIF89a", "neither TIFF, PNG nor JPEG"},
      {"", "empty"},
  };
  for (const auto& row : rows) {
    std::string reason;
    EXPECT_FALSE(decodeImage(row.file, &reason));
    EXPECT_EQ(reason, row.reason);
    EXPECT_EQ(imageSize(row.file), std::nullopt);
  }
}

long peakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// A compressed text of that many blanks, as a PNG keeps it.
std::string compressedText(std::size_t size) {
  const std::string text(size, ' ');
  auto packedSize = compressBound(text.size());
  std::string packed(packedSize, '\0');
  compress2(reinterpret_cast<Bytef*>(packed.data()), &packedSize,
            reinterpret_cast<const Bytef*>(text.data()), text.size(), 9);
  return std::string("Comment\0\0", 9) + packed.substr(0, packedSize);
}

TEST(DamagedPictures, TheTextsInAPngTakeNoMemory) {
  const auto image = patterned(5, 4);
  const auto png = pngFile(5, 4, {PNG_COLOR_TYPE_RGBA, 8},
                           std::string(image.pixels().begin(), image.pixels().end()));
  const auto file = withChunks(png, "zTXt", compressedText(4'000'000), 200);  // 800 MB unpacked
  EXPECT_LT(file.size(), 1'000'000U);
  const auto before = peakKilobytes();
  const auto back = decodeImage(file);
  ASSERT_TRUE(back);
  EXPECT_EQ(*back, image);
  EXPECT_EQ(imageSize(file), (ImageSize{5, 4}));
  EXPECT_LT(peakKilobytes() - before, 50'000);
}

TEST(DamagedPictures, TheFieldsOfATiffAreNotLargerThanTheFile) {
  const auto large = tiffFile(1, 1, 8, 1, 1, 1, std::string(1'000'000, 'x'));
  ASSERT_TRUE(decodeImage(large));
  const auto one = withFieldsOfAll(tiffFile(1, 1, 8, 1, 1, 1, "x"), 1);
  EXPECT_TRUE(decodeImage(one));
  const auto before = peakKilobytes();
  std::string reason;
  const auto file = withFieldsOfAll(large, 500);  // 500 MB of fields
  EXPECT_FALSE(decodeImage(file, &reason));
  EXPECT_EQ(reason, "claims larger fields than its bytes can hold");
  EXPECT_EQ(imageSize(file), std::nullopt);
  EXPECT_LT(peakKilobytes() - before, 50'000);
}

TEST(DamagedPictures, TheLargestAllowedPictureIsRead) {
  // One bit a pixel, all black: 8 MiB of rows in a few kilobytes.
  const auto file = pngFile(8192, 8192, {PNG_COLOR_TYPE_GRAY, 1}, "");
  EXPECT_LT(file.size(), 20000U);
  const auto image = decodeImage(file);
  ASSERT_TRUE(image);
  EXPECT_EQ(std::uint64_t{image->width} * image->height, kMaxPixels);
}

TEST(ImageFile, GivesThePictureOfARegularFileOnly) {
  const auto folder = std::filesystem::temp_directory_path();
  const auto path = (folder / ("ox-image-" + std::to_string(getpid()))).string();
  std::ofstream(path, std::ios::binary) << *encodeTiff(patterned(4, 3));
  const auto image = imageWithContentsOfFile(path);
  ASSERT_TRUE(image);
  EXPECT_EQ(*image, patterned(4, 3));

  std::ofstream(path, std::ios::binary) << "no picture";
  EXPECT_FALSE(imageWithContentsOfFile(path));
  std::ofstream(path, std::ios::binary).close();
  EXPECT_FALSE(imageWithContentsOfFile(path));
  std::filesystem::resize_file(path, (std::uintmax_t{64} << 20U) + 1);
  EXPECT_FALSE(imageWithContentsOfFile(path));
  std::filesystem::remove(path);
  EXPECT_FALSE(imageWithContentsOfFile(path));
  EXPECT_FALSE(imageWithContentsOfFile(folder.string()));
  EXPECT_FALSE(imageWithContentsOfFile("/dev/zero"));
  EXPECT_FALSE(imageWithContentsOfFile(""));
}

}  // namespace
}  // namespace ox::images
