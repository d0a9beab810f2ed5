#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

void importCards(const std::string& cards) {
  ASSERT_EQ(run({"import", temporaryFile("cards.vcf", cards)}).exitCode, 0);
}

void fillStore() {
  importCards(card({"N:Lee;Ann;;;", "FN:Ann Lee", "BDAY:1992-02-29"}) +
              card({"N:Berg;Bo;;;", "FN:Bo Berg", "BDAY:1980-03-01", "item1.X-ABDATE:2010-12-24",
                    "item1.X-ABLabel:_$!<Anniversary>!$_"}) +
              card({"N:Day;Cy;;;", "FN:Cy Day", "BDAY;X-APPLE-OMIT-YEAR=1604:1604-12-31"}) +
              card({"N:Yet;Di;;;", "FN:Di Yet", "BDAY:2027-01-05"}) +
              card({"N:None;Ed;;;", "FN:Ed None"}));
}

TEST(BirthdaysCommand, ListsTheDaysThatComeRoundTheNextOneFirst) {
  fillStore();
  EXPECT_EQ(run({"birthdays", "--from", "2026-12-24"}).output,
            "DAY         WHEN        NAME     WHAT         YEARS\n"
            "2026-12-24  today       Bo Berg  Anniversary     16\n"
            "2026-12-31  in 7 days   Cy Day   Birthday\n"
            "2027-01-05  in 12 days  Di Yet   Birthday         0\n"
            "2027-02-28  in 66 days  Ann Lee  Birthday        35\n"
            "2027-03-01  in 67 days  Bo Berg  Birthday        47\n");
  EXPECT_EQ(run({"birthdays", "--from", "2026-12-30", "--days", "6"}).output,
            "DAY         WHEN       NAME    WHAT      YEARS\n"
            "2026-12-31  tomorrow   Cy Day  Birthday\n"
            "2027-01-05  in 6 days  Di Yet  Birthday      0\n");
}

TEST(BirthdaysCommand, GivesALeapDayTheLastDayOfFebruaryInOtherYears) {
  fillStore();
  const auto next = [](const char* from) {
    return runJson({"birthdays", "ann", "--from", from})[0];
  };
  EXPECT_EQ(next("2027-02-01")["next"], "2027-02-28");
  EXPECT_EQ(next("2028-02-28")["next"], "2028-02-29");
  EXPECT_EQ(next("2028-02-28")["inDays"], 1);
  EXPECT_EQ(next("2028-02-29")["years"], 36);
  EXPECT_EQ(next("2028-03-01")["next"], "2029-02-28");
}

TEST(BirthdaysCommand, ChoosesAndRefuses) {
  fillStore();
  EXPECT_EQ(runJson({"birthdays", "cy", "--from", "2026-12-24"}),
            Json::array({{{"ID", runJson({"show", "cy"})["ID"]},
                          {"displayName", "Cy Day"},
                          {"what", "Birthday"},
                          {"date", "--12-31"},
                          {"next", "2026-12-31"},
                          {"inDays", 7},
                          {"years", nullptr}}}));
  const auto nobody = run({"birthdays", "--from", "2026-05-01", "--days", "3"});
  EXPECT_EQ(nobody.exitCode, 0);
  EXPECT_EQ(nobody.errors, "oxcontacts: nobody has a birthday in these days\n");
  EXPECT_EQ(run({"birthdays", "zebra"}).exitCode, 4);
  EXPECT_EQ(run({"birthdays", "--from", "May"}).exitCode, 2);
  EXPECT_EQ(run({"birthdays", "--days", "-1"}).exitCode, 2);
}

}  // namespace
}  // namespace ox::program_tests
