#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

const support::SecondProcess countsRecords("countsRecords", [](const auto&) {
  const auto records = ABAddressBook::sharedAddressBook();
  std::printf("%zu %zu", records->people().size(), records->groups().size());
  return 0;
});

const support::SecondProcess tellsPhone("tellsPhone", [](const auto& arguments) {
  const auto phone = person(arguments.at(0))->mainPhone();
  std::printf("%s", phone ? phone->phoneNumber().value_or("-").c_str() : "none");
  return 0;
});

TEST(NewPerson, IsStoredAtOnceClearedStampedAndCached) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).persons("p", 1);
  const auto book = bookNamed("A");
  ASSERT_TRUE(book);
  const auto made = book->newPerson();
  ASSERT_TRUE(made);
  EXPECT_EQ(made->addressBookID(), "A");
  EXPECT_EQ(cachedIn(*book), "p0 " + *made->ID());
  EXPECT_EQ(made->valueByPropertyName(OxProPertyPhone), nullptr);
  EXPECT_EQ(made->valueByPropertyName(OxProPertyEmail), nullptr);
  EXPECT_EQ(countsRecords.run().output, "2 0");
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(NewPerson, LosesItsStampWhenTheNameIsClearedAndDerivesItAnew) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).persons("p", 1);
  OxMacAddressBook::addressBookArray();
  // Made through a book whose ID is not the container's standard id.
  const auto account = OxMacAddressBook::initWithID("A:ABAccount");
  const auto made = recordOf(account->newPerson());
  ASSERT_TRUE(made);
  EXPECT_EQ(_ABPerson::dictionarySave().find(made->key()), std::nullopt);
  EXPECT_EQ(made->addressBookID(), "A");
}

TEST(NewPerson, IsLookedForInTheListOfBooksWhichIsBuiltForIt) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).persons("p", 1);
  auto& source = SwitchedSource::install();
  const auto book = OxMacAddressBook::initWithContainer(containerOf("A:ABAccount", "iCloud", 3));
  ASSERT_TRUE(book->newPerson());
  source.resetCounts();
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray()), "_local A");
  const auto asked = source.counts();
  EXPECT_EQ(asked.records + asked.containers + asked.containerOf + asked.recordsIn, 0U);
}

TEST(NewPerson, OfABookWithUnknownContainerIsMissingAndLeavesTheCache) {
  const auto book = OxMacAddressBook::initWithContainer(containerOf("gone:ABAccount", "x", 3));
  EXPECT_EQ(book->newPerson(), nullptr);
  EXPECT_EQ(book->newGroup(), nullptr);
  EXPECT_EQ(book->addGroupByName("G"), nullptr);
  EXPECT_EQ(cachedIn(*book), "");
  EXPECT_EQ(countsRecords.run().output, "0 0");
  EXPECT_EQ(OxMacAddressBook::ShareAddressBook()->newPerson(), nullptr);
}

TEST(NewPerson, OfABookMadeFromAnIdGoesIntoTheContainerOfThatId) {
  const auto book = OxMacAddressBook::initWithID("_local");
  const auto made = recordOf(book->newPerson());
  ASSERT_TRUE(made);
  EXPECT_EQ(made->AccountID(), "_local");
}

TEST(NewGroup, IsStoredAtOnceUnnamedAndNotStamped) {
  const auto book = bookNamed("_local");
  const auto made = recordOf(book->newGroup());
  ASSERT_TRUE(made);
  EXPECT_EQ(made->displayName(), "");
  EXPECT_EQ(_ABGroup::dictionarySave().find(made->key()), std::nullopt);
  EXPECT_EQ(countsRecords.run().output, "0 1");
  EXPECT_EQ(book->addGroupByName("Friends")->displayName(), "Friends");
  // Only callers ask whether the book may have groups.
  StoreBuilder().container("G:ABAccount", "Google", 3);
  const auto google = OxMacAddressBook::initWithContainer(containerOf("G:ABAccount", "Google", 3));
  EXPECT_TRUE(google->newGroup());
}

