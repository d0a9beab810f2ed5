#include "ox/OxMacAddressBookSDK/admin/store_copy.hpp"

#include <filesystem>
#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/tags/tag_table.hpp"
#include "ox/OxMacAddressBookSDK/admin/store_problems.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/upkeep/missed_tags.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

using std::filesystem::exists;
using support::temporaryPath;

std::int64_t countIn(const std::string& path, const std::string& table) {
  return sqlite::Connection(path, sqlite::Connection::Mode::ReadOnly)
      .queryInteger("SELECT count(*) FROM " + table);
}

void tag(const std::string& person) {
  OxTagManager::tagManagerWithID("_local")->addPersonID_forTag(person, "chess");
}

TEST(StoreCopy, HoldsTheStoreAndItsTagsOnceItIsPut) {
  StoreBuilder().persons("p", 3).group("g", "Friends");
  tag("p0");
  const std::string target = temporaryPath("copy.db");
  StoreCopy copy(target);
  const auto files = copy.files();
  ASSERT_EQ(files.size(), 4U);
  EXPECT_EQ(copy.take(), (RecordCounts{1, 3}));
  EXPECT_TRUE(exists(files[0]) && exists(files[2]));
  EXPECT_EQ(files[1], files[0] + "-journal") << "while SQLite writes it";
  EXPECT_EQ(files[3], files[2] + "-journal");
  EXPECT_FALSE(exists(target));
  StoreBuilder().person("later", {});
  copy.put();
  EXPECT_EQ(countIn(target, "record"), 4);
  EXPECT_EQ(countIn(target + ".tags", "tag"), 1);
  for (const auto& file : files) EXPECT_FALSE(exists(file)) << file;
}

// An act that is in the store, and that the tags have not followed.
void commitTag(const std::string& person, const std::string& tag) {
  SaveRequest request;
  request.tags = {{"_local", person, {}, {tag}}};
  ASSERT_TRUE(containerSource().execute(request)) << request.reason;
}

AllTags tagsOf(const std::string& person, const std::vector<std::string>& tags) {
  return {{{"_local", person}, tags}};
}

TEST(StoreCopy, HoldsTheTagsOfActsThatTheTagFileHasNotFollowed) {
  StoreBuilder().person("p", {});
  const std::string target = temporaryPath("copy.db");
  const auto copied = [&] {
    StoreCopy copy(target);
    copy.take();
    copy.put();
    return allTagsIn(target + ".tags");
  };
  commitTag("p", "chess");
  EXPECT_EQ(copied(), tagsOf("p", {"chess"})) << "there is no tag file yet";
  tag("q");
  commitTag("p", "go");
  const auto tags = copied();
  EXPECT_EQ(tags.at({"_local", "p"}), (std::vector<std::string>{"chess", "go"}));
  EXPECT_EQ(tags.at({"_local", "q"}), std::vector<std::string>{"chess"});
  // Whoever uses the copy with its debts follows nothing twice.
  EXPECT_EQ(countIn(target, "tag_debt"), 2);
}

// What other processes did between the copy of the tags and that of the store: the first of these
// acts is struck out by the second.
TEST(StoreCopy, MissesNoTagActThatWasFollowedMeanwhile) {
  StoreBuilder().person("p", {});
  const std::string store = support::StoreEnvironment::instance().contactStore();
  const auto last = lastActWithoutDebt(store);
  EXPECT_EQ(last, containerSource().moment().number);
  commitTag("p", "chess");
  EXPECT_EQ(lastActWithoutDebt(store), last);
  containerSource().noteFollowedTags(last + 1);
  commitTag("p", "go");
  EXPECT_EQ(containerSource().tagDebts().acts.size(), 1U);
  const auto missed = tagActsAfter(store, last);
  EXPECT_EQ(missed.store, containerSource().tagDebts().store);
  ASSERT_EQ(missed.acts.size(), 2U);
  EXPECT_EQ(missed.acts[0].number, last + 1);
  EXPECT_EQ(missed.acts[0].changes.at(0).after, std::vector<std::string>{"chess"});
  EXPECT_EQ(missed.acts[1].changes.at(0).after, std::vector<std::string>{"go"});
  EXPECT_EQ(tagActsAfter(store, last + 2).acts.size(), 0U);
}

