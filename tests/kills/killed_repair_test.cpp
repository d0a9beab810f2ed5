// A repair, killed at every change that it makes to a file. Each of its steps is there or is not,
// what every reader is told stays the same, and whoever repairs again comes to the end.
#include <gtest/gtest.h>
#include <set>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/kills/address_book.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::kills {
namespace {

using program_tests::programCommand;
using Sentences = std::vector<std::string>;

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

std::string tagPath() {
  return support::StoreEnvironment::instance().tagStore().string();
}

std::string query(const std::string& path, const char* sql) {
  return sqlite::Connection(path, sqlite::Connection::Mode::ReadOnly).queryText(sql).value_or("");
}

// Records, values and links.
std::string contacts() {
  return query(storePath(),
               "SELECT (SELECT group_concat(hex(uid) || kind || container, ' ') FROM record) || "
               "(SELECT group_concat(record || hex(properties), ' ') FROM content) || "
               "(SELECT group_concat(id || ':' || parent || '>' || child, ' ') FROM link)");
}

std::string tagged() {
  return query(tagPath(), "SELECT group_concat(person || tag, ' ') FROM tag");
}

TEST(KilledRepair, MendsItsStoreWholeOrNotAtAll) {
  fillAddressBook();
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE content SET fingerprint = 7, card_uid = 'x'; DELETE FROM sqlite_sequence");
  const auto damaged = storeProblems(storePath());
  ASSERT_GT(damaged.size(), 5U);
  const auto before = contacts();
  const auto tagsBefore = tagged();
  const auto command = programCommand({"check", "--repair"});
  const int killed = killEverywhere(command, [&](const support::ProcessResult& result) {
    const auto left = storeProblems(storePath());
    EXPECT_TRUE(left == damaged || left.empty()) << left.size();
    EXPECT_TRUE(result.exitCode != 0 || left.empty());
    EXPECT_EQ(contacts(), before);
    EXPECT_EQ(tagged(), tagsBefore);
    EXPECT_EQ(runAlive(command).exitCode, 0);
    EXPECT_EQ(storeProblems(storePath()), Sentences());
    EXPECT_EQ(TagFile(tagPath()).problems(), Sentences());
    EXPECT_EQ(contacts(), before);
  });
  EXPECT_GT(killed, 1);
}

// The ID of a person who is removed again.
std::string removedPerson(const std::string& name) {
  EXPECT_EQ(program_tests::run({"add-person", "_local", "name=" + name}).exitCode, 0);
  auto id = program_tests::runJson({"show", name})["ID"].get<std::string>();
  EXPECT_EQ(program_tests::run({"remove-person", name}).exitCode, 0);
  return id;
}

TEST(KilledRepair, TakesWhatIsOfNoUseAwayWholeOrNotAtAll) {
  fillAddressBook();
  program_tests::run({"tag", "Ben Ray", "--add", "opera"});
  const auto gone = removedPerson("Eve Fox");
  for (const auto& person : {gone, removedPerson("Hal Orr")}) {
    sqlite::Connection(tagPath(), sqlite::Connection::Mode::ReadWrite)
        .execute(("INSERT INTO tag(manager, person, tag, position) VALUES('_local', '" + person +
                  "', 'a', 1)")
                     .c_str());
  }
  const auto before = contacts();
  const auto with = tagged();
  const auto command = programCommand({"check", "--repair"});
  const int killed = killEverywhere(command, [&](const support::ProcessResult& result) {
    EXPECT_EQ(storeProblems(storePath()), Sentences());
    EXPECT_EQ(contacts(), before);
    const auto now = tagged();
    const bool isDone = now.find(gone) == std::string::npos;
    EXPECT_TRUE(isDone || now == with) << now;
    EXPECT_TRUE(result.exitCode != 0 || isDone);
    EXPECT_EQ(runAlive(command).exitCode, 0);
    EXPECT_EQ(tagged().find(gone), std::string::npos);
    EXPECT_EQ(runAlive(programCommand({"undo"})).exitCode, 0);
    EXPECT_EQ(tagged().size(), with.size());
  });
  EXPECT_GT(killed, 1);
}

}  // namespace
}  // namespace ox::kills
