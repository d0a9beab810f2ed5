// Where the password of a login, or its token, is never to be found: every byte of every file, of
// what is printed, and of what others may see of the processes is searched.
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/support/card_server.hpp"
#include "tests/sync/support/dav_answers.hpp"

namespace ox::program_tests {
namespace {

namespace fs = std::filesystem;
using support::CardServer;
using support::ScriptedAnswer;
using support::ScriptedRequest;
using Words = std::vector<std::string>;

constexpr const char* kPassword = "purple0otter";
constexpr const char* kBasic = "YW5uOnB1cnBsZTBvdHRlcg==";  // of ann and the password

bool tells(const std::string& bytes) {
  return bytes.find(kPassword) != std::string::npos || bytes.find(kBasic) != std::string::npos;
}

std::string bytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// The files of the test's folder that hold it.
Words filesThatTell() {
  Words files;
  for (const auto& entry : fs::recursive_directory_iterator(support::temporaryPath(""))) {
    if (entry.is_regular_file() && tells(bytesOf(entry.path())))
      files.push_back(entry.path().filename());
  }
  return files;
}

// Command lines and environments that hold it, of any process that can be looked at.
Words processesThatTell() {
  Words found;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const auto name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    for (const auto* part : {"cmdline", "environ"}) {
      if (tells(bytesOf(entry.path() / part))) found.push_back(bytesOf(entry.path() / "cmdline"));
    }
  }
  return found;
}

struct Source {
  const char* name;
  Words words;
  std::string authorization;
};

std::ostream& operator<<(std::ostream& out, const Source& source) {
  return out << source.name;
}

std::vector<Source> sources() {
  const auto basic = std::string("Basic ") + kBasic;
  return {
      {"File", {"--user", "ann", "--password-file", "FOLDER/word"}, basic},
      {"Command", {"--user", "ann", "--password-command", "cat 'FOLDER/word'"}, basic},
      {"Credential", {"--user", "ann", "--credential", "word"}, basic},
      {"Bearer", {"--bearer-command", "cat 'FOLDER/word'"}, std::string("Bearer ") + kPassword}};
}

// A server that lets in whoever sends the secret, which stands in the file "word" alone.
class SecretOfALogin : public testing::TestWithParam<Source> {
 protected:
  SecretOfALogin() {
    const auto file = support::temporaryFile("word", std::string(kPassword) + "\n");
    fs::permissions(file, fs::perms::owner_read);
    ::setenv("CREDENTIALS_DIRECTORY", support::temporaryPath("").c_str(), 1);
    for (const auto* name : {"Ann", "Ben", "Cy"}) {
      server.put(std::string(name) + ".vcf",
                 card({std::string("UID:") + name, std::string("N:Lee;") + name + ";;;",
                       std::string("FN:") + name + " Lee"}));
    }
    server.wants(GetParam().authorization);
  }

  static Words loginWords() {
    const auto folder = support::temporaryPath("").string();
    auto words = GetParam().words;
    for (auto& word : words) {
      if (const auto at = word.find("FOLDER/"); at != std::string::npos)
        word.replace(at, 7, folder);
    }
    return words;
  }
  // Of a command whose output is searched, too.
  static support::ProcessResult runSilently(const Words& words) {
    auto result = run(words);
    EXPECT_FALSE(tells(result.output)) << result.output;
    EXPECT_FALSE(tells(result.errors)) << result.errors;
    return result;
  }
  support::ProcessResult add(const Words& more = {}) const {
    Words words = {"accounts",       "add",          "Team",     "--url",
                   server.bookUrl(), "--allow-http", "--verbose"};
    const auto login = loginWords();
    words.insert(words.end(), login.begin(), login.end());
    words.insert(words.end(), more.begin(), more.end());
    return runSilently(words);
  }
  static bool wasSentTo(const CardServer& other) {
    for (const auto& request : other.scripted.requests()) {
      for (const auto& [name, value] : request.headers) {
        if (tells(value) || name == "authorization" || name == "cookie") return true;
      }
      if (tells(request.target) || tells(request.body)) return true;
    }
    return false;
  }

