// What a host does that knows no class of book but the model's, and hands the lists of one
// operation to another.
#include <gtest/gtest.h>

#include "tests/OxAddressBookSDK/general/live_person.hpp"
#include "tests/OxAddressBookSDK/general/loose_group.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

const support::SecondProcess listsBook("listsBook", [](const auto& arguments) {
  const std::shared_ptr<OxAddressBook> book = bookNamed(arguments.at(0));
  for (const auto& each : book->allPersons()->snapshot()) {
    std::printf("%s ", each->displayName()->c_str());
  }
  for (const auto& each : book->rootGroups()) {
    std::printf("[%s: %zu]", each->displayName()->c_str(), each->persons().size());
  }
  return 0;
});

void rename(IOxPerson& person, const char* company) {
  person.setValue_byPropertyName(single(Object(company), value_type::kString), OxProPertyCompany);
}

TEST(NeutralBook, ListsAndFindsItsRecords) {
  StoreBuilder()
      .container("A:ABAccount", "iCloud", 3)
      .persons("p", 2)
      .group("g", "G")
      .group("below", "B")
      .subgroup("g", "below");
  const std::shared_ptr<OxAddressBook> book = bookNamed("A");
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "p0 p1");
  EXPECT_EQ(book->allPersons(), book->allPersons()) << "the live list";
  EXPECT_EQ(idsOf(book->allGroups()), "g below");
  EXPECT_EQ(idsOf(book->rootGroups()), "g");
  EXPECT_EQ(book->groupByID("below")->displayName(), Text("B"));
  EXPECT_EQ(book->groupByID("p0"), nullptr);
  const auto records = book->personsForIDs({"g", "p1", "unknown"});
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(groupOf(records[0])->ID(), Text("g"));
  EXPECT_EQ(personOf(records[0]), nullptr);
  EXPECT_EQ(personOf(records[1])->ID(), Text("p1"));
  EXPECT_EQ(groupOf(records[1]), nullptr);
}

TEST(NeutralBook, IsEditedAndSaved) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).persons("p", 2).group("g", "G");
  const std::shared_ptr<OxAddressBook> book = bookNamed("A");
  const auto ann = book->newPerson();
  rename(*ann, "Ann");
  const auto copy = book->addOneFromOtherPerson(ann);
  rename(*copy, "Bob");
  copy->addTag("friend");
  EXPECT_EQ(book->tagManager()->tagsByPersonID(copy->ID()), std::vector<std::string>{"friend"});
  const auto friends = book->addGroupByName("Friends");
  friends->addPersons({ann, copy});
  EXPECT_EQ(book->newGroup()->displayName(), Text(""));
  book->removePersons({personOf(book->personsForIDs({"p0"}).at(0))});
  EXPECT_TRUE(book->removeGroup(book->groupByID("g")));
  book->save();
  EXPECT_EQ(listsBook.run({"A"}).output, "p1 Ann Bob [Friends: 2][: 0]");
}

TEST(Lists, OfOneOperationFitThoseOfAnother) {
  StoreBuilder()
      .container("A:ABAccount", "iCloud", 3)
      .persons("p", 3)
      .group("g", "G")
      .group("s", "S")
      .group("t", "T")
      .subgroup("g", "s");
  const auto book = bookNamed("A");
  EXPECT_TRUE(OxMacAddressBook::hasAddress_container(OxMacAddressBook::addressBookArray(),
                                                     containerOf("A:ABAccount", "iCloud", 3)));
  EXPECT_FALSE(OxMacAddressBook::hasAddress_container(OxMacAddressBook::addressBookArray(),
                                                      containerOf("B:ABAccount", "iCloud", 3)));
  const auto all = book->groupByID("g");
  all->addPersons(book->allPersons()->snapshot());
  EXPECT_EQ(idsOf(all->persons()), "p0 p1 p2");
  const auto other = book->groupByID("t");
  other->addPersons(all->persons());
  EXPECT_EQ(idsOf(other->persons()), "p0 p1 p2");
  other->removePersonsFromThisGroup(all->includePersons());
  EXPECT_EQ(idsOf(other->persons()), "");
  EXPECT_TRUE(book->removeGroup(all->subGroups().at(0)));
  EXPECT_EQ(idsOf(book->allGroups()), "g t");
  book->removePersons(all->persons());
  EXPECT_EQ(cachedIn(*book), "");
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 0U);
}

TEST(RecordOf, IsTheRecordOfTheStoreAndNullForAHostsOwn) {
  StoreBuilder().persons("p", 1).group("g", "G");
  const std::shared_ptr<OxAddressBook> book = bookNamed("_local");
  EXPECT_EQ(recordOf(book->allPersons()->element(0)), person("p0"));
  EXPECT_EQ(recordOf(book->groupByID("g")), group("g"));
  EXPECT_EQ(recordOf(std::shared_ptr<IOxPerson>(std::make_shared<LivePerson>("p0"))), nullptr);
  EXPECT_EQ(recordOf(std::shared_ptr<IOxGroup>(std::make_shared<LooseGroup>("g", "G"))), nullptr);
  EXPECT_EQ(recordOf(std::shared_ptr<IOxPerson>()), nullptr);
  EXPECT_EQ(recordOf(std::shared_ptr<IOxGroup>()), nullptr);
}

TEST(HostsOwnRecords, AreNotRemovedFromABook) {
  StoreBuilder().persons("p", 1).group("g", "G");
  const std::shared_ptr<OxAddressBook> book = bookNamed("_local");
  person("p0")->addTag("friend");
  // They bear the IDs of records, and are none.
  book->removePersons({std::make_shared<LivePerson>("p0")});
  EXPECT_TRUE(book->removeGroup(std::make_shared<LooseGroup>("g", "G")));
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
  EXPECT_EQ(book->tagManager()->tagsByPersonID("p0"), std::vector<std::string>{"friend"});
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "p0");
}

}  // namespace
}  // namespace ox::test
