// phones, addresses and mail.
#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

void fillStore() {
  const auto file = temporaryFile(
      "cards.vcf",
      card({"N:Zorn;Zoe;;;", "FN:Zoe Zorn", "TEL;TYPE=HOME:+1 555 2",
            "ADR;TYPE=HOME:;;Street 1;Town;;12345;"}) +
          card({"N:Lee;Ann;;;", "FN:Ann\tLee", "TEL;TYPE=CELL:+1 555 1", "TEL:+1 555 9",
                "EMAIL;TYPE=WORK:ann@work.example", "EMAIL:ann@home.example"}) +
          card({"N:Berg;Bo;;;", "FN:Bo Berg", "EMAIL:bo@work.example"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
}

TEST(PhonesCommand, ListsEveryNumberByName) {
  fillStore();
  EXPECT_EQ(run({"phones"}).output,
            "NAME      LABEL   NUMBER\n"
            "Ann Lee   Mobile  +1 555 1\n"
            "Ann Lee           +1 555 9\n"
            "Zoe Zorn  Home    +1 555 2\n");
  EXPECT_EQ(run({"phones", "zorn"}).output, "NAME      LABEL  NUMBER\nZoe Zorn  Home   +1 555 2\n");
  EXPECT_EQ(runJson({"phones", "zorn"}), Json::array({{{"ID", runJson({"show", "zorn"})["ID"]},
                                                       {"displayName", "Zoe Zorn"},
                                                       {"labelDisplayName", "Home"},
                                                       {"value", "+1 555 2"}}}));
  const auto without = run({"phones", "berg"});
  EXPECT_EQ(without.exitCode, 4);
  EXPECT_EQ(without.errors, "oxcontacts: nobody who matches \"berg\" has a telephone number\n");
}

TEST(AddressesCommand, ListsPostalAddresses) {
  fillStore();
  EXPECT_EQ(run({"addresses"}).output,
            "NAME      LABEL  ADDRESS\nZoe Zorn  Home   Street 1, Town, 12345\n");
}

TEST(MailCommand, ListsAddressesAsMailProgramsTakeThem) {
  fillStore();
  EXPECT_EQ(run({"mail", "ann"}).output,
            "2 addresses\n"
            "ann@work.example\tAnn Lee\tWork\n"
            "ann@home.example\tAnn Lee\t\n");
  EXPECT_EQ(run({"mail", "bo"}).output, "1 address\nbo@work.example\tBo Berg\t\n");
  EXPECT_EQ(run({"mail", "--bare", "work.example"}).output,
            "ann@work.example\tAnn Lee\tWork\n"
            "ann@home.example\tAnn Lee\t\n"
            "bo@work.example\tBo Berg\t\n");
  EXPECT_EQ(run({"mail", "zorn"}).exitCode, 4);
  EXPECT_EQ(run({"mail", "zebra"}).exitCode, 4);
}

// A name of several lines and fields is still one field of one line.
TEST(MailCommand, KeepsLinesAndFieldsWhole) {
  const auto file =
      temporaryFile("cards.vcf", card({"N:a\tb\\nc;;;;", "FN:a\tb\\nc", "EMAIL:x@example.org"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
  EXPECT_EQ(run({"mail", "--bare", "example"}).output, "x@example.org\ta bc\t\n");
}

}  // namespace
}  // namespace ox::program_tests
