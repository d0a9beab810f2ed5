#include "ox/OxMacAddressBookSDK/_ABGroup/store_path.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

TEST(AccountIdFromDescription, IsTheFolderThatHoldsTheStoreFile) {
  struct Row {
    const char* description;
    Text account;
  };
  const Row rows[] = {
      {"Group g\n/root/Library/Application Support/AddressBook/X/Y/Z.db\n", "Y"},
      {"g\n/Library/Application Support/AddressBook/Sources/A:B/AddressBook.db\nmore\n", "A:B"},
      // The local store's file lies directly in the address-book folder.
      {"g\n/Library/Application Support/AddressBook/Z.db\n", std::nullopt},
      {"g\n/Library/Application Support/AddressBook/AddressBook/Z.db\n", std::nullopt},
      {"g\n/Library/Application Support/AddressBook/addressbook/Z.db\n", "addressbook"},
      // No line feed after the path.
      {"g\n/Library/Application Support/AddressBook/X/Y/Z.db", std::nullopt},
      {"g\n/library/Application Support/AddressBook/X/Y/Z.db\n", std::nullopt},
      {"", std::nullopt},
      // The first occurrence counts, to the first line feed after it.
      {"/Library/Application Support/AddressBook/A/B/Z.db\n"
       "/Library/Application Support/AddressBook/C/D/Z.db\n",
       "B"},
      {"/Library/Application Support/AddressBook/A/"
       "Library/Application Support/AddressBook/B.db\n",
       std::nullopt},
      // A slash at the end belongs to no component.
      {"/Library/Application Support/AddressBook/X/Y/Z.db/\n", "Y"},
      {"/Library/Application Support/AddressBook/X//Z.db\n", "X"},
      {"/Library/Application Support/AddressBook/\n", "Application Support"},
      // As it stands: this way does not make a standard id of it.
      {"/Library/Application Support/AddressBook/Y:ABAccount/Z.db\n", "Y:ABAccount"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(accountIdFromDescription(row.description), row.account) << row.description;
  }
}

}  // namespace
}  // namespace ox
