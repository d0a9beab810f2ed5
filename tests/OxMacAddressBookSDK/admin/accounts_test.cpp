#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/store_location.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

// "_local:ABAccount On My Mac 1, A:ABAccount iCloud 3".
std::string accountsAsText() {
  std::string text;
  for (const auto& account : accounts()) {
    text += (text.empty() ? "" : ", ") + *account->identifier() + ' ' + *account->name() + ' ' +
            std::to_string(account->type());
  }
  return text;
}

template <typename Change>
std::string refusalOf(Change change) {
  try {
    change();
    return "done";
  } catch (const AccountRefused& refused) {
    return refused.what();
  }
}

TEST(AddAccount, MakesItTheLastOneUnderTheGivenOrANewIdentifier) {
  const auto added = addAccount("iCloud", CNContainerTypeCardDAV, "A:ABAccount");
  EXPECT_EQ(added->identifier(), "A:ABAccount");
  const auto office = addAccount("Office", CNContainerTypeExchange);
  EXPECT_EQ(accountsAsText(), "_local:ABAccount On My Mac 1, A:ABAccount iCloud 3, " +
                                  *office->identifier() + " Office 2");
  EXPECT_EQ(office->identifier()->size(), 36U + 10U);
  EXPECT_TRUE(office->identifier()->ends_with(":ABAccount"));
  EXPECT_EQ(accountNamed("A")->name(), "iCloud");
  EXPECT_EQ(accountNamed("A:ABAccount")->name(), "iCloud");
  EXPECT_FALSE(accountNamed("iCloud"));
}

TEST(AddAccount, IsRefusedForAStandardIdThatIsTakenOrEmpty) {
  addAccount("iCloud", CNContainerTypeCardDAV, "A:ABAccount");
  const auto add = [](const char* identifier) {
    return refusalOf([=] { addAccount("x", CNContainerTypeCardDAV, identifier); });
  };
  EXPECT_EQ(add("A"), "there is an account with the identifier A:ABAccount already");
  EXPECT_EQ(add("_local"), "there is an account with the identifier _local:ABAccount already");
  EXPECT_EQ(add(":ABAccount"), "\":ABAccount\" is no identifier");
  EXPECT_EQ(accounts().size(), 2U);
}

TEST(RemoveAccount, TakesTheRecordsAndTheTagsOfThePersonsAlong) {
  StoreBuilder()
      .person("l", {.first = "Lea"})
      .container("A:ABAccount", "iCloud", 3)
      .person("a", {.first = "Ann"})
      .group("g", "Friends");
  for (const auto* id : {"l", "a"}) {
    bookNamed("_local");  // discovers the books: tags are kept by book
    person(id)->addTag("chess");
  }
  EXPECT_EQ(recordsOfAccount("A", RecordKind::Person).size(), 1U);
  EXPECT_EQ(recordsOfAccount("A", RecordKind::Group).size(), 1U);
  EXPECT_TRUE(removeAccount("A", WithRecords::Yes));
  EXPECT_EQ(accountsAsText(), "_local:ABAccount On My Mac 1");
  EXPECT_FALSE(person("a"));
  EXPECT_FALSE(group("g"));
  EXPECT_FALSE(OxTagManager::tagManagerWithID("A")->tagsByPersonID("a"));
  EXPECT_EQ(person("l")->tagArray(), std::vector<std::string>{"chess"});
}

TEST(RemoveAccount, IsRefusedForWhatMustStay) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).person("a", {}).container("B", "Empty", 3);
  const auto remove = [](const char* identifier, WithRecords withRecords) {
    return refusalOf([=] { EXPECT_TRUE(removeAccount(identifier, withRecords)); });
  };
  EXPECT_EQ(remove("A", WithRecords::No), "the account A:ABAccount holds 1 record");
  EXPECT_EQ(remove("_local", WithRecords::Yes), "the local account cannot be removed");
  EXPECT_EQ(remove("C", WithRecords::Yes), "there is no account C");
  EXPECT_EQ(remove("B", WithRecords::No), "done");
  EXPECT_EQ(accountsAsText(), "_local:ABAccount On My Mac 1, A:ABAccount iCloud 3");
  EXPECT_TRUE(person("a"));
}

TEST(RemoveAccount, TellsThatTagsAreLeft) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).person("a", {.first = "Ann"});
  bookNamed("A");
  const auto& environment = support::StoreEnvironment::instance();
  std::filesystem::create_directory(environment.tagStore());  // no tag file can be read there
  EXPECT_FALSE(removeAccount("A", WithRecords::Yes));
  EXPECT_FALSE(person("a"));
}

TEST(ChosenStore, IsTheOneThatIsUsedWithItsTagsBesideIt) {
  ::unsetenv("OX_TAG_STORE");
  const std::string other = support::temporaryPath("other/chosen.db");
  EXPECT_TRUE(useContactStore(other));
  EXPECT_EQ(accountsAsText(), "_local:ABAccount On My Mac 1");
  OxTagManager::tagManagerWithID("_local")->addPersonID_forTag("p", "chess");
  EXPECT_TRUE(std::filesystem::exists(other));
  EXPECT_TRUE(std::filesystem::exists(other + ".tags"));
  EXPECT_FALSE(std::filesystem::exists(support::StoreEnvironment::instance().contactStore()));
  EXPECT_FALSE(useContactStore(support::temporaryPath("third.db")));
  EXPECT_EQ(contactStorePath(), other);
}

TEST(ChosenStore, CannotBeChosenOnceTheTagsAreInUse) {
  OxTagManager::tagManagerWithID("_local")->addPersonID_forTag("p", "chess");
  EXPECT_FALSE(useContactStore(support::temporaryPath("other.db")));
}

}  // namespace
}  // namespace ox::test
