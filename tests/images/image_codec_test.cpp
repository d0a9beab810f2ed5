#include "ox/images/image_codec.hpp"

#include <cstdlib>
#include <gtest/gtest.h>
#include <png.h>
#include <string>
#include <vector>

#include "tests/images/picture_files.hpp"

namespace ox::images {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::string asText(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

// "r,g,b,a r,g,b,a ..." or the reason why there is none.
std::string pixelsOf(const std::string& file) {
  std::string reason;
  const auto image = decodeImage(file, &reason);
  if (!image) return reason;
  std::string result;
  for (std::size_t i = 0; i < image->pixels().size(); ++i) {
    result += std::to_string(image->pixels()[i]);
    if (i + 1 < image->pixels().size()) result += i % 4 == 3 ? ' ' : ',';
  }
  return result;
}

TEST(EncodeTiff, GivesTheSamePictureBack) {
  for (const auto& image : {patterned(1, 1), patterned(7, 5), patterned(300, 1), patterned(1, 300),
                            patterned(257, 301)}) {
    const auto file = encodeTiff(image);
    ASSERT_TRUE(file);
    const auto back = decodeImage(*file);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, image) << image.width << 'x' << image.height;
    EXPECT_EQ(imageSize(*file), (ImageSize{image.width, image.height}));
    EXPECT_EQ(*encodeTiff(image), *file);
  }
}

TEST(EncodePng, GivesTheSamePictureBack) {
  for (const auto& image : {patterned(1, 1), patterned(7, 5), patterned(257, 301)}) {
    const auto file = encodePng(image);
    ASSERT_TRUE(file);
    const auto back = decodeImage(*file);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, image) << image.width << 'x' << image.height;
    EXPECT_EQ(imageSize(*file), (ImageSize{image.width, image.height}));
  }
}

TEST(Encode, RefusesAPictureThatIsNone) {
  auto pixels = patterned(3, 3).pixels();
  pixels.pop_back();
  const Image incomplete(3, 3, pixels);
  for (const auto& image : {Image{}, incomplete}) {
    EXPECT_FALSE(encodeTiff(image));
    EXPECT_FALSE(encodeJpeg(image));
  }
  EXPECT_FALSE(encodeJpeg(patterned(65501, 1)));
  EXPECT_TRUE(encodeTiff(patterned(65501, 1)));
}

TEST(EncodeJpeg, ShowsTransparencyAsWhiteAndKeepsColoursNearly) {
  struct Row {
    Bytes color;
    Bytes shown;
  };
  const std::vector<Row> rows = {
      {{200, 40, 90, 255}, {200, 40, 90}},
      {{200, 40, 90, 0}, {255, 255, 255}},
      {{0, 0, 0, 128}, {127, 127, 127}},
  };
  for (const auto& row : rows) {
    Pixels pixels;
    for (int i = 0; i < 240; ++i) {
      pixels.insert(pixels.end(), row.color.begin(), row.color.end());
    }
    const auto file = encodeJpeg(Image(20, 12, pixels));
    ASSERT_TRUE(file);
    const auto back = decodeImage(*file);
    ASSERT_TRUE(back);
    ASSERT_EQ(back->width, 20U);
    ASSERT_EQ(back->height, 12U);
    for (std::size_t i = 0; i < back->pixels().size(); ++i) {
      const int expected = i % 4 == 3 ? 255 : row.shown[i % 4];
      ASSERT_NEAR(back->pixels()[i], expected, 3) << "byte " << i;
    }
  }
}

TEST(DecodeImage, TurnsEveryPngKindIntoRgba) {
  const auto one = [](PngKind kind, std::uint32_t width, const Bytes& rows) {
    return pixelsOf(pngFile(width, 1, kind, asText(rows)));
  };
  EXPECT_EQ(one({PNG_COLOR_TYPE_RGBA, 8}, 2, {1, 2, 3, 4, 5, 6, 7, 0}), "1,2,3,4 5,6,7,0");
  EXPECT_EQ(one({PNG_COLOR_TYPE_RGB, 8}, 1, {1, 2, 3}), "1,2,3,255");
  EXPECT_EQ(one({PNG_COLOR_TYPE_RGB, 16}, 1, {0xFF, 0xFF, 0x80, 0x80, 0, 0}), "255,128,0,255");
  EXPECT_EQ(one({PNG_COLOR_TYPE_GRAY, 1}, 3, {0b01000000}), "0,0,0,255 255,255,255,255 0,0,0,255");
  EXPECT_EQ(one({PNG_COLOR_TYPE_GRAY, 16}, 1, {0x40, 0x40}), "64,64,64,255");
  EXPECT_EQ(one({PNG_COLOR_TYPE_GRAY_ALPHA, 8}, 1, {9, 100}), "9,9,9,100");
  EXPECT_EQ(one({PNG_COLOR_TYPE_PALETTE, 2}, 3, {0b00011000}),
            "255,0,0,255 0,255,0,255 0,0,255,255");
  EXPECT_EQ(one({.colorType = PNG_COLOR_TYPE_PALETTE, .bitDepth = 8, .transparentFirstColor = true},
                2, {0, 3}),
            "255,0,0,0 255,255,255,255");
}

