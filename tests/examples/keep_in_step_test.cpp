#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/records/property_keys.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

class KeepInStep : public testing::Test {
 protected:
  KeepInStep() { std::filesystem::create_directory(folder); }

  support::ProcessResult run() const {
    return support::runProcess({OX_KEEP_IN_STEP, "Cards", folder.string()});
  }

  const std::filesystem::path folder = support::temporaryPath("cards");
};

TEST_F(KeepInStep, MakesTheAccountOnceAndCarriesChangesBothWays) {
  support::temporaryFile("cards/a.vcf",
                         "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:a\r\nFN:Ann Lee\r\nN:Lee;Ann;;;\r\n"
                         "END:VCARD\r\n");
  const auto first = run();
  EXPECT_EQ(first.exitCode, 0) << first.errors;
  EXPECT_EQ(first.output, "Cards: 1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
  const auto book = ABAddressBook::sharedAddressBook();
  ASSERT_EQ(book->people().size(), 1U);
  book->people().front()->setValue_forProperty(Object("Captain"), kABJobTitleProperty);
  ASSERT_TRUE(book->save());
  EXPECT_EQ(run().output, "Cards: 0 new, 0 changed, 0 deleted here; 1 sent, 0 deleted there\n");
  EXPECT_NE(support::fileBytes(folder / "a.vcf").find("TITLE:Captain\r\n"), std::string::npos);
}

TEST_F(KeepInStep, SaysWhatFailed) {
  std::filesystem::remove(folder);
  const auto result = run();
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(result.errors.starts_with("failed: ")) << result.errors;
  EXPECT_NE(result.errors.find(folder.string()), std::string::npos) << result.errors;
}

}  // namespace
}  // namespace ox