  CardServer server;
};

INSTANTIATE_TEST_SUITE_P(From, SecretOfALogin, testing::ValuesIn(sources()),
                         [](const auto& source) { return std::string(source.param.name); });

TEST_P(SecretOfALogin, StaysInNoFileAndIsShownToNobody) {
  std::size_t looks = 0;
  // The store is open then, with its log beside it.
  server.between([&](const auto&, const auto& well) {
    ++looks;
    EXPECT_EQ(filesThatTell(), Words{"word"});
    EXPECT_EQ(processesThatTell(), Words());
    return well();
  });
  ASSERT_EQ(add().exitCode, 0);
  const auto path = [](const char* name) { return support::temporaryPath(name).string(); };
  EXPECT_EQ(runSilently({"sync", "--verbose", "--report", path("report.json")}).exitCode, 0);
  runSilently({"set", "Ann", "note=ours"});
  EXPECT_EQ(runSilently({"--json", "sync", "--verbose"}).exitCode, 0);
  EXPECT_GE(looks, 5U);
  EXPECT_EQ(runSilently({"backup", "--all", path("copy.db")}).exitCode, 0);
  EXPECT_EQ(runSilently({"backup", "Team", path("team.book")}).exitCode, 0);
  EXPECT_EQ(runSilently({"export", "-o", path("all.vcf")}).exitCode, 0);
  for (const Words& words :
       std::vector<Words>{{"sync", "--status"}, {"accounts"}, {"log"}, {"check"}}) {
    runSilently(words);
    auto json = words;
    json.insert(json.begin(), "--json");
    runSilently(json);
  }
  EXPECT_EQ(filesThatTell(), Words{"word"});
}

TEST_P(SecretOfALogin, IsNotToldWhereItIsRefused) {
  server.wants("Basic other");
  EXPECT_EQ(add().exitCode, 1);
  server.wants(GetParam().authorization);
  ASSERT_EQ(add().exitCode, 0);
  server.wants("Basic other");
  EXPECT_EQ(
      runSilently({"sync", "--verbose", "--report", support::temporaryPath("r").string()}).exitCode,
      1);
  // A server may say back what it was sent.
  server.between([](const ScriptedRequest& request, const auto&) {
    return support::plain(403, "not " + request.header("authorization") + "!");
  });
  const auto scheme = GetParam().authorization.substr(0, GetParam().authorization.find(' '));
  EXPECT_EQ(runSilently({"sync", "--verbose"}).exitCode, 1);
  EXPECT_EQ(runSilently({"sync"}).errors,
            "oxcontacts: Team: " + server.bookUrl() + " answered 403 (not " + scheme + " ...!).\n");
  EXPECT_EQ(filesThatTell(), Words{"word"});
}

// What has the same address under another name is another host.
TEST_P(SecretOfALogin, GoesToNoOtherHost) {
  ASSERT_EQ(add().exitCode, 0);
  ASSERT_EQ(run({"sync"}).exitCode, 0);
  CardServer other;
  other.wants(GetParam().authorization);
  const auto elsewhere = "http://localhost:" + std::to_string(other.scripted.port());
  server.between([&](const ScriptedRequest& request, const auto& well) {
    if (!request.has("authorization")) return well();
    return ScriptedAnswer{.status = 307, .headers = {{"Location", elsewhere + request.target}}};
  });
  const auto place = elsewhere.substr(7);
  const auto result = runSilently({"--quiet", "sync"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "oxcontacts: Team: " + place +
                               " wants a login (401); the password was not sent there, since it "
                               "belongs to another place: a login at " +
                               elsewhere + " would be one of its own\n");
  EXPECT_EQ(other.scripted.requests().size(), 1U);
  EXPECT_FALSE(wasSentTo(other));
}

TEST_P(SecretOfALogin, GoesToNoHostThatDiscoveryNames) {
  CardServer other;
  const auto elsewhere = "http://localhost:" + std::to_string(other.scripted.port());
  server.between([&](const auto&, const auto& well) {
    auto answer = well();
    const std::string own = "<href>/ann/</href>";
    for (auto at = answer.body.find(own); at != std::string::npos;
         at = answer.body.find(own, at + 1)) {
      answer.body.replace(at, own.size(), "<href>" + elsewhere + "/ann/</href>");
    }
    return answer;
  });
  Words words = {"accounts", "add", "Team", "--url", server.origin() + "/", "--allow-http"};
  const auto login = loginWords();
  words.insert(words.end(), login.begin(), login.end());
  EXPECT_EQ(runSilently(words).exitCode, 1);
  EXPECT_EQ(other.scripted.connections(), 0U);
}

TEST(SecretInTheUrl, IsRefusedAndNotRepeated) {
  CardServer server;
  const auto url = "http://ann:" + std::string(kPassword) + "@" + server.bookUrl().substr(7);
  const auto result = run({"accounts", "add", "Team", "--url", url, "--allow-http", "--verbose"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "oxcontacts: User and password do not belong into a URL, which is kept and shown.\n");
  EXPECT_EQ(server.scripted.connections(), 0U);
  EXPECT_EQ(filesThatTell(), Words());
}

// What a command of the password has started ends with it, also where no terminal passes an
// interruption on.
TEST(SlowSecret, LeavesNothingRunningWhenItIsInterrupted) {
  const auto began = support::temporaryPath("began").string();
  CardServer server;
  const Words words = {"accounts",
                       "add",
                       "Team",
                       "--url",
                       server.bookUrl(),
                       "--allow-http",
                       "--user",
                       "ann",
                       "--password-command",
                       "sleep 1000 & echo $! > '" + began + "'; wait; echo no"};
  auto command = programCommand(words);
  command.insert(command.begin(), "/usr/bin/setsid");
  support::RunningProcess adding(command);
  for (int i = 0; i < 3000 && bytesOf(began).empty(); ++i) ::usleep(10'000);
  const auto sleeper = static_cast<pid_t>(std::stoi(bytesOf(began)));
  ASSERT_EQ(::kill(sleeper, 0), 0);
  ::kill(adding.id(), SIGINT);
  EXPECT_EQ(adding.wait().exitCode, 130);
  // Whoever has adopted it may take a moment to see its end.
  const auto state = [&] {
    const auto stat = bytesOf("/proc/" + std::to_string(sleeper) + "/stat");
    return stat.empty() ? 'X' : stat[stat.rfind(')') + 2];
  };
  for (int i = 0; i < 300 && state() == 'S'; ++i) ::usleep(10'000);
  EXPECT_NE(state(), 'S');
}

}  // namespace
}  // namespace ox::program_tests
