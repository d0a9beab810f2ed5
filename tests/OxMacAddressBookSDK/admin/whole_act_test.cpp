#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

// "Ann (tag) Ben [Friends: Ann]": everything in the local book.
std::string contentOfLocalBook() {
  std::string text;
  const auto book = bookNamed("_local");
  for (const auto& each : ABAddressBook::sharedAddressBook()->people()) {
    const auto person = hostPerson(each);
    text += person->displayName().value_or("-") + ' ';
    for (const auto& tag : person->tagArray()) text += '(' + tag + ") ";
  }
  for (const auto& group : book->allGroups()) {
    text += '[' + *group->displayName() + ':';
    for (const auto& member : group->persons()) text += ' ' + *member->displayName();
    text += "] ";
  }
  return text;
}

const support::SecondProcess tellsLocalBook("tellsLocalBook", [](const auto&) {
  std::printf("%s", contentOfLocalBook().c_str());
  return 0;
});

std::string seenElsewhere() {
  return tellsLocalBook.run().output;
}

OxValuePtr nameValue(const std::string& first) {
  return single(OxObjectPersonName::initWithFirst_middle_last(first, {}, {}), 1);
}

std::shared_ptr<IOxPerson> addNamed(OxMacAddressBook& book, const std::string& first) {
  auto person = book.newPerson();
  person->setValue_byPropertyName(nameValue(first), OxProPertyName);
  return person;
}

// What a host does that wants a person with a group and a tag, or none of them.
bool addFriend(OxMacAddressBook& book, const std::string& first) {
  WholeAct act;
  const auto person = addNamed(book, first);
  person->addTag("new");
  book.addGroupByName("Friends")->addPersons({person});
  return act.save().contacts.done;
}

TEST(WholeAct, IsInTheStoreAsAWhole) {
  StoreBuilder().person("ben", {.first = "Ben"});
  const auto book = bookNamed("_local");
  EXPECT_TRUE(addFriend(*book, "Ann"));
  EXPECT_EQ(contentOfLocalBook(), "Ben Ann (new) [Friends: Ann] ");
  EXPECT_EQ(seenElsewhere(), contentOfLocalBook());
}

TEST(WholeAct, IsSeenByNoOtherProcessBeforeItsSave) {
  StoreBuilder().person("ben", {.first = "Ben"});
  const auto book = bookNamed("_local");
  WholeAct act;
  const auto ann = addNamed(*book, "Ann");
  ann->addTag("new");
  person("ben")->addTag("old");
  book->addGroupByName("Friends")->addPersons({ann, person("ben")});
  EXPECT_EQ(contentOfLocalBook(), "Ben (old) Ann (new) [Friends: Ann Ben] ");
  EXPECT_EQ(seenElsewhere(), "Ben ");
  EXPECT_EQ(ann->addressBookID(), "_local");
  EXPECT_EQ(cachedIn(*book), "ben " + *ann->ID());
  EXPECT_EQ(book->groupByID(*book->allGroups().front()->ID()), book->allGroups().front());
  const auto saved = act.save();
  EXPECT_TRUE(saved.contacts.done);
  EXPECT_TRUE(saved.tagsAreSafe);
  EXPECT_EQ(seenElsewhere(), "Ben (old) Ann (new) [Friends: Ann Ben] ");
}

TEST(WholeAct, ThatIsNotSavedLeavesWhatOthersLeftUnsaved) {
  StoreBuilder().person("ben", {.first = "Ben"}).group("g", "G");
  const auto book = bookNamed("_local");
  person("ben")->setValue_byPropertyName(nameValue("Benno"), OxProPertyName);
  {
    const WholeAct act;
    addNamed(*book, "Ann")->addTag("new");
    person("ben")->addTag("old");
    book->removePersons({person("ben")});
    book->removeGroup(group("g"));
    EXPECT_EQ(contentOfLocalBook(), "Ann (new) ");
  }
  EXPECT_EQ(contentOfLocalBook(), "Benno [G:] ");
  book->save();
  EXPECT_EQ(seenElsewhere(), "Benno [G:] ");
}

TEST(WholeAct, ThatCannotBeSavedLeavesNothing) {
  const failures::Watch watch;
  StoreBuilder().person("ben", {.first = "Ben"});
  const auto book = bookNamed("_local");
  sqlite::Connection store(support::StoreEnvironment::instance().contactStore().string(),
                           sqlite::Connection::Mode::ReadWrite);
  store.execute(
      "CREATE TRIGGER full BEFORE INSERT ON content BEGIN SELECT RAISE(ABORT,'full'); END");
  EXPECT_FALSE(addFriend(*book, "Ann"));
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(contentOfLocalBook(), "Ben ");
  store.execute("DROP TRIGGER full");
  book->save();
  EXPECT_EQ(seenElsewhere(), "Ben ");
}

TEST(WholeAct, IsNotWrittenByTheSaveOfAnotherThread) {
  StoreBuilder().person("ben", {.first = "Ben"});
  const auto book = bookNamed("_local");
  WholeAct act;
  addNamed(*book, "Ann");
  std::thread([&] {
    person("ben")->setValue_byPropertyName(nameValue("Benno"), OxProPertyName);
    book->save();
  }).join();
  EXPECT_EQ(seenElsewhere(), "Benno ");
  act.save();
  EXPECT_EQ(seenElsewhere(), "Benno Ann ");
}

TEST(WholeAct, WithinAnotherOneIsSavedWithThat) {
  StoreBuilder().person("ben", {.first = "Ben"});
  const auto book = bookNamed("_local");
  {
    WholeAct outer;
    {
      const WholeAct dropped;
      addNamed(*book, "Cy")->addTag("dropped");
    }
    EXPECT_TRUE(addFriend(*book, "Ann"));
    EXPECT_EQ(seenElsewhere(), "Ben ");
    EXPECT_EQ(contentOfLocalBook(), "Ben Ann (new) [Friends: Ann] ");
    EXPECT_TRUE(outer.save().contacts.done);
  }
  EXPECT_EQ(seenElsewhere(), "Ben Ann (new) [Friends: Ann] ");
}

const support::SecondProcess isKilledInAnAct("isKilledInAnAct", [](const auto&) {
  const WholeAct act;
  addNamed(*bookNamed("_local"), "Ann")->addTag("new");
  ::kill(::getpid(), SIGKILL);
  return 0;
});

TEST(WholeAct, OfAKilledProcessNeverWas) {
  StoreBuilder().person("ben", {.first = "Ben"});
  EXPECT_EQ(isKilledInAnAct.run().exitCode, 128 + SIGKILL);
  EXPECT_EQ(contentOfLocalBook(), "Ben ");
}

}  // namespace
}  // namespace ox::test
