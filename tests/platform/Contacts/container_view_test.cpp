#include <gtest/gtest.h>
#include <string>

#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/switched_source.hpp"

namespace ox {
namespace {

using support::StoreBuilder;

std::string ids(const auto& objects) {
  std::string text;
  for (const auto& object : objects) text += *object->identifier() + " ";
  return text;
}

std::string containersFor(const std::optional<CNPredicate>& predicate) {
  return ids(CNContactStore::init()->containersMatchingPredicate_error(predicate, nullptr));
}

std::string contactsFor(const CNPredicate& predicate) {
  return ids(CNContactStore::init()->unifiedContactsMatchingPredicate_keysToFetch_error(
      predicate, {}, nullptr));
}

StoreBuilder twoAccounts() {
  StoreBuilder builder;
  builder.container("A:ABAccount", "iCloud", 3)
      .person("a1", {.first = "Ann"})
      .group("ag", "Friends")
      .person("a2")
      .container("L2:ABAccount", "Second local", 1)
      .person("l1");
  return builder;
}

TEST(ContainerView, ListsLocalContainersFirstThenInCreationOrder) {
  twoAccounts();
  EXPECT_EQ(containersFor(std::nullopt), "_local:ABAccount L2:ABAccount A:ABAccount ");
}

TEST(ContainerView, FindsTheContainerOfARecordByItsKindAndId) {
  twoAccounts();
  EXPECT_EQ(containersFor(CNContainer::predicateForContainerOfContactWithIdentifier("a1")),
            "A:ABAccount ");
  EXPECT_EQ(containersFor(CNContainer::predicateForContainerOfGroupWithIdentifier("ag")),
            "A:ABAccount ");
  EXPECT_EQ(containersFor(CNContainer::predicateForContainerOfGroupWithIdentifier("a1")), "");
  EXPECT_EQ(containersFor(CNContainer::predicateForContainerOfContactWithIdentifier("nobody")), "");
  EXPECT_EQ(containersFor(CNContainer::predicateForContainerOfContactWithIdentifier(nullptr)), "");
}

TEST(ContainerView, ListsContactsAndGroupsOfAContainerInCreationOrder) {
  twoAccounts();
  EXPECT_EQ(contactsFor(CNContact::predicateForContactsInContainerWithIdentifier("A:ABAccount")),
            "a1 a2 ");
  EXPECT_EQ(contactsFor(CNContact::predicateForContactsInContainerWithIdentifier("A")), "a1 a2 ");
  EXPECT_EQ(contactsFor(CNContact::predicateForContactsInContainerWithIdentifier("no")), "");
  const auto groups = CNContactStore::init()->groupsMatchingPredicate_error(
      CNGroup::predicateForGroupsInContainerWithIdentifier("A"), nullptr);
  ASSERT_EQ(ids(groups), "ag ");
  EXPECT_EQ(groups[0]->name(), "Friends");
}

TEST(ContainerView, FetchesValuesOnlyWhenKeysAreAskedFor) {
  twoAccounts();
  const auto store = CNContactStore::init();
  const auto predicate = CNContact::predicateForContactsWithIdentifiers({"a1", "nobody"});
  const auto slim =
      store->unifiedContactsMatchingPredicate_keysToFetch_error(predicate, {}, nullptr);
  ASSERT_EQ(slim.size(), 1U);
  EXPECT_TRUE(slim[0]->properties().empty());
  const auto full = store->unifiedContactsMatchingPredicate_keysToFetch_error(
      predicate, {std::string(kABFirstNameProperty)}, nullptr);
  EXPECT_EQ(*full[0]->properties().text(property_id::kFirst), "Ann");
}

TEST(ContainerView, SeesCommittedRowsOnly) {
  twoAccounts();
  const auto book = ABAddressBook::sharedAddressBook();
  book->removeRecord(book->recordForUniqueId("a1"));
  const auto predicate = CNContact::predicateForContactsInContainerWithIdentifier("A");
  EXPECT_EQ(contactsFor(predicate), "a1 a2 ");
  book->save();
  EXPECT_EQ(contactsFor(predicate), "a2 ");
}

TEST(SaveRequest, AddsNoSecondContainerOfAStandardId) {
  const auto refusalOf = [](std::vector<std::string> identifiers) {
    const auto request = CNSaveRequest::init();
    for (auto& identifier : identifiers) request->addContainer({std::move(identifier), "New", 3});
    std::string reason;
    EXPECT_FALSE(CNContactStore::init()->executeSaveRequest_error(*request, &reason));
    return reason;
  };
  twoAccounts();
  const std::string taken = "there is an account with the identifier A:ABAccount already";
  EXPECT_EQ(refusalOf({"A:ABAccount"}), taken);
  EXPECT_EQ(refusalOf({"A"}), taken);
  EXPECT_EQ(refusalOf({"A:ABAccount:ABAccount"}), taken);
  EXPECT_EQ(refusalOf({"_local"}),
            "there is an account with the identifier _local:ABAccount already");
  EXPECT_EQ(refusalOf({"B", "B:ABAccount"}), "there is an account with the identifier B already");
  EXPECT_EQ(refusalOf({":ABAccount"}), "\":ABAccount\" is no identifier");
  EXPECT_EQ(refusalOf({""}), "\"\" is no identifier");
  EXPECT_EQ(containersFor(std::nullopt), "_local:ABAccount L2:ABAccount A:ABAccount ");
}

TEST(ContainerView, FindsNeitherOfTwoContainersByTheStandardIdThatTheyShare) {
  StoreBuilder()
      .container("A:ABAccount", "First", 3)
      .twinContainer("A:ABAccount:ABAccount", "Second", 3);
  const auto named = [](const char* identifier) {
    return containersFor(CNContainer::predicateForContainersWithIdentifiers({identifier}));
  };
  EXPECT_EQ(named("A"), "");
  EXPECT_EQ(named("A:ABAccount"), "A:ABAccount ");
  EXPECT_EQ(named("A:ABAccount:ABAccount"), "A:ABAccount:ABAccount ");
}

TEST(SaveRequest, CommitsManyAdditionsAtOnceUnderKnownIdentifiers) {
  const auto store = CNContactStore::init();
  const auto request = CNSaveRequest::init();
  const auto contact = CNMutableContact::init();
  const auto group = CNMutableGroup::init();
  group->setName("Friends");
  request->addContact_toContainerWithIdentifier(contact, "_local");
  request->addGroup_toContainerWithIdentifier(group, "_local:ABAccount");
  request->addMember_toGroup(contact->identifier(), group->identifier());
  EXPECT_TRUE(contact->identifier()->ends_with(":ABPerson"));
  EXPECT_TRUE(group->identifier()->ends_with(":ABGroup"));
  EXPECT_TRUE(store->executeSaveRequest_error(*request, nullptr));

  const auto book = ABAddressBook::sharedAddressBook();
  const auto record =
      std::dynamic_pointer_cast<ABGroup>(book->recordForUniqueId(group->identifier()));
  ASSERT_TRUE(record);
  EXPECT_EQ(record->members().size(), 1U);
  EXPECT_EQ(record->members()[0], book->recordForUniqueId(contact->identifier()));
}

TEST(SaveRequest, WithAnUnknownContainerWritesNothing) {
  const failures::Watch watch;
  const auto request = CNSaveRequest::init();
  request->addContact_toContainerWithIdentifier(CNMutableContact::init(), "_local");
  request->addContact_toContainerWithIdentifier(CNMutableContact::init(), "nowhere");
  std::string error;
  EXPECT_FALSE(CNContactStore::init()->executeSaveRequest_error(*request, &error));
  EXPECT_EQ(error, "there is no account nowhere");
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 0U);
  EXPECT_EQ(watch.counts().refusals, 1U);

