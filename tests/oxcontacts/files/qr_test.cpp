#include <gtest/gtest.h>
#include <png.h>

#include "ox/base/text/display_width.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

// The side of the picture in pixels, and whether its corner is the blank margin.
std::pair<unsigned, bool> sideOf(const std::string& file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_NE(png_image_begin_read_from_file(&image, file.c_str()), 0) << &image.message[0];
  image.format = PNG_FORMAT_GRAY;
  std::vector<png_byte> pixels(PNG_IMAGE_SIZE(image));
  EXPECT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0);
  EXPECT_EQ(image.width, image.height);
  return {image.width, pixels.at(0) == 255 && pixels.at(32 * image.width + 32) == 0};
}

TEST(QrCommand, ShowsASquareWithItsMargin) {
  run({"add-person", "_local", "name=Ann Lee", "phone=+1 555 1"});
  const auto shown = run({"qr", "Ann Lee"});
  EXPECT_EQ(shown.exitCode, 0);
  EXPECT_EQ(shown.errors, "");
  std::istringstream lines(shown.output);
  std::vector<std::string> rows;
  for (std::string line; std::getline(lines, line);) rows.push_back(line);
  const auto side = displayWidth(rows.at(0));
  EXPECT_EQ(rows.size(), (side + 1) / 2);
  for (const auto& row : rows) EXPECT_EQ(displayWidth(row), side);
  std::string margin;
  for (std::size_t i = 0; i < side; ++i) margin += "█";
  EXPECT_EQ(rows[0], margin);
  EXPECT_EQ(rows[1], margin);
  // The finder in the corner begins dark, with a light ring within it.
  EXPECT_TRUE(rows[2].starts_with("████ ▄▄▄▄▄ ")) << rows[2];

  const auto file = support::temporaryPath("ann.png").string();
  EXPECT_EQ(run({"qr", "Ann Lee", "-o", file}).exitCode, 0);
  const auto [pixels, hasMargin] = sideOf(file);
  EXPECT_EQ(pixels, 8 * side);
  EXPECT_TRUE(hasMargin);
}

TEST(QrCommand, LeavesOutWhatDoesNotFit) {
  run({"add-person", "_local", "name=Ann Lee", "phone=+1 555 1", "note=" + std::string(3000, 'x')});
  const auto shown = run({"qr", "Ann Lee"});
  EXPECT_EQ(shown.exitCode, 0);
  EXPECT_EQ(shown.errors,
            "oxcontacts: the card is too long for a QR code: names, company, numbers and addresses "
            "alone\n");
  run({"add-person", "_local", "name=" + std::string(3000, 'y')});
  const auto tooLong = run({"qr", "yyyy"});
  EXPECT_EQ(tooLong.exitCode, 1);
  EXPECT_TRUE(tooLong.errors.ends_with("oxcontacts: the card is too long for a QR code\n"));
}

// A number with a label of the user's own stands in a group.
TEST(QrCommand, KeepsNumbersOfAnyLabelInTheShortCard) {
  const auto shortCode = [](const std::string& number) {
    run({"add-person", "_local", "name=Ann" + number, "phone:Boat=" + number,
         "note=" + std::string(3000, 'x')});
    return run({"qr", "Ann" + number}).output;
  };
  EXPECT_GT(shortCode("1234567890123456789012345678901234567890").size(), shortCode("1").size());
}

}  // namespace
}  // namespace ox::program_tests