TEST(DecodeImage, ReadsInterlacedRowsAsPlainOnes) {
  const auto image = patterned(13, 11);
  for (const bool interlaced : {false, true}) {
    const auto file =
        pngFile(13, 11, {.colorType = PNG_COLOR_TYPE_RGBA, .bitDepth = 8, .interlaced = interlaced},
                asText(image.pixels()));
    const auto back = decodeImage(file);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, image);
    EXPECT_EQ(imageSize(file), (ImageSize{13, 11}));
  }
}

TEST(DecodeImage, TurnsEveryJpegKindIntoRgba) {
  struct Row {
    Bytes stored;
    Bytes shown;
  };
  const std::vector<Row> rows = {
      {{77}, {77, 77, 77}},
      {{200, 40, 90}, {200, 40, 90}},
      {{255, 255, 255, 255}, {255, 255, 255}},  // ink is stored inverted
      {{255, 128, 255, 128}, {128, 64, 128}},
  };
  for (const auto& row : rows) {
    for (const bool progressive : {false, true}) {
      const auto image = decodeImage(flatJpeg(9, 10, row.stored, progressive));
      ASSERT_TRUE(image);
      for (std::size_t i = 0; i < image->pixels().size(); ++i) {
        const int expected = i % 4 == 3 ? 255 : row.shown[i % 4];
        ASSERT_NEAR(image->pixels()[i], expected, 4) << "byte " << i;
      }
    }
  }
}

TEST(DecodeImage, TurnsEveryTiffKindIntoRgba) {
  EXPECT_EQ(pixelsOf(tiffFile(2, 1, 8, 3, 2, 1, asText({1, 2, 3, 4, 5, 6}))),
            "1,2,3,255 4,5,6,255");
  EXPECT_EQ(pixelsOf(tiffFile(2, 1, 8, 1, 1, 1, asText({0, 200}))), "0,0,0,255 200,200,200,255");
  EXPECT_EQ(pixelsOf(tiffFile(2, 1, 8, 1, 0, 1, asText({0, 200}))), "255,255,255,255 55,55,55,255");
  EXPECT_EQ(pixelsOf(tiffFile(2, 1, 1, 1, 1, 1, asText({0b01000000}))),
            "0,0,0,255 255,255,255,255");
  EXPECT_EQ(pixelsOf(tiffFile(1, 1, 16, 3, 2, 1, asText({0xFF, 0xFF, 0x80, 0x80, 0, 0}))),
            "255,128,0,255");
  EXPECT_EQ(pixelsOf(tiffFile(1, 1, 8, 4, 5, 1, asText({0, 255, 0, 0}))), "255,0,255,255");
}

TEST(DecodeImage, ReadsATiffOfSeveralStripsAsOneOfOne) {
  struct Kind {
    std::uint16_t samples;
    std::uint16_t photometric;
  };
  for (const auto kind : {Kind{1, 1}, Kind{3, 2}, Kind{4, 5}}) {
    std::string rows;
    for (int i = 0; i < 5 * 7 * kind.samples; ++i) rows += static_cast<char>(i * 7);
    const auto decoded = [&](std::uint32_t rowsPerStrip) {
      return decodeImage(tiffFile(5, 7, 8, kind.samples, kind.photometric, 1, rows, rowsPerStrip));
    };
    const auto whole = decoded(0);
    ASSERT_TRUE(whole) << kind.samples;
    for (const std::uint32_t rowsPerStrip : {1U, 3U, 6U, 1000U}) {
      const auto image = decoded(rowsPerStrip);
      ASSERT_TRUE(image) << kind.samples << ' ' << rowsPerStrip;
      EXPECT_EQ(*image, *whole) << kind.samples << ' ' << rowsPerStrip;
    }
  }
}