const support::SecondProcess tellsLinks("tellsLinks", [](const auto&) {
  for (const auto& each : ABAddressBook::sharedAddressBook()->groups()) {
    const auto shown = hostGroup(each);
    std::printf("%s(%s) ", shown->ID()->c_str(), idsOf(shown->subGroups()).c_str());
  }
  return 0;
});

TEST(RemoveGroup, DeletesAThreeLevelTreeBelowItFromTheLeaves) {
  StoreBuilder builder;
  for (const auto* id : {"g", "a", "b", "aa", "ba", "aaa", "aab"}) builder.group(id, id);
  builder.subgroup("g", "a").subgroup("g", "b").subgroup("a", "aa").subgroup("b", "ba");
  builder.subgroup("aa", "aaa").subgroup("aa", "aab");
  EXPECT_TRUE(bookNamed("_local")->removeGroup(group("g")));
  std::string removed;
  for (const auto& key : ABAddressBook::sharedAddressBook()->unsavedChanges().removals) {
    removed += key.text() + " ";
  }
  EXPECT_EQ(removed, "aaa aab aa a ba b g ");
  EXPECT_EQ(tellsLinks.run().output, "g(a b) a(aa) b(ba) aa(aaa aab) ba() aaa() aab() ");
  bookNamed("_local")->save();
  EXPECT_EQ(countsRecords.run().output, "0 0");
}

TEST(RemoveGroup, DoesNotAskWhetherTheGroupIsOfThisBook) {
  StoreBuilder().group("g", "G").container("A:ABAccount", "iCloud", 3).group("cloud", "C");
  EXPECT_TRUE(bookNamed("_local")->removeGroup(group("cloud")));
  EXPECT_EQ(group("cloud"), nullptr);
  EXPECT_TRUE(group("g"));
}

TEST(RemoveGroup, IsAlwaysTrue) {
  StoreBuilder().group("g", "G");
  const auto book = bookNamed("_local");
  const auto gone = group("g");
  EXPECT_TRUE(book->removeGroup(gone));
  EXPECT_TRUE(book->removeGroup(gone));
  EXPECT_TRUE(book->removeGroup(nullptr));
}

TEST(ReallyRemoveOneGroup, RemovesTheRecordAlone) {
  StoreBuilder().group("g", "G").group("a", "A").subgroup("g", "a");
  bookNamed("_local")->reallyRemoveOneGroup(group("g"));
  EXPECT_EQ(idsOf(bookNamed("_local")->allGroups()), "a");
}

TEST(RemovePersons, TakesThemOutOfCacheTagsAndStore) {
  StoreBuilder().persons("p", 3);
  const auto book = bookNamed("_local");
  person("p1")->addTag("friend");
  const auto p1 = person("p1");
  EXPECT_EQ(p1->displayName(), "p1");
  EXPECT_EQ(p1->nameChineesPinyin(), "P1");
  EXPECT_EQ(p1->addressBookID(), "_local");
  const auto remembered = [&] {
    return std::string(_ABPerson::dictionaryNameSave().find(p1->key()) ? "name " : "") +
           (_ABPerson::dictionaryPinyinSave().find(p1->key()) ? "pinyin " : "") +
           (_ABPerson::dictionarySave().find(p1->key()) ? "stamp " : "");
  };
  EXPECT_EQ(remembered(), "name pinyin stamp ");
  book->removePersons({p1, person("p0")});
  EXPECT_EQ(remembered(), "");
  EXPECT_EQ(cachedIn(*book), "p2");
  EXPECT_EQ(book->tagManager()->tagsByPersonID("p1"), std::nullopt);
  EXPECT_EQ(person("p1"), nullptr);
  EXPECT_EQ(countsRecords.run().output, "3 0");
  book->save();
  EXPECT_EQ(countsRecords.run().output, "1 0");
}

