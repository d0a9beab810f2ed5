// sync --conflicts and --resolve.
#include <gtest/gtest.h>

#include "tests/oxcontacts/sync/synced_folder.hpp"

namespace ox::program_tests {
namespace {

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class SyncConflicts : public SyncedFolder {
 protected:
  // Both sides give Ann another title.
  void makeConflict() const {
    synchroniseTwo();
    run({"set", "Ann Lee", "jobtitle=Head of sales"});
    write("ann.vcf", {"UID:ann", "N:Lee;Ann;;;", "FN:Ann Lee", "TITLE:Boss", "X-FOO:bar"});
    const auto result = run({"sync"});
    ASSERT_EQ(result.exitCode, 3) << result.errors;
    ASSERT_TRUE(holds(result.output, "; 1 conflict\n")) << result.output;
    ASSERT_TRUE(holds(result.errors,
                      "oxcontacts: Cards: 1 conflict; `oxcontacts sync Cards --conflicts` shows "
                      "it\n"))
        << result.errors;
  }
};

TEST_F(SyncConflicts, ShowWhoWhatTheirsAndOurs) {
  makeConflict();
  EXPECT_TRUE(holds(run({"show", "Ann Lee"}).output, "Boss"));
  const auto listed = runJson({"sync", "--conflicts"});
  ASSERT_EQ(listed.size(), 1U);
  EXPECT_EQ(listed[0]["name"], "Ann Lee");
  EXPECT_EQ(listed[0]["account"], "Cards");
  EXPECT_EQ(listed[0]["record"], personIds()["Ann Lee"]);
  EXPECT_EQ(listed[0]["theirs"], "Boss");
  EXPECT_EQ(listed[0]["ours"], "Head of sales");
  const auto number = std::to_string(listed[0]["number"].get<int>());
  const auto text = run({"sync", "--conflicts"});
  EXPECT_EQ(text.exitCode, 0);
  EXPECT_TRUE(holds(text.output, "Ann Lee")) << text.output;
  EXPECT_TRUE(holds(text.output, "Head of sales")) << text.output;
  EXPECT_TRUE(holds(text.errors, "`oxcontacts sync --resolve " + number + " theirs`"))
      << text.errors;
}

TEST_F(SyncConflicts, AreSettledByNumberAndOursIsSent) {
  makeConflict();
  const auto number = std::to_string(runJson({"sync", "--conflicts"})[0]["number"].get<int>());
  const auto settled = run({"sync", "--resolve", number, "mine"});
  EXPECT_EQ(settled.exitCode, 0) << settled.errors;
  EXPECT_EQ(settled.errors,
            "oxcontacts: settled 1 conflict of Ann Lee: ours stands now, and goes there with the "
            "next run\n");
  EXPECT_TRUE(holds(run({"show", "Ann Lee"}).output, "Head of sales"));
  EXPECT_EQ(run({"sync"}).output,
            "Cards: 0 new, 0 changed, 0 deleted here; 1 sent, 0 deleted there\n");
  EXPECT_TRUE(holds(text("ann.vcf"), "TITLE:Head of sales\r\n")) << text("ann.vcf");
  EXPECT_EQ(runJson({"sync", "--conflicts"}), Json::array());
}

TEST_F(SyncConflicts, AreSettledByNameAndTheirsStays) {
  makeConflict();
  EXPECT_EQ(run({"sync", "--resolve", "lee ann", "theirs"}).errors,
            "oxcontacts: settled 1 conflict of Ann Lee: theirs stays\n");
  EXPECT_EQ(run({"sync"}).output, kNothingDone);
  EXPECT_TRUE(holds(text("ann.vcf"), "TITLE:Boss\r\n"));
  const auto none = run({"sync", "--resolve", "Ann Lee", "theirs"});
  EXPECT_EQ(none.exitCode, 4);
  EXPECT_EQ(none.errors, "oxcontacts: Ann Lee has no open conflict\n");
  EXPECT_EQ(run({"sync", "--resolve", "Nobody", "mine"}).exitCode, 4);
}

// Different properties, and entries of one property, are no conflict.
TEST_F(SyncConflicts, AreNotMadeOfEditsThatGoTogether) {
  synchroniseTwo();
  run({"set", "Bob Berg", "jobtitle=Cook", "phone+:work=+47 2"});
  write("bob.vcf", {"UID:bob", "N:Berg;Bob;;;", "FN:Bob Berg", "TEL;TYPE=HOME:+47 1",
                    "TEL;TYPE=CELL:+47 3", "NOTE:called"});
  const auto result = run({"sync"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "Cards: 0 new, 1 changed, 0 deleted here; 1 sent, 0 deleted there\n");
  const auto shown = run({"show", "Bob Berg"}).output;
  for (const auto* part : {"Cook", "+47 1", "+47 2", "+47 3", "called"}) {
    EXPECT_TRUE(holds(shown, part)) << shown;
    EXPECT_TRUE(holds(text("bob.vcf"), part)) << text("bob.vcf");
  }
}

}  // namespace
}  // namespace ox::program_tests