// Each stored picture of 3 x 2 shows these numbers upright: 1 2 3 / 4 5 6.
TEST(DecodeImage, TurnsEveryOrientationUpright) {
  const std::vector<std::pair<ImageSize, Bytes>> stored = {
      {{3, 2}, {1, 2, 3, 4, 5, 6}}, {{3, 2}, {3, 2, 1, 6, 5, 4}}, {{3, 2}, {6, 5, 4, 3, 2, 1}},
      {{3, 2}, {4, 5, 6, 1, 2, 3}}, {{2, 3}, {1, 4, 2, 5, 3, 6}}, {{2, 3}, {3, 6, 2, 5, 1, 4}},
      {{2, 3}, {6, 3, 5, 2, 4, 1}}, {{2, 3}, {4, 1, 5, 2, 6, 3}},
  };
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const auto& [size, levels] = stored[static_cast<std::size_t>(orientation - 1)];
    const auto file = tiffFile(size.width, size.height, 8, 1, 1, orientation, asText(levels));
    EXPECT_EQ(pixelsOf(file), "1,1,1,255 2,2,2,255 3,3,3,255 4,4,4,255 5,5,5,255 6,6,6,255")
        << orientation;
    EXPECT_EQ(imageSize(file), (ImageSize{3, 2}));
  }
}

TEST(PictureOfFile, IsThePictureThatItsBytesDecodeTo) {
  const auto image = patterned(40, 35);
  const std::vector<std::string> files = {
      *encodeJpeg(image),
      flatJpeg(9, 10, {200, 40, 90}, true),
      flatJpeg(9, 10, {77}),
      flatJpeg(9, 10, {255, 128, 255, 128}),
      withExif(flatJpeg(17, 9, {1, 2, 3}), 6, true),
      *encodeTiff(image),
      *encodePng(image),
  };
  for (const auto& bytes : files) {
    const auto decoded = decodeImage(bytes);
    ASSERT_TRUE(decoded);
    const auto picture = pictureOfFile(makeData(bytes));
    ASSERT_TRUE(picture);
    EXPECT_EQ(*picture->file(), bytes);
    EXPECT_EQ(picture->width, decoded->width);
    EXPECT_EQ(picture->height, decoded->height);
    EXPECT_EQ(picture->pixels(), decoded->pixels());
    EXPECT_EQ(wholeImageSize(bytes), (ImageSize{decoded->width, decoded->height}));
    EXPECT_EQ(pictureOfWholeFile(makeData(bytes), *wholeImageSize(bytes))->pixels(),
              decoded->pixels());
  }
}

TEST(PictureOfFile, TellsWhyThereIsNone) {
  const auto whole = *encodeJpeg(patterned(40, 35));
  const std::vector<std::string> files = {"", "no picture", whole.substr(0, whole.size() / 2),
                                          whole.substr(0, 20),
                                          encodePng(patterned(3, 3))->substr(0, 60)};
  for (const auto& bytes : files) {
    std::string reason;
    std::string decodersReason;
    EXPECT_FALSE(pictureOfFile(makeData(bytes), &reason));
    EXPECT_FALSE(decodeImage(bytes, &decodersReason));
    EXPECT_EQ(reason, decodersReason);
    EXPECT_FALSE(reason.empty());
    EXPECT_FALSE(wholeImageSize(bytes));
  }
}

TEST(DecodeImage, FollowsTheExifOrientationOfAJpeg) {
  // Four flat quarters of 16 x 16: red, green, blue and white, so that colours survive.
  Pixels pixels;
  const std::vector<Bytes> quarters = {
      {255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}, {255, 255, 255, 255}};
  for (std::size_t y = 0; y < 32; ++y) {
    for (std::size_t x = 0; x < 32; ++x) {
      const auto& color = quarters[y / 16 * 2 + x / 16];
      pixels.insert(pixels.end(), color.begin(), color.end());
    }
  }
  const auto jpeg = *encodeJpeg(Image(32, 32, pixels));
  const std::vector<std::string> shown = {"RGBW", "GRWB", "WBGR", "BWRG",
                                          "RBGW", "BRWG", "WGBR", "GWRB"};
  for (int orientation = 0; orientation <= 9; ++orientation) {
    for (const bool bigEndian : {false, true}) {
      const auto back = decodeImage(withExif(jpeg, orientation, bigEndian));
      ASSERT_TRUE(back);
      std::string seen;
      for (const std::size_t at : {8U * 32 + 8, 8U * 32 + 24, 24U * 32 + 8, 24U * 32 + 24}) {
        const auto* pixel = &back->pixels()[at * 4];
        const bool white = pixel[0] > 128 && pixel[1] > 128;
        seen += white ? 'W' : pixel[0] > 128 ? 'R' : pixel[1] > 128 ? 'G' : 'B';
      }
      const bool valid = orientation >= 1 && orientation <= 8;
      EXPECT_EQ(seen, shown[valid ? static_cast<std::size_t>(orientation - 1) : 0]) << orientation;
    }
  }
  EXPECT_EQ(imageSize(withExif(flatJpeg(30, 20, {1}), 6, true)), (ImageSize{20, 30}));
}

}  // namespace
}  // namespace ox::images
