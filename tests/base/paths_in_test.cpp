#include "ox/base/paths_in.hpp"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace ox {
namespace {

class PathsIn : public testing::Test {
 protected:
  PathsIn() : folder_(testing::TempDir() + "paths-in-XXXXXX") {
    EXPECT_NE(::mkdtemp(folder_.data()), nullptr);
  }
  ~PathsIn() override { std::filesystem::remove_all(folder_); }

  std::string folder_;
};

TEST_F(PathsIn, NamesFilesAndFoldersAndNotItself) {
  std::ofstream(folder_ + "/.a") << "a";
  std::filesystem::create_directory(folder_ + "/b");
  auto paths = pathsIn(folder_);
  std::ranges::sort(paths);
  EXPECT_EQ(paths, (std::vector<std::string>{folder_ + "/.a", folder_ + "/b"}));
}

TEST_F(PathsIn, OfAFolderThatIsNotThereThrows) {
  EXPECT_THROW(pathsIn(folder_ + "/none"), std::filesystem::filesystem_error);
}

}  // namespace
}  // namespace ox
