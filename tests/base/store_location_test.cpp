#include "ox/base/store_location.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace ox {
namespace {

struct Row {
  const char* contactStore;
  const char* tagStore;
  const char* dataHome;
  std::string contacts;
  std::string tags;
};

void set(const char* name, const char* value) {
  if (value == nullptr) {
    ::unsetenv(name);
  } else {
    ::setenv(name, value, 1);
  }
}

TEST(StoreLocation, FollowsTheVariablesInTheirOrder) {
  ::setenv("HOME", "/home/ann", 1);
  const std::string underHome = "/home/ann/.local/share/oxcontacts/contacts.db";
  const std::vector<Row> rows = {
      {nullptr, nullptr, nullptr, underHome, underHome + ".tags"},
      {"", "", "", underHome, underHome + ".tags"},
      {nullptr, nullptr, "relative", underHome, underHome + ".tags"},
      {nullptr, nullptr, "/data", "/data/oxcontacts/contacts.db",
       "/data/oxcontacts/contacts.db.tags"},
      {"/a/b.db", nullptr, "/data", "/a/b.db", "/a/b.db.tags"},
      {"/a/b.db", "/t", "/data", "/a/b.db", "/t"},
      {nullptr, "/t", "/data", "/data/oxcontacts/contacts.db", "/t"},
  };
  for (const auto& row : rows) {
    set("OX_CONTACT_STORE", row.contactStore);
    set("OX_TAG_STORE", row.tagStore);
    set("XDG_DATA_HOME", row.dataHome);
    EXPECT_EQ(contactStorePath(), row.contacts);
    EXPECT_EQ(tagStorePath(), row.tags);
  }
}

unsigned rightsOf(const std::filesystem::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0U;
}

TEST(StoreLocation, MakesAFileThatOnlyTheUserCanRead) {
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