TEST(RemovePersons, OfNobodyChangesNothing) {
  StoreBuilder().persons("p", 1);
  const auto book = bookNamed("_local");
  book->removePersons({});
  book->removePersons({nullptr});
  EXPECT_EQ(cachedIn(*book), "p0");
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(RemovePersons, OfAnotherBookDeletesThemButForgetsTagsOfThisBookOnly) {
  StoreBuilder().persons("p", 1).container("A:ABAccount", "iCloud", 3).persons("a", 1);
  const auto local = bookNamed("_local");
  person("a0")->addTag("friend");
  local->tagManager()->addPersonID_forTag("a0", "kept here too");
  local->removePersons({person("a0")});
  EXPECT_EQ(person("a0"), nullptr);
  EXPECT_EQ(local->tagManager()->tagsByPersonID("a0"), std::nullopt);
  EXPECT_EQ(bookNamed("A")->tagManager()->tagsByPersonID("a0"), std::vector<std::string>{"friend"});
  // The cache of the other book still holds the record.
  EXPECT_EQ(cachedIn(*bookNamed("A")), "a0");
}

std::string unsavedChanges() {
  const auto changes = ABAddressBook::sharedAddressBook()->unsavedChanges();
  std::string text;
  for (const auto& value : changes.values) {
    text += value.key.text() + "." + property_table::nameOf(value.property) + ' ';
  }
  for (const auto& key : changes.removals) text += '-' + key.text() + ' ';
  for (const auto& link : changes.addedLinks) {
    text += link.group.text() + "+" + link.child.text() + ' ';
  }
  for (const auto& link : changes.removedLinks) {
    text += link.group.text() + "-" + link.child.text() + ' ';
  }
  return text;
}

TEST(Book, SyncAndUpdateDoNothing) {
  StoreBuilder()
      .persons("p", 3)
      .group("g", "G")
      .members("g", {"p0"})
      .person("rung", {.phones = {{"x", "111", true}}});
  const auto book = bookNamed("_local");
  person("rung")->setValue_byPropertyName(onePhone("222"), OxProPertyPhone);
  group("g")->addPersons({person("p1")});
  group("g")->removePersonsFromThisGroup({person("p0")});
  book->removePersons({person("p2")});
  const auto cached = cachedIn(*book);
  ASSERT_EQ(unsavedChanges(), "rung.Phone -p2 g+p1 g-p0 ");
  // Not known to the book yet, and neither operation makes it so.
  StoreBuilder().person("new", {});
  book->sync();
  book->update();
  EXPECT_EQ(unsavedChanges(), "rung.Phone -p2 g+p1 g-p0 ");
  EXPECT_EQ(cachedIn(*book), cached);
  EXPECT_EQ(tellsPhone.run({"rung"}).output, "111");
  EXPECT_EQ(countsRecords.run().output, "5 1");
  EXPECT_EQ(person("rung")->mainPhone()->phoneNumber(), "222");
}

TEST(Book, ServesATypicalRequestFromTheListToTheSave) {
  const failures::Watch watch;
  StoreBuilder()
      .container("A:ABAccount", "iCloud", 3)
      .person("a0",
              {.first = "Ann", .phones = {{"_$!<Home>!$_", "111"}, {"_$!<Work>!$_", "222", true}}});
  std::shared_ptr<OxMacAddressBook> cloud;
  for (const auto& book : OxMacAddressBook::addressBookArray()) {
    if (book->serverType() == 8) cloud = book;
  }
  ASSERT_TRUE(cloud);
  const auto ann = cloud->allPersons()->element(0);
  const auto phones =
      std::dynamic_pointer_cast<OxMutableMultipleValue>(ann->valueByPropertyName(OxProPertyPhone));
  ASSERT_TRUE(phones);
  EXPECT_EQ(phones->mainValue(), phones->valueAtIndex(1));
  EXPECT_EQ(phones->mainValue()->value().host<OxObjectPhone>()->phoneNumber(), "222");
  phones->valueAtIndex(1)->setValue(OxObjectPhone::initWithPhoneNumber("333"));
  ann->setValue_byPropertyName(phones, OxProPertyPhone);
  EXPECT_EQ(tellsPhone.run({"a0"}).output, "222");
  cloud->save();
  EXPECT_EQ(tellsPhone.run({"a0"}).output, "333");
  EXPECT_EQ(watch.counts().failures, 0U);
}

}  // namespace
}  // namespace ox::test
