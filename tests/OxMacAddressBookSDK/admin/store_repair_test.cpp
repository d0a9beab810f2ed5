#include "ox/OxMacAddressBookSDK/admin/store_repair.hpp"

#include <filesystem>
#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/tags/tag_table.hpp"
#include "ox/OxMacAddressBookSDK/admin/past.hpp"
#include "ox/OxMacAddressBookSDK/admin/store_copies.hpp"
#include "ox/OxMacAddressBookSDK/admin/store_problems.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

using Sentences = std::vector<std::string>;
const auto& environment() {
  return support::StoreEnvironment::instance();
}

void runSql(const std::filesystem::path& file, const char* sql) {
  sqlite::Connection(file.string(), sqlite::Connection::Mode::ReadWrite).execute(sql);
}

// A repair is to be called before its process has asked the store for anything, so each store is
// filled by another process.
const support::SecondProcess fillsTheStore("fillsTheStore", [](const auto&) {
  StoreBuilder()
      .person("ann", {.first = "Ann"})
      .person("blank")
      .person("tagged")
      .person("member")
      .group("friends", "Friends")
      .member("friends", "member")
      .group("blank group", "")
      .person("gone");
  recordSource().remove(RecordKey::of("gone"), RecordKind::Person);
  if (!recordSource().save({}).done) return 1;
  // The tags of a stranger are those of a record of another store.
  const auto manager = OxTagManager::tagManagerWithID("_local");
  for (const auto* id : {"ann", "tagged", "gone", "stranger"}) {
    manager->addPersonID_forTag(id, "golf");
  }
  return OxTagManager::makeDurable() ? 0 : 1;
});

class StoreRepair : public ::testing::Test {
 protected:
  StoreRepair() { EXPECT_EQ(fillsTheStore.run().exitCode, 0); }

  static void makeOlderBy(int days) {
    runSql(environment().contactStore(),
           ("UPDATE act SET at = at - 86400000 * " + std::to_string(days)).c_str());
  }

  static std::string personsNow() {
    std::string ids;
    for (const auto& record : ABAddressBook::sharedAddressBook()->people()) {
      ids += record->uniqueId().value_or("-") + " ";
    }
    return ids;
  }

  static std::string taggedNow() {
    std::string ids;
    for (const auto& [who, tags] : allTagsIn(environment().tagStore().string())) {
      ids += who.second + " ";
    }
    return ids;
  }
};

TEST_F(StoreRepair, RemovesTagsOfNobodyAndWhatHoldsNothingAsOneActThatCanBeTakenBack) {
  makeOlderBy(2);
  const auto report = repairStoreAndTags();
  EXPECT_EQ(report.mended, (Sentences{"removed blank, which holds nothing",
                                      "removed the tags of gone, which is no record any more"}));
  EXPECT_EQ(report.left, Sentences());
  ASSERT_EQ(storeCopies().size(), 1U);
  EXPECT_EQ(report.copy, storeCopies()[0].path);
  EXPECT_EQ(storeCopies()[0].reason, "repair");
  EXPECT_EQ(personsNow(), "ann tagged member ");
  EXPECT_EQ(taggedNow(), "ann stranger tagged ");
  EXPECT_TRUE(undoCommand().done);
  EXPECT_EQ(personsNow(), "ann blank tagged member ");
  EXPECT_EQ(taggedNow(), "ann gone stranger tagged ");
  EXPECT_EQ(problemsOfStoreAndTags(), Sentences());
}

// Another program may still be about to save what belongs into it.
TEST_F(StoreRepair, KeepsWhatWasMadeToday) {
  const auto report = repairStoreAndTags();
  EXPECT_EQ(report.mended, (Sentences{"removed the tags of gone, which is no record any more"}));
  EXPECT_EQ(personsNow(), "ann blank tagged member ");
}

// Nobody knows then what was done to it.
TEST_F(StoreRepair, KeepsWhatWasMadeBeforeTheJournalBegins) {
  makeOlderBy(2);
  runSql(environment().contactStore(),
         "DELETE FROM act WHERE next_record <= (SELECT max(id) FROM record)");
  const auto report = repairStoreAndTags();
  EXPECT_EQ(report.mended, (Sentences{"removed the tags of gone, which is no record any more"}));
  EXPECT_EQ(personsNow(), "ann blank tagged member ");
}

TEST_F(StoreRepair, RemovesNothingWhileSomethingIsDamaged) {
  makeOlderBy(2);
  runSql(environment().contactStore(), "UPDATE content SET properties = x'00' WHERE record = 1");
  const auto report = repairStoreAndTags();
  EXPECT_EQ(report.mended, Sentences());
  EXPECT_EQ(report.left.size(), 1U);
  EXPECT_EQ(report.copy, "");
  EXPECT_EQ(taggedNow(), "ann gone stranger tagged ");
}

TEST_F(StoreRepair, MakesTheIndexOfTheTagsAnew) {
  runSql(environment().tagStore(), "DROP INDEX tag_person; DELETE FROM tag WHERE person = 'gone'");
  EXPECT_NE(problemsOfStoreAndTags(), Sentences());
  const auto report = repairStoreAndTags();
  EXPECT_EQ(report.mended, (Sentences{"made the index tag_person anew, which was missing"}));
  EXPECT_EQ(report.left, Sentences());
  EXPECT_TRUE(std::filesystem::exists(report.copy + ".tags"));
  EXPECT_EQ(problemsOfStoreAndTags(), Sentences());
}

TEST_F(StoreRepair, DoesNothingASecondTime) {
  makeOlderBy(2);
  repairStoreAndTags();
  const auto report = repairStoreAndTags();
  EXPECT_EQ(report.mended, Sentences());
  EXPECT_EQ(report.copy, "");
  EXPECT_EQ(storeCopies().size(), 1U);
}

}  // namespace
}  // namespace ox::test
