// accounts add --url and sync, with a server of the system's on loopback.
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/support/real_server.hpp"

namespace ox::program_tests {
namespace {

using support::RealServer;
using Words = std::vector<std::string>;

constexpr auto kKind = RealServer::Kind::Radicale;

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// The words that add an account of the server, with these after them.
Words adding(const RealServer& server, const std::string& name, const Words& more = {}) {
  Words words = {"accounts",      "add",    name,  "--url",
                 server.origin(), "--user", "ann", "--allow-http"};
  if (more.empty() || !more.front().starts_with("--password")) {
    words.insert(words.end(), {"--password-file", server.passwordFile()});
  }
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

TEST(ServerSync, FindsTheBookAndBringsItInStep) {
  OX_START_OR_SKIP(server, kKind);
  server->fill("addressbook", 3);
  const auto added = run(adding(*server, "Team"));
  ASSERT_EQ(added.exitCode, 0) << added.errors;
  EXPECT_TRUE(added.errors.starts_with("oxcontacts: found 1 book at " + server->origin() + "\n"))
      << added.errors;
  EXPECT_EQ(runJson({"accounts"})[1]["sync"]["url"], server->bookUrl());
  const auto first = run({"sync"});
  EXPECT_EQ(first.exitCode, 0) << first.errors;
  EXPECT_EQ(first.output, "Team: 3 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
  EXPECT_EQ(runJson({"persons"}).size(), 3U);
  run({"set", "Person 1", "jobtitle=Cook"});
  run({"remove-person", "Person 2"});
  run({"add-person", "Team", "name=Eve Moe", "phone=+47 2"});
  EXPECT_EQ(run({"sync"}).output,
            "Team: 0 new, 0 changed, 0 deleted here; 2 sent, 1 deleted there\n");
  EXPECT_EQ(run({"sync"}).output,
            "Team: 0 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");

  // Another store sees what the server holds now.
  const auto other = support::temporaryPath("other.db").string();
  auto words = adding(*server, "Team");
  words.insert(words.begin(), {"--store", other});
  ASSERT_EQ(run(words).exitCode, 0);
  ASSERT_EQ(run({"--store", other, "sync"}).exitCode, 0);
  const auto names = run({"--store", other, "persons"}).output;
  EXPECT_TRUE(holds(names, "Eve Moe") && !holds(names, "Person 2")) << names;
  EXPECT_TRUE(holds(run({"--store", other, "show", "Person 1"}).output, "Cook"));
}

TEST(ServerSync, TakesTheBooksThatAreNamed) {
  OX_START_OR_SKIP(server, kKind);
  const auto club = server->addBook("club");
  const auto unknown = run(adding(*server, "Team", {"--book", "choir"}));
  EXPECT_EQ(unknown.exitCode, 4);
  EXPECT_TRUE(holds(unknown.errors, "there is no book \"choir\"; there are ")) << unknown.errors;
  EXPECT_TRUE(holds(unknown.errors, club)) << unknown.errors;
  auto words = adding(*server, "Club", {"--book", "club"});
  words.insert(words.begin(), "--json");
  const auto added = Json::parse(run(words).output);
  ASSERT_EQ(added["added"].size(), 1U);
  EXPECT_EQ(added["added"][0]["url"], club);
  EXPECT_EQ(added["added"][0]["name"], "Club");
  ASSERT_EQ(added["left"].size(), 1U);
  EXPECT_EQ(added["left"][0]["url"], server->bookUrl());
  EXPECT_TRUE(added["left"][0]["own"]);
  // The same login, with its way to the password.
  const auto more = run({"accounts", "add", "Club", "--book", server->bookUrl()});
  ASSERT_EQ(more.exitCode, 0) << more.errors;
  const auto status = runJson({"sync", "--status"});
  ASSERT_EQ(status.size(), 2U);
  EXPECT_EQ(status[1]["login"], "Club");
  EXPECT_EQ(run({"sync", "Club"}).exitCode, 0);
}

TEST(ServerSync, AddsNothingWhereTheLoginFails) {
  OX_START_OR_SKIP(server, kKind);
  const auto wrong = support::temporaryFile("wrong", "wrong\n");
  std::filesystem::permissions(wrong, std::filesystem::perms::owner_read);
  const auto refused = run(adding(*server, "Team", {"--password-file", wrong}));
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_FALSE(holds(refused.errors, "wrong\n")) << refused.errors;
  EXPECT_EQ(run(adding(*server, "Team", {"--password-command", "exit 3"})).exitCode, 1);
  EXPECT_EQ(runJson({"accounts"}).size(), 1U);
  EXPECT_EQ(runJson({"sync", "--status"}), Json::array());
}

TEST(ServerSync, TellsOfEachRequestAndOfNoSecret) {
  OX_START_OR_SKIP(server, kKind);
  server->fill("addressbook", 2);
  const auto added = run(adding(*server, "Team", {"--verbose"}));
  ASSERT_EQ(added.exitCode, 0) << added.errors;
  const auto result = run({"sync", "--verbose"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  for (const auto& text : {added.errors, result.errors}) {
    EXPECT_TRUE(holds(text, "PROPFIND") || holds(text, "REPORT")) << text;
    EXPECT_TRUE(holds(text, " 207 ")) << text;
    for (const auto* secret : {"secret", "Basic", "VCARD", "Person 1"}) {
      EXPECT_FALSE(holds(text, secret)) << text;
    }
  }
}

TEST(ServerSync, IsToBeTriedLaterWhileTheServerIsAway) {
  {
    OX_START_OR_SKIP(server, kKind);
    server->fill("addressbook", 2);
    ASSERT_EQ(run(adding(*server, "Team", {"--password-command", "echo secret"})).exitCode, 0);
    ASSERT_EQ(run({"sync"}).exitCode, 0);
  }
  const auto away = run({"sync"});
  EXPECT_EQ(away.exitCode, 5) << away.errors;
  EXPECT_EQ(away.output, "");
  EXPECT_TRUE(holds(away.errors, "oxcontacts: Team: 127.0.0.1:")) << away.errors;
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
}

TEST(ServerSync, IsAddedLaterWhereThereIsNoServer) {
  const auto away =
      run({"accounts", "add", "Team", "--url", "http://127.0.0.1:1/", "--allow-http"});
  EXPECT_EQ(away.exitCode, 5) << away.errors;
  EXPECT_TRUE(holds(away.errors, "127.0.0.1:1 cannot be reached")) << away.errors;
  EXPECT_EQ(runJson({"accounts"}).size(), 1U);
}

// The password's command waits for as long as somebody wants it to.
class SlowPassword : public testing::Test {
 protected:
  SlowPassword() : pipe_(support::temporaryPath("pipe").string()) { ::mkfifo(pipe_.c_str(), 0600); }

  void add(const RealServer& server) const {
    const auto slow = support::temporaryPath("slow").string();
    const auto command = "if test -e '" + slow + "'; then touch '" + slow + "-began'; exec cat '" +
                         pipe_ + "'; else echo secret; fi";
    const auto added = run(adding(server, "Team", {"--password-command", command}));
    ASSERT_EQ(added.exitCode, 0) << added.errors;
    support::temporaryFile("slow", "");
  }
  static void waitUntilAsked() {
    const auto began = support::temporaryPath("slow-began");
    for (int i = 0; i < 3000 && !std::filesystem::exists(began); ++i) ::usleep(10'000);
    ASSERT_TRUE(std::filesystem::exists(began));
  }
  void answer() const { std::ofstream(pipe_) << "secret\n"; }

 private:
  std::string pipe_;
};

TEST_F(SlowPassword, LetsASecondRunWaitForAnotherTime) {
  OX_START_OR_SKIP(server, kKind);
  add(*server);
  support::RunningProcess first(programCommand({"sync"}));
  waitUntilAsked();
  const auto second = run({"sync"});
  EXPECT_EQ(second.exitCode, 5);
  EXPECT_EQ(second.errors, "oxcontacts: Team: another program is synchronising this account\n");
  answer();
  EXPECT_EQ(first.wait().exitCode, 0);
}

TEST_F(SlowPassword, IsInterrupted) {
  OX_START_OR_SKIP(server, kKind);
  add(*server);
  support::RunningProcess sync(programCommand({"sync"}));
  waitUntilAsked();
  ::kill(sync.id(), SIGINT);
  const auto result = sync.wait();
  EXPECT_EQ(result.exitCode, 130) << result.errors;
  std::filesystem::remove(support::temporaryPath("slow"));
  EXPECT_EQ(run({"sync"}).exitCode, 0);
}

}  // namespace
}  // namespace ox::program_tests
