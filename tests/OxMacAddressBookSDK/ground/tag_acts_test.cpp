#include "ox/OxMacAddressBookSDK/ground/tag_acts.hpp"

#include <filesystem>
#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"
#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

// Contacts and tags in one act.

namespace ox::test {
namespace {

using Tags = std::vector<std::string>;
using Changes = std::vector<TagChange>;

// The file refuses something from now on, as a full disk would, until the result has gone.
class Refusal {
 public:
  Refusal(const std::filesystem::path& file, const std::string& event)
      : file_(file.string(), sqlite::Connection::Mode::ReadWrite) {
    file_.execute(
        ("CREATE TRIGGER refusal BEFORE " + event + " BEGIN SELECT RAISE(ABORT, 'no room'); END")
            .c_str());
  }
  Refusal(const Refusal&) = delete;
  Refusal& operator=(const Refusal&) = delete;
  ~Refusal() { file_.execute("DROP TRIGGER refusal"); }

 private:
  sqlite::Connection file_;
};

const auto& environment() {
  return support::StoreEnvironment::instance();
}

// As a process leaves it that ends when its act is in the store and before the tags have followed.
const support::SecondProcess writesAnActAndEnds("writesAnActAndEnds", [](const auto& arguments) {
  SaveRequest request;
  request.tags = {{"_local", "ann", {}, {arguments.at(0)}}};
  return containerSource().execute(request) ? 0 : 1;
});

const support::SecondProcess seesNoTagOfAnn("seesNoTagOfAnn", [](const auto&) {
  return OxTagManager::tagManagerWithID("_local")->tagsByPersonID("ann") ? 1 : 0;
});

class TagActs : public ::testing::Test {
 protected:
  TagActs() {
    StoreBuilder().person("ann", {.first = "Ann"}).person("ben", {.first = "Ben"});
    bookNamed("_local");  // discovers the books: tags are kept by book
  }

  static Tags tags(const char* id = "ann") { return person(id)->tagArray(); }
  static std::int64_t number() { return containerSource().moment().number; }
  static bool save() {
    const auto saved = saveContactsAndTags();
    return saved.contacts.done && saved.tagsAreSafe;
  }
  static void setNote(const char* note) {
    person("ann")->setValue_forProperty(Object(note), kABNoteProperty);
  }
  static Text note() {
    return std::get<Object>(person("ann")->valueForProperty(kABNoteProperty)).toText();
  }

