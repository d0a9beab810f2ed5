#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

TEST(AccountsCommand, ListsWhatWasAddedTheLocalOneFirst) {
  EXPECT_EQ(
      runJson({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"}),
      Json::parse(R"({"identifier":"A:ABAccount","name":"iCloud","type":"carddav","sync":null})"));
  const auto office = runJson({"accounts", "add", "Office", "--type", "exchange"});
  EXPECT_EQ(office["name"], "Office");
  EXPECT_TRUE(office["identifier"].get<std::string>().ends_with(":ABAccount"));
  EXPECT_EQ(runJson({"accounts"}), Json::array({{{"identifier", "_local:ABAccount"},
                                                 {"name", "On My Mac"},
                                                 {"type", "local"},
                                                 {"sync", nullptr}},
                                                {{"identifier", "A:ABAccount"},
                                                 {"name", "iCloud"},
                                                 {"type", "carddav"},
                                                 {"sync", nullptr}},
                                                office}));
  EXPECT_EQ(run({"accounts"}).output.substr(0, 24), "NAME       TYPE      IDE");
  EXPECT_EQ(run({"accounts", "remove", "A"}).exitCode, 0);
  EXPECT_EQ(run({"accounts", "remove", "Office"}).exitCode, 0);
  EXPECT_EQ(runJson({"accounts"}).size(), 1U);
}

TEST(AccountsCommand, RemovesOneThatHoldsRecordsOnlyWithForce) {
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  const auto file = temporaryFile("one.vcf", card({"N:;Ann;;;", "FN:Ann"}));
  ASSERT_EQ(run({"import", file, "--into", "iCloud"}).exitCode, 0);

  const auto refused = run({"accounts", "remove", "iCloud"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.errors, "oxcontacts: iCloud holds records; --force removes them with it\n");
  EXPECT_EQ(runJson({"persons"}).size(), 1U);

  EXPECT_EQ(run({"accounts", "remove", "iCloud", "--force"}).exitCode, 0);
  EXPECT_EQ(runJson({"persons"}), Json::array());
  EXPECT_EQ(run({"check"}).output, "sound\n");
}

TEST(AccountsCommand, RemovesTheTagsWithThePersons) {
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  const std::string ann = runJson({"add-person", "iCloud", "name=Ann"})["ID"];
  const std::string ben = runJson({"add-person", "_local", "name=Ben"})["ID"];
  run({"tag", ann, "--add", "secret"});
  run({"tag", ben, "--add", "kept"});
  EXPECT_EQ(runJson({"accounts", "remove", "iCloud", "--force"})["identifier"], "A:ABAccount");
  EXPECT_EQ(run({"tag", ben}).output, "kept\n");
  sqlite::Connection tags(support::StoreEnvironment::instance().tagStore().string(),
                          sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(tags.queryInteger("SELECT count(*) FROM tag"), 1);
}

TEST(AccountsCommand, TellsWhatItCannotDo) {
  for (const auto* identifier : {"A:ABAccount", "B:ABAccount"}) {
    run({"accounts", "add", "Twin", "--identifier", identifier});
  }
  struct Row {
    std::vector<std::string> arguments;
    int exitCode;
    std::string message;
  };
  const std::vector<Row> rows = {
      {{"accounts", "remove", "Nobody"}, 4, "there is no account \"Nobody\""},
      {{"accounts", "remove", "Twin"}, 2, "A:ABAccount, B:ABAccount"},
      {{"accounts", "remove", "_local", "--force"}, 1, "the local account cannot be removed"},
      {{"accounts", "add", "x", "--identifier", "A:ABAccount"}, 1, "A:ABAccount already"},
      {{"accounts", "add", "x", "--identifier", "A"}, 1, "A:ABAccount already"},
      {{"accounts", "add", "x", "--identifier", "A:ABAccount:ABAccount"}, 1, "A:ABAccount already"},
      {{"accounts", "add", "x", "--identifier", "_local"}, 1, "_local:ABAccount already"},
      {{"accounts", "add", "x", "--identifier", ":ABAccount"}, 2, "is no identifier"},
      {{"accounts", "add", "x", "--type", "imap"}, 2, "imap"},
      {{"accounts", "add"}, 2, "NAME is required"},
      {{"import", "x.vcf", "--into", "Nobody"}, 4, "there is no account \"Nobody\""},
      {{"persons", "--limit", "some"}, 2, "--limit: \"some\" is no number of persons"},
      {{"--color", "red", "accounts"}, 2, "red"},
  };
  for (const auto& row : rows) {
    const auto result = run(row.arguments);
    EXPECT_EQ(result.exitCode, row.exitCode) << row.message;
    EXPECT_NE(result.errors.find(row.message), std::string::npos) << result.errors;
    EXPECT_EQ(result.output, "") << row.message;
  }
  EXPECT_EQ(runJson({"accounts"}).size(), 3U);
}

// Each name that may mean two books must be told, whether they hold records or not.
TEST(BookNames, AreAmbiguousWhateverTheBooksHold) {
  for (const auto* identifier : {"A:ABAccount", "B:ABAccount"}) {
    run({"accounts", "add", "Work", "--identifier", identifier});
  }
  run({"accounts", "add", "iCloud", "--identifier", "C:ABAccount"});
  run({"add-person", "A", "name=Ann"});
  run({"add-person", "C", "name=Cy"});
  const auto refused = run({"add-person", "Work", "name=Ben"});
  EXPECT_EQ(refused.exitCode, 2);
  EXPECT_EQ(refused.errors,
            "oxcontacts: \"Work\" may be any of 2 books; name one by its ID: A, B\n");
  EXPECT_EQ(run({"export", "--book", "Work"}).exitCode, 2);
  EXPECT_EQ(runJson({"add-person", "B", "name=Ben"})["addressBookID"], "B");
  EXPECT_EQ(run({"add-person", "Work", "name=Dee"}).exitCode, 2);
  for (const auto* name : {"C", "C:ABAccount", "iCloud"}) {
    EXPECT_EQ(runJson({"persons", "--book", name}).size(), 1U) << name;
  }
  EXPECT_EQ(runJson({"persons"}).size(), 3U);
}

}  // namespace
}  // namespace ox::program_tests
