#include "ox/base/private_file.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <system_error>

namespace ox {
namespace {

unsigned rightsOf(const std::filesystem::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0U;
}

TEST(PrivateFile, IsOneThatOnlyTheUserCanRead) {
  auto pattern = (std::filesystem::temp_directory_path() / "ox-location-XXXXXX").string();
  ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
  const std::filesystem::path folder = pattern;
  ::chmod(folder.c_str(), 0755);
  const auto file = folder / "x" / "y" / "a.db";
  EXPECT_TRUE(createPrivateFile(file));
  EXPECT_EQ(rightsOf(file), 0600U);
  EXPECT_EQ(rightsOf(folder / "x" / "y"), 0700U);
  EXPECT_EQ(rightsOf(folder / "x"), 0700U);
  EXPECT_EQ(rightsOf(folder), 0755U);

  std::ofstream(file) << "content";
  ::chmod(file.c_str(), 0640);
  EXPECT_FALSE(createPrivateFile(file));
  EXPECT_EQ(std::filesystem::file_size(file), 7U);
  EXPECT_EQ(rightsOf(file), 0640U);
  EXPECT_THROW(createPrivateFile(file / "below"), std::system_error);
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace ox
