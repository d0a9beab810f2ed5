#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "ox/images/image_file.hpp"
#include "ox/platform/system/NSBundle.hpp"

namespace ox {
namespace {

TEST(NSBundle, HoldsTheFiftyPicturesInTheirFiveSizes) {
  const auto bundle = NSBundle::bundleForClass("OxMacAddressBook");
  const std::pair<const char*, std::uint32_t> sizes[] = {
      {"_thumbnail", 32}, {"_logo1", 64}, {"_logo2", 128}, {"_logo3", 256}, {"_logo4", 512}};
  for (const std::string stem : {"mac", "google", "qq", "facebook", "yahoo", "linkedin", "aol",
                                 "exchange", "icloud", "other"}) {
    for (const auto& [ending, size] : sizes) {
      const auto path = bundle->pathForResource_ofType("pic_" + stem + ending, "png");
      ASSERT_TRUE(path) << stem << ending;
      const auto image = images::imageWithContentsOfFile(*path);
      ASSERT_TRUE(image) << *path;
      EXPECT_EQ(image->width, size);
      EXPECT_EQ(image->height, size);
    }
  }
}

TEST(NSBundle, MissesWhatIsNoFileOfItsOwn) {
  unsetenv("OX_RESOURCES");
  const auto bundle = NSBundle::bundleForClass("OxMacAddressBook");
  EXPECT_EQ(bundle->pathForResource_ofType("pic_nobody_logo1", "png"), Text());
  EXPECT_EQ(bundle->pathForResource_ofType("pic_mac_logo1", "jpg"), Text());
  EXPECT_EQ(bundle->pathForResource_ofType(std::nullopt, "png"), Text());
  EXPECT_EQ(bundle->pathForResource_ofType("", "png"), Text());
  EXPECT_EQ(bundle->pathForResource_ofType("../resources/pic_mac_logo1", "png"), Text());
  EXPECT_EQ(bundle->pathForResource_ofType(std::string("pic_mac_logo1.png\0", 18), ""), Text());
  EXPECT_NE(bundle->pathForResource_ofType("pic_mac_logo1.png", std::nullopt), Text());
}

TEST(NSBundle, LooksInTheConfiguredFolderLast) {
  const auto folder =
      std::filesystem::temp_directory_path() / ("ox-res-" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  for (const auto* name : {"only_here.png", "pic_mac_logo1.png"})
    std::ofstream(folder / name) << "x";
  setenv("OX_RESOURCES", folder.c_str(), 1);
  const auto bundle = NSBundle::bundleForClass("OxMacAddressBook");
  EXPECT_EQ(bundle->pathForResource_ofType("only_here", "png"),
            (folder / "only_here.png").string());
  EXPECT_NE(bundle->pathForResource_ofType("pic_mac_logo1", "png"),
            (folder / "pic_mac_logo1.png").string());
  std::filesystem::remove_all(folder);
  EXPECT_EQ(bundle->pathForResource_ofType("only_here", "png"), Text());
}

}  // namespace
}  // namespace ox
