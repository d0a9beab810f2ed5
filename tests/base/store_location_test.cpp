#include "ox/base/store_location.hpp"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
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

TEST(StoreAddress, TellsWhatLiesBesideTheFile) {
  const StoreAddress store("/a/b.db");
  EXPECT_EQ(store.name(), "/a/b.db");
  EXPECT_EQ(store.file(), "/a/b.db");
  EXPECT_EQ(store.folder(), "/a");
  EXPECT_EQ(store.tagFile(), "/a/b.db.tags");
  EXPECT_EQ(StoreAddress("b.db").folder(), "");
  EXPECT_EQ(StoreAddress("b.db"), StoreAddress("b.db"));
  EXPECT_NE(StoreAddress("b.db"), store);
}

TEST(StoreAddress, OfAStoreThatIsNotThereIsNotReadOnly) {
  EXPECT_FALSE(StoreAddress("/no/such/folder/b.db").isReadOnly());
  const bool mayWriteAll = ::geteuid() == 0;
  EXPECT_NE(StoreAddress("/etc/passwd").isReadOnly(), mayWriteAll);
}

// The last case: the choice lasts until the process ends.
TEST(StoreLocation, OfThisProcessIsTheChosenOneUntilItIsInUse) {
  set("OX_CONTACT_STORE", "/a/b.db");
  set("OX_TAG_STORE", nullptr);
  EXPECT_FALSE(useContactStore(""));
  EXPECT_EQ(contactStorePath(), "/a/b.db");
  EXPECT_TRUE(useContactStore("/c/first.db"));
  EXPECT_TRUE(useContactStore("/c/d.db"));
  EXPECT_EQ(contactStorePath(), "/c/d.db");
  EXPECT_EQ(tagStorePath(), "/c/d.db.tags");
  EXPECT_TRUE(isStoreFile("/c/d.db-wal"));
  EXPECT_FALSE(isStoreFile("/a/b.db"));
  settleStoreLocation();
  EXPECT_FALSE(useContactStore("/e.db"));
  EXPECT_EQ(contactStorePath(), "/c/d.db");
  set("OX_TAG_STORE", "/t");
  EXPECT_EQ(tagStorePath(), "/t");
}

}  // namespace
}  // namespace ox
