#include "ox/sync/http/secret.hpp"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/sync/http/asked.hpp"

namespace ox::sync {
namespace {

using support::temporaryFile;
using support::temporaryPath;
using Kind = PasswordSource::Kind;

std::string secretOf(Kind kind, const std::string& text) {
  const auto secret = readSecret({kind, text}, {});
  return secret ? secret->text() : "none";
}

std::string refusalOf(Kind kind, const std::string& text) {
  return failureOf([&] { readSecret({kind, text}, {}); });
}

std::string fileWith(const std::string& text, mode_t mode) {
  auto path = temporaryFile("secret", text).string();
  EXPECT_EQ(::chmod(path.c_str(), mode), 0);
  return path;
}

TEST(SecretOfACommand, IsItsFirstLine) {
  EXPECT_EQ(secretOf(Kind::Command, "echo 'open sesame'"), "open sesame");
  EXPECT_EQ(secretOf(Kind::Command, "printf 'first\\r\\nsecond\\n'"), "first");
  EXPECT_EQ(secretOf(Kind::Command, "printf '  kept blanks '"), "  kept blanks ");
  EXPECT_EQ(secretOf(Kind::BearerCommand, "printf \"$((6*7))\""), "42");
  EXPECT_EQ(secretOf(Kind::None, "echo no"), "none");
}

TEST(SecretOfACommand, MayBeLongAndHaveMuchBehindIt) {
  EXPECT_EQ(secretOf(Kind::Command, "head -c 20000 /dev/zero | tr '\\0' x").size(), 20000U);
  EXPECT_EQ(secretOf(Kind::Command, "echo first; head -c 1000000 /dev/zero"), "first");
}

TEST(SecretOfACommand, HasNoInput) {
  EXPECT_EQ(secretOf(Kind::Command, "cat; echo end"), "end");
}

// An agent that it starts may keep its output open for ever.
TEST(SecretOfACommand, DoesNotWaitForWhatItLeavesBehind) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(secretOf(Kind::Command, "sleep 8 & echo here"), "here");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(6));
}

TEST(SecretOfACommand, IsToldToBeWaitedFor) {
  std::vector<std::string> words;
  WireHooks hooks;
  hooks.waiting = [&](std::string_view what) { words.emplace_back(what); };
  const auto secret = readSecret({Kind::Command, "sleep 6; echo here"}, hooks);
  EXPECT_EQ(secret->text(), "here");
  EXPECT_EQ(words, std::vector<std::string>{"the password command 'sleep' (5 s)"});
}

TEST(SecretOfACommand, IsMissingWhereItFails) {
  EXPECT_EQ(refusalOf(Kind::Command, "false hunter2"),
            "Login: the password command 'false' failed (exit code 1)");
  EXPECT_EQ(refusalOf(Kind::Command, "kill -9 $$; echo hunter2"),
            "Login: the password command 'kill' was ended by signal 9");
  EXPECT_EQ(refusalOf(Kind::Command, "true"),
            "Login: the password command 'true' gives an empty first line");
  EXPECT_EQ(refusalOf(Kind::Command, "printf '\\nsecond'"),
            "Login: the password command 'printf' gives an empty first line");
  EXPECT_EQ(refusalOf(Kind::Command, "printf 'a\\001b'"),
            "Login: the password command 'printf' gives control characters");
}

TEST(SecretOfACommand, IsNotToldByTheWordsOfTheCommand) {
  EXPECT_EQ(refusalOf(Kind::Command, "TOKEN='hunter 2' false"),
            "Login: the password command failed (exit code 1)");
  EXPECT_EQ(refusalOf(Kind::Command, "'/nowhere/hunter 2' 2>&1"),
            "Login: the password command failed (exit code 127)");
}