TEST(StoreCopy, TakesTheTagsOfAnEarlierCopyAwayWhenThereAreNone) {
  StoreBuilder().person("p", {});
  tag("p");
  const std::string target = temporaryPath("copy.db");
  for (const bool hasTags : {true, false}) {
    if (!hasTags) std::filesystem::remove(support::StoreEnvironment::instance().tagStore());
    StoreCopy copy(target);
    copy.take();
    copy.put();
    EXPECT_TRUE(exists(target));
    EXPECT_EQ(exists(target + ".tags"), hasTags);
  }
}

std::string refusalOf(const std::string& target) {
  try {
    StoreCopy copy(target);
    return "none";
  } catch (const StoreError& error) {
    return error.what();
  }
}

TEST(StoreCopy, ReplacesNeitherTheStoreNorAFileThatNobodyNamed) {
  StoreBuilder().person("p", {});
  tag("p");
  const auto& environment = support::StoreEnvironment::instance();
  const auto folder = environment.folder();
  const std::string store = environment.contactStore();
  EXPECT_EQ(refusalOf(store), store + ": is a file of the store itself");
  std::filesystem::create_hard_link(environment.tagStore(), folder / "twin.tags");
  EXPECT_EQ(refusalOf(folder / "twin"),
            (folder / "twin.tags").string() + ": is a file of the store itself");
  const std::string foreign = support::temporaryFile("letter.tags", "Dear Ann");
  EXPECT_EQ(refusalOf(folder / "letter"),
            foreign + ": would be replaced by the tags of the copy, and holds none");
  EXPECT_EQ(support::fileBytes(foreign), "Dear Ann");
  EXPECT_FALSE(exists(folder / "letter"));
}

TEST(StoreCopy, RefusesTagsWithAForeignSchemaUnlessTheyMayBeDamaged) {
  StoreBuilder().person("p", {});
  tag("p");
  sqlite::Connection(support::StoreEnvironment::instance().tagStore(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute("CREATE TRIGGER t AFTER INSERT ON tag BEGIN DELETE FROM tag; END");
  const std::string target = temporaryPath("copy.db");
  {
    StoreCopy copy(target);
    EXPECT_THROW(copy.take(), StoreError);
  }
  EXPECT_FALSE(exists(target));
  StoreCopy copy(target);
  EXPECT_EQ(copy.take(StoreCopy::DamagedTags::LeaveOut), (RecordCounts{0, 1}));
}

TEST(StoreCopy, LeavesNothingUnlessItIsPut) {
  StoreBuilder().person("p", {});
  const auto folder = temporaryPath("copies");
  std::filesystem::create_directory(folder);
  StoreCopy(folder / "copy.db").take();
  EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST(StoreCopy, ThatWasNotTakenReplacesNothing) {
  StoreBuilder().person("p", {});
  const auto earlier = support::temporaryFile("copy.db", "an earlier one");
  EXPECT_THROW(StoreCopy(earlier).put(), std::logic_error);
  EXPECT_EQ(support::fileBytes(earlier), "an earlier one");
}

TEST(ProblemsOfStoreAndTags, AreThoseOfTheStoreAndOfTheTags) {
  StoreBuilder().person("p", {});
  EXPECT_EQ(problemsOfStoreAndTags(), std::vector<std::string>());
  const auto& environment = support::StoreEnvironment::instance();
  sqlite::Connection store(environment.contactStore(), sqlite::Connection::Mode::ReadWrite);
  store.execute("UPDATE content SET fingerprint = fingerprint + 1");
  ASSERT_EQ(support::temporaryFile("tags.db", "no tags at all"), environment.tagStore());
  const std::vector<std::string> problems = {"p: its fingerprint is not that of its values",
                                             "file is not a database"};
  EXPECT_EQ(problemsOfStoreAndTags(), problems);
}

}  // namespace
}  // namespace ox::test
