#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"

#include <gtest/gtest.h>
#include <string>

#include "ox/OxMacAddressBookSDK/admin/past.hpp"
#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/platform/journal/journal.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

Text firstNameOf(const char* id) {
  return std::get<Object>(person(id)->valueForProperty(kABFirstNameProperty)).toText();
}

// Another program: Ann is called otherwise and has a tag, Ben is gone, Cid is in the group.
const support::SecondProcess changesEverything("changesEverything", [](const auto&) {
  bookNamed("_local");
  person("ann")->setValue_forProperty(Object("Anna"), kABFirstNameProperty);
  person("ann")->addTag("late");
  group("club")->addMember(person("cid"));
  ABAddressBook::sharedAddressBook()->removeRecord(person("ben"));
  const auto saved = saveContactsAndTags();
  return saved.contacts.done && saved.tagsAreSafe ? 0 : 1;
});

// What a host sees of contacts, links and tags.
std::string seen() {
  std::string text;
  for (const auto& each : ABAddressBook::sharedAddressBook()->people()) {
    const auto id = each->key().text();
    text += id + "=" + firstNameOf(id.c_str()).value_or("") + " ";
    for (const auto& tag : person(id)->tagArray()) text += "#" + tag + " ";
  }
  return text + "club:" + std::to_string(group("club")->members().size()) +
         " trash:" + std::to_string(journal::removedRecords(9).size());
}

constexpr const char* kBefore = "ann=Ann ben=Ben cid=Cid club:1 trash:0";
constexpr const char* kAfter = "ann=Anna #late cid=Cid club:2 trash:1";

class OneMomentOfBoth : public ::testing::Test {
 protected:
  OneMomentOfBoth() {
    StoreBuilder()
        .person("ann", {.first = "Ann"})
        .person("ben", {.first = "Ben"})
        .person("cid", {.first = "Cid"})
        .group("club", "Club")
        .member("club", "ann");
    bookNamed("_local");
  }
};

TEST_F(OneMomentOfBoth, ShowsNothingThatOthersWriteMeanwhileAndKeepsNobodyFromWriting) {
  {
    const OneMoment moment;
    EXPECT_EQ(seen(), kBefore);
    ASSERT_EQ(changesEverything.run().exitCode, 0);
    EXPECT_EQ(seen(), kBefore);
    const OneMoment nested;
    EXPECT_EQ(seen(), kBefore);
  }
  EXPECT_EQ(seen(), kAfter);
}

// There was no tag file before, so none is looked into.
TEST_F(OneMomentOfBoth, BeginsBeforeAnythingIsRead) {
  const OneMoment moment;
  ASSERT_EQ(changesEverything.run().exitCode, 0);
  EXPECT_EQ(seen(), kBefore);
}

TEST_F(OneMomentOfBoth, ShowsTagsOfTheContactsItShows) {
  person("ann")->addTag("early");
  const OneMoment moment;
  ASSERT_EQ(changesEverything.run().exitCode, 0);
  EXPECT_EQ(seen(), "ann=Ann #early ben=Ben cid=Cid club:1 trash:0");
}

TEST_F(OneMomentOfBoth, IsOverWhenThisProcessWrites) {
  const OneMoment moment;
  EXPECT_EQ(seen(), kBefore);
  ASSERT_EQ(changesEverything.run().exitCode, 0);
  person("cid")->setValue_forProperty(Object("Cyd"), kABFirstNameProperty);
  EXPECT_EQ(seen(), "ann=Ann ben=Ben cid=Cyd club:1 trash:0") << "not saved yet";
  EXPECT_TRUE(saveContactsAndTags().contacts.done);
  EXPECT_EQ(seen(), "ann=Anna #late cid=Cyd club:2 trash:1");
}

TEST_F(OneMomentOfBoth, HindersNoWriteOfThisProcess) {
  const OneMoment moment;
  EXPECT_EQ(seen(), kBefore);
  person("ann")->addTag("early");
  EXPECT_EQ(person("ann")->tagArray(), std::vector<std::string>{"early"});
  EXPECT_TRUE(undoCommand(std::nullopt).done);
  EXPECT_TRUE(person("ann")->tagArray().empty());
  journal::setBounds({30, 0});
  EXPECT_EQ(journal::bounds().days, 30);
  containerSource().checkpoint();
  EXPECT_TRUE(forgetPerson(RecordKey::of("ben"), "Ben").left.empty());
  EXPECT_EQ(seen(), "ann=Ann cid=Cid club:1 trash:0");
}

TEST_F(OneMomentOfBoth, IsOverForOneThreadWhenItIsForAll) {
  auto outer = std::make_optional<OneMoment>();
  const OneMoment other;
  EXPECT_EQ(seen(), kBefore);
  ASSERT_EQ(changesEverything.run().exitCode, 0);
  outer.reset();
  EXPECT_EQ(seen(), kBefore);
}

// Another program: takes Ann's tag away and gives Ben one, each in an act of its own.
const support::SecondProcess movesTheTag("movesTheTag", [](const auto&) {
  bookNamed("_local");
  person("ann")->removeTag("early");
  person("ben")->addTag("early");
  return person("ann")->tagArray().empty() ? 0 : 1;
});

TEST_F(OneMomentOfBoth, LeavesTagsAloneThatOthersHaveChangedSince) {
  person("ann")->addTag("early");
  const OneMoment moment;
  EXPECT_NE(seen().find("#early"), std::string::npos);
  ASSERT_EQ(movesTheTag.run().exitCode, 0);
  EXPECT_TRUE(saveContactsAndTags().contacts.done);
  EXPECT_EQ(person("ann")->tagArray(), std::vector<std::string>{});
  EXPECT_EQ(person("ben")->tagArray(), std::vector<std::string>{"early"});
}

TEST(OneMomentWithoutTags, IsThereWhereTheirPlaceCannotBeLookedAt) {
  ::setenv("OX_TAG_STORE", ("/" + std::string(300, 'x')).c_str(), 1);
  StoreBuilder().person("ann", {.first = "Ann"});
  const auto book = OxMacAddressBook::addressBookArray().element(0);
  ASSERT_TRUE(book);
  EXPECT_EQ(book->allPersonsCount(), 1U);
  EXPECT_TRUE(book->newPerson());
  EXPECT_TRUE(ABAddressBook::sharedAddressBook()->save());
}

}  // namespace
}  // namespace ox::test