TEST(SecretOfACommand, IsGivenUpWhenTheHostStops) {
  const auto start = std::chrono::steady_clock::now();
  WireHooks hooks;
  hooks.isStopped = [&] {
    return std::chrono::steady_clock::now() - start > std::chrono::milliseconds(100);
  };
  EXPECT_EQ(failureOf([&] {
              readSecret({Kind::Command, "exec sleep 20"}, hooks);
            }),
            "Stopped: stopped while the password was asked for");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(SecretInAFile, IsItsFirstLineWhereNobodyElseReadsIt) {
  EXPECT_EQ(secretOf(Kind::File, fileWith("open sesame\nnotes\n", 0600)), "open sesame");
  EXPECT_EQ(secretOf(Kind::File, fileWith("open sesame", 0400)), "open sesame");
}

TEST(SecretInAFile, IsRefusedWhereOthersMayReadIt) {
  for (const mode_t mode : {0640U, 0604U, 0620U, 0601U, 0644U, 0660U}) {
    const auto path = fileWith("open sesame\n", mode);
    EXPECT_EQ(refusalOf(Kind::File, path), "Usage: the password file " + path +
                                               " is open to others; make it yours alone: "
                                               "chmod 600 " +
                                               path);
  }
}

TEST(SecretInAFile, IsRefusedInWhatIsNoFile) {
  const auto folder = temporaryPath("home").string();
  EXPECT_EQ(refusalOf(Kind::File, folder),
            "Usage: the password file " + folder + " is no plain file");
  const auto pipe = temporaryPath("pipe").string();
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(refusalOf(Kind::File, pipe), "Usage: the password file " + pipe + " is no plain file");
  const auto missing = temporaryPath("missing").string();
  EXPECT_EQ(refusalOf(Kind::File, missing),
            "Usage: the password file " + missing + " cannot be read: No such file or directory");
  const auto empty = fileWith("", 0600);
  EXPECT_EQ(refusalOf(Kind::File, empty),
            "Login: the password file " + empty + " gives an empty first line");
}

TEST(SecretOfAService, IsAFileInItsFolder) {
  ::unsetenv("CREDENTIALS_DIRECTORY");
  EXPECT_EQ(refusalOf(Kind::Credential, "cards"),
            "Usage: there are no credentials here: CREDENTIALS_DIRECTORY is not set");
  temporaryFile("cards", "open sesame\n");
  ::setenv("CREDENTIALS_DIRECTORY", temporaryPath("").c_str(), 1);
  EXPECT_EQ(secretOf(Kind::Credential, "cards"), "open sesame");
  for (const auto* name : {"../cards", "/cards", "", ".", ".."}) {
    EXPECT_EQ(refusalOf(Kind::Credential, name),
              "Usage: '" + std::string(name) + "' is no name of a credential");
  }
  ::unsetenv("CREDENTIALS_DIRECTORY");
}

TEST(SecretThatIsMissing, MakesNoRequest) {
  ScriptedServer server;
  for (const auto& source :
       {PasswordSource{Kind::Command, "exit 1"}, PasswordSource{Kind::File, "/nowhere/password"},
        PasswordSource{Kind::BearerCommand, "exit 1"}}) {
    auto login = plainLogin(server);
    login.password = source;
    HttpClient client(login, {});
    const auto kind = source.kind == Kind::File ? "Usage" : "Login";
    EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }).substr(0, 5), kind);
    const std::vector<HttpClient::Job> jobs = {{[&] { return get(server.url()); }, {}, {}}};
    EXPECT_EQ(failureOf([&] { client.sendAll(jobs, 4); }).substr(0, 5), kind);
  }
  EXPECT_EQ(server.connections(), 0U);
}

// Once for each client, however many requests there are.
TEST(Secret, IsReadOnce) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.status = 207}; });
  const auto log = temporaryPath("log").string();
  auto login = plainLogin(server);
  login.password = {Kind::BearerCommand, "echo called >> '" + log + "'; echo token"};
  HttpClient client(login, {});
  for (int count = 0; count < 3; ++count) client.send(get(server.url()));
  EXPECT_EQ(support::fileBytes(log), "called\n");
}

}  // namespace
}  // namespace ox::sync