  const auto unnamed = CNSaveRequest::init();
  unnamed->addContact_toContainerWithIdentifier(CNMutableContact::init(), nullptr);
  EXPECT_FALSE(CNContactStore::init()->executeSaveRequest_error(*unnamed, nullptr));
}

TEST(SaveRequest, GivesTheCopyOfAStoredContactANewIdentifier) {
  twoAccounts();
  const auto store = CNContactStore::init();
  const auto found = store->unifiedContactsMatchingPredicate_keysToFetch_error(
      CNContact::predicateForContactsWithIdentifiers({"a1"}), {"First"}, nullptr);
  const auto copy = CNMutableContact::mutableCopy(*found.at(0));
  EXPECT_EQ(copy->identifier(), "a1");
  const auto request = CNSaveRequest::init();
  request->addContact_toContainerWithIdentifier(copy, "L2");
  EXPECT_TRUE(store->executeSaveRequest_error(*request, nullptr));
  EXPECT_NE(copy->identifier(), "a1");
  const auto book = ABAddressBook::sharedAddressBook();
  const auto record = book->recordForUniqueId(copy->identifier());
  ASSERT_TRUE(record);
  EXPECT_EQ(std::get<Object>(record->valueForProperty(kABFirstNameProperty)), Object("Ann"));
  EXPECT_EQ(
      containersFor(CNContainer::predicateForContainerOfContactWithIdentifier(copy->identifier())),
      "L2:ABAccount ");
}

TEST(SaveRequest, RemovesContainersWithTheirRecordsOnlyByForce) {
  twoAccounts();
  const auto store = CNContactStore::init();
  const auto removal = [&](const std::string& identifier, bool force) {
    const auto request = CNSaveRequest::init();
    request->removeContainerWithIdentifier_force(identifier, force);
    std::string error;
    return store->executeSaveRequest_error(*request, &error) ? std::string("done") : error;
  };
  EXPECT_EQ(removal("A", false), "the account A holds 3 records");
  EXPECT_EQ(removal("_local", true), "the local account cannot be removed");
  EXPECT_EQ(removal("nowhere", true), "there is no account nowhere");
  EXPECT_EQ(removal("A", true), "done");
  EXPECT_EQ(containersFor(std::nullopt), "_local:ABAccount L2:ABAccount ");
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 1U);
}

TEST(ContainerView, AnswersEmptyAndCountsWhenAccessIsDenied) {
  const failures::Watch watch;
  twoAccounts();
  support::SwitchedSource::install().denyContainerAccess();
  std::string error;
  EXPECT_EQ(CNContactStore::init()->containersMatchingPredicate_error(std::nullopt, &error).size(),
            0U);
  EXPECT_NE(error, "");
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 3U);
}

TEST(Descriptions, EndInThePathOfTheFileThatHoldsTheRecord) {
  twoAccounts().in("_local").group("lg", "Local");
  const auto textOf = [](const char* id) {
    return *ABAddressBook::sharedAddressBook()->recordForUniqueId(id)->description();
  };
  const auto root = support::StoreEnvironment::instance().folder().string();
  const std::string folder = "/Library/Application Support/AddressBook/";
  EXPECT_EQ(textOf("ag"),
            "ABGroup (ag)\n  stored in: " + root + folder + "Sources/A/AddressBook.db\n");
  EXPECT_EQ(textOf("lg"), "ABGroup (lg)\n  stored in: " + root + folder + "AddressBook.db\n");
}

}  // namespace
}  // namespace ox
