#include <gtest/gtest.h>
#include <thread>

#include "ox/OxMacAddressBookSDK/registry/version_gate.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

TEST(VersionGate, ComparesEachNumberOnItsOwn) {
  const struct {
    const char* version;
    bool above11;
    bool above13;
  } rows[] = {
      {"10.11", true, false}, {"10.12", true, false},     {"10.13", true, true},
      {"10.15", true, true},  {"10.10", false, false},    {"9.15", false, false},
      {"11.0", false, false}, {"12.0", false, false},     {"11.6", false, false},
      {"11.11", true, false}, {"nonsense", false, false},
  };
  for (const auto& row : rows) {
    support::setSystemVersion(row.version);
    EXPECT_EQ(VersionGate(10).answer(), row.above11) << row.version;
    EXPECT_EQ(VersionGate(12).answer(), row.above13) << row.version;
  }
}

TEST(SystemVersion, IsAskedOnceInAProcess) {
  support::setSystemVersion("10.12");
  EXPECT_TRUE(OxMacAddressBook::SystemVersionAbove10_11());
  EXPECT_FALSE(OxMacAddressBook::SystemVersionAbove10_13());
  support::setSystemVersion("10.13");
  EXPECT_FALSE(OxMacAddressBook::SystemVersionAbove10_13());
  support::setSystemVersion("10.10");
  EXPECT_TRUE(OxMacAddressBook::SystemVersionAbove10_11());
}

TEST(SystemVersion, AFailureIsKeptAsANo) {
  support::setSystemVersion("broken");
  EXPECT_FALSE(OxMacAddressBook::SystemVersionAbove10_11());
  support::setSystemVersion("10.15");
  EXPECT_FALSE(OxMacAddressBook::SystemVersionAbove10_11());
}

TEST(SharedInstances, AreTheSameObjectsForEveryThread) {
  std::vector<std::shared_ptr<OxMacAddressBook>> seen(8);
  std::vector<std::thread> threads;
  threads.reserve(seen.size());
  for (auto& each : seen) {
    threads.emplace_back([&each] { each = OxMacAddressBook::ShareAddressBook(); });
  }
  for (auto& thread : threads) thread.join();
  for (const auto& each : seen) EXPECT_EQ(each, seen.front());
  EXPECT_EQ(&OxMacAddressBook::addressArrayQueue(), &OxMacAddressBook::addressArrayQueue());
}

TEST(SharedInstances, ThePlainBookHasNothingButItsTagStore) {
  const auto book = OxMacAddressBook::ShareAddressBook();
  EXPECT_EQ(book->ID(), Text());
  EXPECT_EQ(book->name(), Text());
  EXPECT_EQ(book->validContainerID(), Text());
  EXPECT_EQ(book->validContainerID(), Text());
  EXPECT_EQ(book->serverType(), 0);
  EXPECT_EQ(book->allPersonArray(), nullptr);
  EXPECT_EQ(book->tagManager(), OxTagManager::tagManagerWithID("mac_addressbookTagsID"));
}

TEST(ResetGAddressArray, DoesNothingAtAll) {
  StoreBuilder().container("A", "iCloud", 3).person("p", {});
  const auto before = idsOf(OxMacAddressBook::addressBookArray());
  bool called = false;
  OxMacAddressBook::resetGAddressArray([&called](double, bool) { called = true; });
  OxMacAddressBook::resetGAddressArray(nullptr);
  StoreBuilder().container("B", "Google", 3).person("q", {});
  EXPECT_FALSE(called);
  EXPECT_EQ(before, "_local A");
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray()), before);
}

}  // namespace
}  // namespace ox::test
