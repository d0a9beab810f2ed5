#include "ox/base/planted.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ox {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kUser = 12345;
constexpr uid_t kOther = 12346;

// What is wrong with the path, its folder taken out; "" when nothing is.
std::string refusalOf(const fs::path& path, const fs::path& folder) {
  try {
    refusePlanted(path);
    return {};
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code().value(), EACCES);
    std::string text = error.what();
    const auto start = folder.string() + "/";
    for (auto at = text.find(start); at != std::string::npos; at = text.find(start)) {
      text.erase(at, start.size());
    }
    return text;
  }
}

// A folder that everybody may write into, as the system's temporary one is, with a folder of each
// user in it.
class Planted : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can make files of other users";
    std::string name = (fs::temp_directory_path() / "ox-planted-XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    folder = name;
    ASSERT_EQ(::chmod(name.c_str(), 01777), 0);
    for (const auto owner : {kUser, kOther}) {
      fs::create_directory(folder / std::to_string(owner));
      give(std::to_string(owner), owner);
    }
  }
  void TearDown() override {
    if (folder.empty()) return;
    EXPECT_EQ(::seteuid(0), 0);
    fs::remove_all(folder);
  }

  void give(const fs::path& name, uid_t owner) {
    ASSERT_EQ(::lchown((folder / name).c_str(), owner, owner), 0);
  }
  void link(const fs::path& name, const fs::path& target, uid_t owner) {
    fs::create_symlink(target, folder / name);
    give(name, owner);
  }
  std::string refused(const fs::path& name) { return refusalOf(folder / name, folder); }

  fs::path folder;
};

TEST_F(Planted, LinksOfOthersInAFolderOfAllAreNotFollowed) {
  link("file", "12345/file", kOther);
  link("way", "12345", kOther);
  link("own", "12345", kUser);
  link("system", "12345", 0);
  link("12345/on", "../way/x", kUser);
  ASSERT_EQ(::seteuid(kUser), 0);
  const std::string end = " of another user (12346), which is not followed: Permission denied";
  EXPECT_EQ(refused("file"), "file: file is a link" + end);
  EXPECT_EQ(refused("way/deep/file"), "way/deep/file: way is a link" + end);
  EXPECT_EQ(refused("own/new/../file"), "");
  EXPECT_EQ(refused("system/file"), "");
  EXPECT_EQ(refused("own/on"), "own/on: way is a link" + end);
  EXPECT_EQ(refused("not there"), "");
}

TEST_F(Planted, LinksInTheFolderOfWhomeverTheyBelongToAreFollowedButForTheSuperuser) {
  link("12346/link", "file", kOther);
  EXPECT_NE(refused("12346/link"), "");
  ASSERT_EQ(::seteuid(kUser), 0);
  EXPECT_EQ(refused("12346/link"), "");
}

TEST_F(Planted, PipesOfOthersAreNotWrittenInto) {
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0666), 0);
  ASSERT_EQ(::mkfifo((folder / "own").c_str(), 0666), 0);
  give("pipe", kOther);
  give("own", kUser);
  ASSERT_EQ(::seteuid(kUser), 0);
  EXPECT_EQ(refused("pipe"),
            "pipe: pipe is a pipe or device of another user (12346), which is not "
            "followed: Permission denied");
  EXPECT_EQ(refused("own"), "");
  EXPECT_EQ(refusalOf("/dev/null", "/"), "");
}

TEST_F(Planted, LinksInACircleAreLeftToWhoeverOpensThem) {
  link("a", "b", kUser);
  link("b", "a", kUser);
  ASSERT_EQ(::seteuid(kUser), 0);
  EXPECT_EQ(refused("a/file"), "");
}

}  // namespace
}  // namespace ox
