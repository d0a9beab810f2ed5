#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/records/property_keys.hpp"
#include "tests/support/log_without_room.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

support::ProcessResult runExample(const std::string& person, const std::string& file) {
  return support::runProcess({OX_EDIT_AND_SAVE, person, "+1 556", file});
}

// Each stored number with its label, the main one marked.
std::string phonesOf(const std::string& identifier) {
  const auto record = ABAddressBook::sharedAddressBook()->recordForUniqueId(identifier);
  const auto value = record->valueForProperty(kABPhoneProperty);
  std::string text;
  for (const auto& entry : std::get<MultiValuePtr>(value)->entries) {
    const bool main = entry.identifier == std::get<MultiValuePtr>(value)->primary;
    text +=
        entry.label.value_or("-") + " " + entry.value.toText().value_or("-") + (main ? "! " : " ");
  }
  return text;
}

void buildAnn() {
  support::StoreBuilder()
      .person("bea", {.first = "Bea"})
      .person("ann",
              {.first = "Ann", .phones = {{"Boat", "+1 554"}, {"_$!<Home>!$_", "+1 555", true}}});
}

TEST(EditAndSave, ChangesTheMainPhoneSavesAndBacksUp) {
  buildAnn();
  const auto file = support::temporaryPath("book");
  const auto result = runExample("Ann", file.string());
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "Ann has the number +1 556 now\n");
  EXPECT_TRUE(result.errors.ends_with("100 %\n")) << result.errors;
  EXPECT_EQ(phonesOf("ann"), "Boat +1 554 _$!<Home>!$_ +1 556! ");
  const auto book = OxAddressBookGeneral::addressBookWithData(makeData(support::fileBytes(file)));
  ASSERT_TRUE(book);
  EXPECT_EQ(book->personsDic().count(), 2U);
}

TEST(EditAndSave, GivesAFirstNumberToWhoHasNone) {
  buildAnn();
  EXPECT_EQ(runExample("Bea", support::temporaryPath("book").string()).exitCode, 0);
  EXPECT_EQ(phonesOf("bea"), "- +1 556! ");
}

TEST(EditAndSave, SaysWhatFailedAndKeepsTheEarlierBackup) {
  buildAnn();
  const auto backup = support::temporaryFile("book", "an earlier one");
  const support::LogWithoutRoom full(storePath());
  const auto result = support::runProcess(
      support::LogWithoutRoom::limited({OX_EDIT_AND_SAVE, "Ann", "+1 556", backup.string()}));
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(result.errors.ends_with("\nfailed: " + storePath() + ": disk I/O error (" +
                                      storePath() + ")\n"))
      << result.errors;
  EXPECT_EQ(support::fileBytes(backup), "an earlier one");
  EXPECT_EQ(phonesOf("ann"), "Boat +1 554 _$!<Home>!$_ +1 555! ");
}

TEST(EditAndSave, SaysWhyAStoreCannotBeReadInsteadOfFindingNobody) {
  support::temporaryFile("contacts.db", "no store");
  const auto result = runExample("Ann", support::temporaryPath("book").string());
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.errors.find("failed: " + storePath() + ": is not a contact store"),
            std::string::npos)
      << result.errors;
  EXPECT_EQ(result.errors.find("there is no Ann"), std::string::npos) << result.errors;
}

}  // namespace
}  // namespace ox
