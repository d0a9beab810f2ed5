// What a host is told of failures below the silent operations: by kind, with the record or the
// file.
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/switched_source.hpp"

namespace ox {
namespace {

using support::StoreBuilder;

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

std::shared_ptr<ABPerson> personNamed(const std::string& identifier) {
  const auto record = ABAddressBook::sharedAddressBook()->recordForUniqueId(identifier);
  return std::dynamic_pointer_cast<ABPerson>(record);
}

TEST(WatchedFailures, OfARefusedValueNameTheRecord) {
  StoreBuilder().person("p1");
  const auto person = personNamed("p1");
  const failures::Watch watch;
  EXPECT_FALSE(person->setValue_forProperty(Object(std::int64_t{1}), kABFirstNameProperty));
  EXPECT_EQ(
      watch.all(),
      (std::vector<Failure>{{FailureKind::Refused, "a value of the wrong type for First", "p1"}}));
}

TEST(WatchedFailures, OfADamagedRecordNameTheRecord) {
  StoreBuilder().person("p1");
  {
    sqlite::Connection file(storePath(), sqlite::Connection::Mode::ReadWrite);
    file.execute("UPDATE content SET properties = x'01020304050607080900'");
  }
  const auto person = personNamed("p1");
  const failures::Watch watch;
  EXPECT_EQ(person->valueForProperty(kABFirstNameProperty), PropertyValue());
  ASSERT_TRUE(watch.last());
  EXPECT_EQ(watch.last()->kind, FailureKind::Corrupt);
  EXPECT_EQ(watch.last()->subject, "p1");
}

TEST(WatchedFailures, OfAStoreThatAnotherProgramKeepsLockedAreBusy) {
  StoreBuilder().person("p1");
  const auto person = personNamed("p1");
  sqlite::Connection holder(storePath(), sqlite::Connection::Mode::ReadWrite);
  holder.execute("BEGIN IMMEDIATE");
  const failures::Watch watch;
  EXPECT_TRUE(person->setValue_forProperty(Object("Ann"), kABFirstNameProperty));
  EXPECT_TRUE(watch.isClear()) << "kept in memory until the save";
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->save());
  EXPECT_EQ(watch.all(),
            (std::vector<Failure>{
                {FailureKind::Busy, storePath() + ": database is locked", storePath()}}));
}

TEST(WatchedFailures, OfAStoreThatCannotBeReadAreToldByTheFirstWatchAfterThem) {
  support::temporaryFile("contacts.db", "BEGIN:VCARD\nEND:VCARD\n");
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 0U);
  const failures::Watch watch;
  EXPECT_TRUE(watch.isClear());
  const std::vector<Failure> expected = {
      {FailureKind::NotAStore, storePath() + ": is not a contact store", storePath()}};
  EXPECT_EQ(watch.earlier(), expected);
  EXPECT_EQ(CNContactStore::init()->containersMatchingPredicate_error(std::nullopt, nullptr).size(),
            0U);
  EXPECT_EQ(watch.all(), expected) << "it cannot be read now either";
}

// A threaded host: what one thread's work is refused is not told to the other.
TEST(WatchedFailureThreads, AreThoseOfTheThreadsOwnWork) {
  StoreBuilder().person("p1").person("p2");
  const auto edits = [](const std::string& identifier, const PropertyValue& value) {
    const auto person = personNamed(identifier);
    const failures::Watch watch;
    for (int i = 0; i < 200; ++i) person->setValue_forProperty(value, kABFirstNameProperty);
    return watch.counts();
  };
  auto refused = std::async(std::launch::async, edits, "p1", Object(std::int64_t{1}));
  auto taken = std::async(std::launch::async, edits, "p2", Object("Bea"));
  EXPECT_EQ(refused.get(), (failures::Counts{200, 0}));
  EXPECT_EQ(taken.get(), failures::Counts());
}

}  // namespace
}  // namespace ox
