#include <gtest/gtest.h>
#include <stdexcept>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

BookList discover(const ProgressCallback& progress) {
  return OxMacAddressBook::addressBookArrayWithProgressBlock2(progress);
}

TEST(ContainerFirstDiscovery, ReportsContainersThenContactsThenDone) {
  StoreBuilder()
      .person("1", {})
      .person("2", {})
      .container("A", "iCloud", 3)
      .person("3", {})
      .container("B", "empty", 3);
  Sequence reports;
  const auto books = discover(reports.callback());
  // 4 + 0.96 * (33.33.., 66.66.., 100), the quotients and 0.96 in single precision.
  EXPECT_EQ(reports.text(), "1 2 3 4 35.999998064041165 67.99999612808233 99.99999785423279 100!");
  EXPECT_EQ(idsOf(books), "_local A");
  EXPECT_EQ(cachedIn(*books.element(0)), "1 2");
  EXPECT_EQ(cachedIn(*books.element(1)), "3");
  EXPECT_EQ(person("3")->addressBookID(), Text("A"));
  reports.clear();
  discover(reports.callback());
  EXPECT_EQ(reports.text(), "");
}

TEST(ContainerFirstDiscovery, WithoutCallbackFailsOnlyWhereItWouldBuild) {
  StoreBuilder().person("1", {});
  EXPECT_THROW(discover(nullptr), std::invalid_argument);
  Sequence reports;
  discover(reports.callback());
  EXPECT_EQ(reports.text(), "1 2 100.00000190734863 100!");
  EXPECT_EQ(idsOf(discover(nullptr)), "_local");
}

TEST(ContainerFirstDiscovery, TheLocalContainerIsListedWhenItIsNotAccepted) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real())
      .person("1:ABPerson", {})
      .person("known", {})
      .container("A", "iCloud", 3)
      .person("3", {});
  source.hideFromRecordView("1:ABPerson");
  Sequence reports;
  const auto books = discover(reports.callback());
  EXPECT_EQ(idsOf(books), "_local A");
  // Loaded at once, so its contacts are no part of the second phase.
  EXPECT_EQ(cachedIn(*books.element(0)), "known");
  EXPECT_EQ(reports.text(), "1 2 3 100.00000286102295 100!");
}

TEST(ContainerFirstDiscovery, OfTwoLocalContainersTheLastOneStandsIn) {
  StoreBuilder().container("L2", "Second", 1).container("A", "iCloud", 3).person("p", {});
  Sequence reports;
  EXPECT_EQ(idsOf(discover(reports.callback())), "L2 A");
}

TEST(ContainerFirstDiscovery, CountsContactsThatNoPersonRecordStandsFor) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).person("known", {}).person("lost", {});
  source.hideFromRecordView("lost");
  Sequence reports;
  const auto books = discover(reports.callback());
  EXPECT_EQ(reports.text(), "1 2 51.000000953674316 100.00000190734863 100!");
  EXPECT_EQ(cachedIn(*books.element(0)), "known");
}

TEST(ContainerFirstDiscovery, IsNotClampedWithAHundredContainers) {
  StoreBuilder builder;
  builder.person("p", {});
  for (int i = 0; i < 100; ++i) builder.container("C" + std::to_string(i), "empty", 3);
  std::string last;
  discover([&last](double value, bool finished) {
    if (value > 100 || finished) last += support::shortest(value) + ' ';
  });
  // 101 containers spend 102 percent, and the one contact brings it back by two.
  EXPECT_EQ(last, "101 102 100.00000004470348 100 ");
}

TEST(ContainerFirstDiscovery, SharesItsListWithTheRecordFirstOne) {
  StoreBuilder().container("A", "iCloud", 3).container("B", "Google", 3).group("g", "G");
  Sequence reports;
  const auto byContainers = discover(reports.callback());
  reports.clear();
  const auto byRecords = OxMacAddressBook::addressBookArrayWithProgressBlock(reports.callback());
  EXPECT_EQ(reports.text(), "100!");
  EXPECT_EQ(byContainers.element(0), byRecords.element(0));
}

TEST(ContainerFirstDiscovery, GivesTheListThatTheRecordFirstOneBuilt) {
  StoreBuilder().person("p", {});
  const auto byRecords = OxMacAddressBook::addressBookArray();
  Sequence reports;
  EXPECT_EQ(discover(reports.callback()).element(0), byRecords.element(0));
  EXPECT_EQ(reports.text(), "");
}

TEST(ContainerFirstDiscovery, ACallbackThatThrowsLeavesTheListAbsent) {
  StoreBuilder().person("p", {});
  EXPECT_THROW(discover([](double, bool finished) {
                 if (finished) throw std::runtime_error("enough");
               }),
               std::runtime_error);
  EXPECT_THROW(discover(nullptr), std::invalid_argument);
  Sequence reports;
  EXPECT_EQ(cachedIn(*discover(reports.callback()).element(0)), "p");
}

}  // namespace
}  // namespace ox::test