  failures::Watch watch_;
};

TEST_F(TagActs, OfOneEditAreOneCommitWithTheChangeInIt) {
  const auto before = number();
  person("ann")->setTags(Tags{"a", "b"});
  EXPECT_EQ(number(), before + 1);
  const auto debts = containerSource().tagDebts();
  ASSERT_EQ(debts.acts.size(), 1U);
  EXPECT_EQ(debts.acts[0].number, before + 1);
  EXPECT_EQ(debts.acts[0].changes, (Changes{{"_local", "ann", {}, {"a", "b"}}}));
  person("ann")->addTag("b");
  person("ann")->removeTag("c");
  EXPECT_EQ(number(), before + 1);
  EXPECT_EQ(tags(), (Tags{"a", "b"}));
  EXPECT_TRUE(watch_.isClear());
}

TEST_F(TagActs, WriteWhatIsHeldWithTheContacts) {
  const auto before = number();
  const TagHold hold;
  setNote("new");
  person("ann")->addTag("a");
  person("ben")->addTag("b");
  EXPECT_EQ(seesNoTagOfAnn.run().exitCode, 0);
  EXPECT_TRUE(save());
  EXPECT_EQ(number(), before + 1);
  EXPECT_EQ(seesNoTagOfAnn.run().exitCode, 1);
  EXPECT_EQ(TagHold::changesOfThread(), Changes());
  EXPECT_EQ(tags(), Tags{"a"});
  EXPECT_EQ(containerSource().tagDebts().acts.size(), 1U);
  // The next save strikes it out.
  setNote("newer");
  EXPECT_TRUE(save());
  EXPECT_EQ(containerSource().tagDebts().acts.size(), 0U);
}

TEST_F(TagActs, LeaveNoTagWhereTheContactsCannotBeWritten) {
  {
    const Refusal refusal(environment().contactStore(), "INSERT ON act");
    person("ann")->addTag("a");
    EXPECT_EQ(watch_.counts().failures, 1U);
    EXPECT_EQ(tags(), Tags());
    const TagHold hold;
    setNote("new");
    person("ann")->addTag("b");
    EXPECT_FALSE(save());
    EXPECT_EQ(seesNoTagOfAnn.run().exitCode, 0);
    EXPECT_EQ(tags(), Tags{"b"});  // for the next try
  }
  EXPECT_EQ(tags(), Tags());
}

TEST_F(TagActs, LetTheTagFileFollowLaterWhereItFails) {
  person("ann")->addTag("a");
  {
    const Refusal refusal(environment().tagStore(), "INSERT ON tag");
    const TagHold hold;
    setNote("new");
    person("ann")->addTag("b");
    EXPECT_FALSE(save());
    EXPECT_EQ(note(), "new");
    EXPECT_EQ(watch_.counts().failures, 1U);
    EXPECT_EQ(tags(), Tags{"a"});
  }
  followTags();
  EXPECT_EQ(tags(), (Tags{"a", "b"}));
}

TEST_F(TagActs, CostTheTagsAloneWhereTheTagFileIsDamaged) {
  support::temporaryFile(environment().tagStore().filename().string(), std::string(5000, 'x'));
  const auto id = RecordKey::of("ben");
  setNote("new");
  EXPECT_TRUE(ABAddressBook::sharedAddressBook()->removeRecord(person("ben")));
  const auto saved = saveContactsAndTags();
  EXPECT_TRUE(saved.contacts.done);
  EXPECT_FALSE(saved.tagsAreSafe);
  EXPECT_GT(watch_.counts().failures, 0U);
  EXPECT_EQ(note(), "new");
  EXPECT_EQ(containerSource().committedValues(id), nullptr);
}

TEST_F(TagActs, TakeTheTagsOfRemovedPersonsWhateverTheManager) {
  person("ben")->setTags(Tags{"a", "b"});
  OxTagManager::tagManagerWithID("other")->addPersonID_forTag("ben", "c");
  person("ann")->addTag("stays");
  ABAddressBook::sharedAddressBook()->removeRecord(person("ben"));
  const auto before = number();
  EXPECT_TRUE(save());
  EXPECT_EQ(number(), before + 1);
  EXPECT_EQ(OxTagManager::tagManagerWithID("_local")->tagsByPersonID("ben"), std::nullopt);
  EXPECT_EQ(OxTagManager::tagManagerWithID("other")->tagsByPersonID("ben"), std::nullopt);
  EXPECT_EQ(tags(), Tags{"stays"});
  EXPECT_EQ(containerSource().tagDebts().acts.back().changes,
            (Changes{{"_local", "ben", {"a", "b"}, {}}, {"other", "ben", {"c"}, {}}}));
}

TEST_F(TagActs, OfABookThatRemovesPersonsAreOne) {
  person("ann")->addTag("a");
  person("ben")->addTag("b");
  const auto before = number();
  bookNamed("_local")->removePersons({person("ann"), person("ben")});
  EXPECT_EQ(number(), before + 1);
  for (const auto* id : {"ann", "ben"}) {
    EXPECT_EQ(OxTagManager::tagManagerWithID("_local")->tagsByPersonID(id), std::nullopt);
  }
}

TEST_F(TagActs, OfAProcessThatEndedEarlyAreFollowedByTheNextSave) {
  EXPECT_EQ(writesAnActAndEnds.run({"theirs"}).exitCode, 0);
  EXPECT_EQ(tags(), Tags());
  setNote("new");
  EXPECT_TRUE(save());
  EXPECT_EQ(tags(), Tags{"theirs"});
  EXPECT_EQ(containerSource().tagDebts().acts.size(), 0U);
}

TEST_F(TagActs, OfAProcessThatEndedEarlyAreFollowedBeforeThoseAfterThem) {
  EXPECT_EQ(writesAnActAndEnds.run({"theirs"}).exitCode, 0);
  person("ann")->addTag("mine");
  EXPECT_EQ(tags(), (Tags{"theirs", "mine"}));
}

TEST(TagActsLeft, AreFollowedByWhoeverDiscoversTheBooks) {
  StoreBuilder().person("ann", {.first = "Ann"});
  EXPECT_EQ(writesAnActAndEnds.run({"theirs"}).exitCode, 0);
  bookNamed("_local");
  EXPECT_EQ(person("ann")->tagArray(), Tags{"theirs"});
}

TEST(TagActsWithoutASave, AreStruckOutNowAndThen) {
  StoreBuilder().person("ann", {.first = "Ann"});
  bookNamed("_local");
  for (int i = 0; i < 50; ++i) person("ann")->addTag(std::to_string(i));
  EXPECT_EQ(person("ann")->tagArray().size(), 50U);
  EXPECT_LE(containerSource().tagDebts().acts.size(), 18U);
}

}  // namespace
}  // namespace ox::test
