#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/base64.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/images/picture_files.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::fileBytes;
using support::temporaryFile;
using support::temporaryPath;

TEST(PhotoCommand, StoresShowsAndRemovesAPicture) {
  run({"add-person", "_local", "name=Ann"});
  const auto picture = images::patterned(9, 7);
  const auto file = temporaryFile("photo.tiff", *images::encodeTiff(picture)).string();
  EXPECT_EQ(run({"photo", "Ann", "--set", file}).errors,
            "oxcontacts: set the picture of Ann (9 x 7 pixels)\n");
  const auto out = temporaryFile("out.tiff", "old").string();
  EXPECT_EQ(run({"photo", "Ann", "--get", out}).exitCode, 0);
  const auto stored = images::decodeImage(fileBytes(out));
  ASSERT_TRUE(stored);
  EXPECT_EQ(*stored, picture);
  EXPECT_EQ(run({"photo", "Ann", "--clear"}).exitCode, 0);
  const auto none = run({"photo", "Ann", "--get", out});
  EXPECT_EQ(none.exitCode, 4);
  EXPECT_EQ(none.errors, "oxcontacts: Ann has no picture\n");
  EXPECT_EQ(images::decodeImage(fileBytes(out)) != nullptr, true);
}

TEST(PhotoCommand, GivesBackTheVeryBytesThatACardBrought) {
  const auto jpeg = images::flatJpeg(4, 4, {200, 10, 10});
  run({"import", temporaryFile("one.vcf", card({"N:;Ann;;;", "FN:Ann",
                                                "PHOTO;ENCODING=b;TYPE=JPEG:" + base64(jpeg)}))});
  const auto out = temporaryPath("out.jpg").string();
  EXPECT_EQ(run({"photo", "Ann", "--get", out}).exitCode, 0);
  EXPECT_EQ(fileBytes(out), jpeg);
}

TEST(PhotoCommand, RefusesWhatIsNoUsablePicture) {
  run({"add-person", "_local", "name=Ann"});
  const auto good = temporaryFile("good.tiff", *images::encodeTiff(images::patterned(2, 2)));
  run({"photo", "Ann", "--set", good});
  const auto huge = temporaryFile("huge.png", "");
  std::filesystem::resize_file(huge, (std::uintmax_t{64} << 20U) + 1);
  struct Row {
    std::string file;
    const char* reason;
  };
  const std::vector<Row> rows = {
      {temporaryFile("text.png", "no picture at all"), "no picture that can be used: "},
      {temporaryFile("empty.png", ""), "no picture that can be used: "},
      {temporaryFile("100.png", images::pngClaiming(10'000, 10'000)),
       "no picture that can be used"},
      {temporaryFile("bomb.png", images::pngClaiming(8'000, 8'000)), "no picture that can be used"},
      {temporaryFile("wide.png", images::pngClaiming(2'000'000'000, 2'000'000'000)), "no picture"},
      {huge, "is too large"},
      {temporaryPath("missing.png"), "does not exist"},
      {support::StoreEnvironment::instance().folder(), "is a directory"},
      {"/dev/zero", "is not a regular file"},
  };
  for (const auto& row : rows) {
    const auto result = run({"photo", "Ann", "--set", row.file});
    EXPECT_EQ(result.exitCode, 1) << row.file;
    EXPECT_NE(result.errors.find(row.file + ": " + row.reason), std::string::npos) << result.errors;
  }
  const auto out = temporaryPath("kept.tiff").string();
  EXPECT_EQ(run({"photo", "Ann", "--get", out}).exitCode, 0);
  EXPECT_EQ(fileBytes(out), fileBytes(good));
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  EXPECT_EQ(run({"photo", "Ann", "--get", store}).exitCode, 1);
  EXPECT_EQ(run({"photo", "Ann"}).exitCode, 2);
  for (const auto* option : {"--set", "--get"}) {
    EXPECT_EQ(run({"photo", "Ann", option, ""}).exitCode, 2);
  }
  EXPECT_EQ(run({"photo", "Ann", "--get", out}).exitCode, 0) << "an empty path clears nothing";
  EXPECT_EQ(run({"photo", "Ann", "--clear", "--get", out}).exitCode, 2);
  EXPECT_EQ(run({"photo", "Nobody", "--clear"}).exitCode, 4);
}

}  // namespace
}  // namespace ox::program_tests
