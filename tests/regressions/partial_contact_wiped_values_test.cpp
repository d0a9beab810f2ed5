// A contact fetched with identifiers only looked like an empty one: updating it, or copying it,
// took every value for absent. And the links of a request that added a copy went to the copy's
// source. The copy of one that had been removed meanwhile was stored as an empty person under the
// removed one's identifier.
#include <gtest/gtest.h>

#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "tests/support/store_builder.hpp"

namespace ox {
namespace {

CNContactPtr slimContact(const char* id) {
  return CNContactStore::init()
      ->unifiedContactsMatchingPredicate_keysToFetch_error(
          CNContact::predicateForContactsWithIdentifiers({id}), {}, nullptr)
      .at(0);
}

TEST(PartialContact, KeepsItsValuesThroughACopyAndAnUpdate) {
  support::StoreBuilder().person("p", {.first = "Ann", .image = makeData("picture")});
  const auto copy = CNMutableContact::mutableCopy(*slimContact("p"));
  EXPECT_EQ(*copy->properties().text(property_id::kFirst), "Ann");
  EXPECT_EQ(*copy->imageData(), "picture");
  const auto request = CNSaveRequest::init();
  request->updateContact(copy);
  EXPECT_TRUE(CNContactStore::init()->executeSaveRequest_error(*request, nullptr));
  const auto person = ABAddressBook::sharedAddressBook()->people().at(0);
  EXPECT_EQ(std::get<Object>(person->valueForProperty(kABFirstNameProperty)), Object("Ann"));
  EXPECT_EQ(*person->imageData(), "picture");
}

TEST(CopiedContact, IsWhatTheLinksOfItsRequestMean) {
  support::StoreBuilder().person("p", {.first = "Ann"}).group("g", "G");
  const auto copy = CNMutableContact::mutableCopy(*slimContact("p"));
  const auto request = CNSaveRequest::init();
  request->addContact_toContainerWithIdentifier(copy, "_local");
  request->addMember_toGroup(copy->identifier(), "g");
  EXPECT_TRUE(CNContactStore::init()->executeSaveRequest_error(*request, nullptr));
  const auto book = ABAddressBook::sharedAddressBook();
  const auto members = std::dynamic_pointer_cast<ABGroup>(book->recordForUniqueId("g"))->members();
  ASSERT_EQ(members.size(), 1U);
  EXPECT_EQ(members[0]->uniqueId(), copy->identifier());
  EXPECT_NE(copy->identifier(), "p");
}

TEST(CopiedContact, OfARemovedContactIsRefusedAndBringsNothingBack) {
  support::StoreBuilder().person("p", {.first = "Ann"});
  const auto slim = slimContact("p");
  const auto book = ABAddressBook::sharedAddressBook();
  ASSERT_TRUE(book->removeRecord(book->recordForUniqueId("p")) && book->save());
  const auto request = CNSaveRequest::init();
  request->addContact_toContainerWithIdentifier(CNMutableContact::mutableCopy(*slim), "_local");
  std::string reason;
  EXPECT_FALSE(CNContactStore::init()->executeSaveRequest_error(*request, &reason));
  EXPECT_EQ(reason, "the values of the contact p are not known");
  EXPECT_TRUE(book->people().empty());
}

}  // namespace
}  // namespace ox
