// A save reads records ahead inside its transaction, those among them that it had rewritten
// already. When the commit then failed, these values stayed in the cache as if they were stored:
// setting one of them again was "no change", and the edit was lost.
#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

const support::SecondProcess addsAPerson("addsAPerson", [](const auto&) {
  support::StoreBuilder().person("another");
  return 0;
});

void runSql(const char* sql) {
  sqlite::Connection file(support::StoreEnvironment::instance().contactStore().string(),
                          sqlite::Connection::Mode::ReadWrite);
  file.execute(sql);
}

TEST(FailedSave, LeavesNoValueBehindThatWasNeverStored) {
  support::StoreBuilder().persons("p", 13);
  const auto book = ABAddressBook::sharedAddressBook();
  const auto people = book->people();
  const auto first = [&](std::size_t i) {
    return std::get<Object>(people.at(i)->valueForProperty(kABFirstNameProperty)).toText();
  };
  const auto rename = [&](std::size_t i, const char* name) {
    return people.at(i)->setValue_forProperty(Object(name), kABFirstNameProperty);
  };
  // The last of these fails; it reads ahead from p3 and so meets p12 as the save has written it.
  for (const std::size_t i : {12U, 2U, 3U}) ASSERT_TRUE(rename(i, "new"));
  ASSERT_EQ(addsAPerson.run().exitCode, 0);  // so that the save starts with an empty cache
  runSql(
      "CREATE TRIGGER full BEFORE UPDATE ON content WHEN old.record = "
      "(SELECT id FROM record WHERE uid = 'p3') BEGIN SELECT raise(ABORT, 'disk is full'); END");
  ASSERT_FALSE(book->save());
  book->revert();
  EXPECT_EQ(first(12), "p12");
  runSql("DROP TRIGGER full");
  ASSERT_TRUE(rename(12, "new"));
  EXPECT_TRUE(book->hasUnsavedChanges());
  ASSERT_TRUE(book->save());
  EXPECT_EQ(*contactSource().committedValues(RecordKey::of("p12"))->text(property_id::kFirst),
            "new");
}

}  // namespace
}  // namespace ox
