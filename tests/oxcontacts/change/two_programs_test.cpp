#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>
#include <sys/syscall.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

// Two programs that change one person at once.

namespace ox::program_tests {
namespace {

std::vector<std::string> phonesOf(const std::string& person) {
  std::vector<std::string> phones;
  const auto shown = runJson({"show", person});
  for (const auto& property : shown["properties"]) {
    if (property["name"] != "OxProPertyPhone") continue;
    for (const auto& entry : property["values"]) phones.push_back(entry["value"]);
  }
  return phones;
}

TEST(TwoPrograms, LoseNoPhoneThatTheOtherAdds) {
  ASSERT_EQ(run({"add-person", "_local", "name=A B", "phone=+0"}).exitCode, 0);
  const auto result = runShell(R"(
    adds() {
      for number in $(seq 100); do "$OX" --quiet set "A B" "phone+=+$1$number" || echo "$1$number"; done
    }
    adds 1- >/dev/null & adds 2- >/dev/null & wait
  )");
  EXPECT_EQ(result.errors, "");
  std::set<std::string> expected = {"+0"};
  for (int number = 1; number <= 100; ++number) {
    expected.insert("+1-" + std::to_string(number));
    expected.insert("+2-" + std::to_string(number));
  }
  const auto phones = phonesOf("A B");
  EXPECT_EQ(phones.size(), 201U);
  EXPECT_EQ(std::set(phones.begin(), phones.end()), expected);
}

// Both have read the person and wait for the lock of the store: one of them saves after the other.
// Ann has been looked for before, so that neither waits for the other to make the search index.
TEST(TwoPrograms, ThatChangeOnePhoneNameTheOneThatWasOvertaken) {
  ASSERT_EQ(run({"add-person", "_local", "name=Ann", "phone:home=+0"}).exitCode, 0);
  ASSERT_EQ(run({"show", "Ann"}).exitCode, 0);
  sqlite::Connection store(support::StoreEnvironment::instance().contactStore().string(),
                           sqlite::Connection::Mode::ReadWrite);
  std::optional<sqlite::Transaction> writing(std::in_place, store);
  support::RunningProcess one(programCommand({"set", "Ann", "phone:home=+1"}));
  support::RunningProcess two(programCommand({"set", "Ann", "phone:home=+2"}));
  ASSERT_TRUE(waitsIn(one.id(), {SYS_clock_nanosleep, SYS_nanosleep}));
  ASSERT_TRUE(waitsIn(two.id(), {SYS_clock_nanosleep, SYS_nanosleep}));
  writing.reset();
  const auto first = one.wait();
  const auto second = two.wait();
  EXPECT_EQ(first.exitCode, 0);
  EXPECT_EQ(second.exitCode, 0);
  const auto phones = phonesOf("Ann");
  ASSERT_EQ(phones.size(), 1U);
  const bool firstStands = phones.front() == "+1";
  const auto& said = firstStands ? first.errors : second.errors;
  EXPECT_NE(said.find(firstStands ? "the Phone \"+2\" of" : "the Phone \"+1\" of"),
            std::string::npos)
      << said;
  EXPECT_EQ((firstStands ? second.errors : first.errors).find("the Phone"), std::string::npos);
}

// While it waits for the lock, the one that holds it takes everybody out of the group.
TEST(TwoPrograms, CountThePersonsThatAreAddedWhateverTheOtherTakesOut) {
  for (const auto& command : std::vector<std::vector<std::string>>{
           {"add-person", "_local", "name=Ann"},
           {"add-person", "_local", "name=Ben"},
           {"add-person", "_local", "name=Cid"},
           {"add-group", "_local", "Club"},
           {"group-add", "Club", "Ann", "Ben"},
       }) {
    ASSERT_EQ(run(command).exitCode, 0);
  }
  sqlite::Connection store(support::StoreEnvironment::instance().contactStore().string(),
                           sqlite::Connection::Mode::ReadWrite);
  sqlite::Transaction writing(store);
  support::RunningProcess adding(programCommand({"group-add", "Club", "Ben", "Cid"}));
  ASSERT_TRUE(waitsIn(adding.id(), {SYS_clock_nanosleep, SYS_nanosleep}));
  store.execute("DELETE FROM link");
  writing.commit();
  const auto result = adding.wait();
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "oxcontacts: added 1 person to Club\n");
}

}  // namespace
}  // namespace ox::program_tests
