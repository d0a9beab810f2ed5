// sync and accounts add, with servers that mean harm or are none.
#include <chrono>
#include <csignal>
#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/support/card_server.hpp"
#include "tests/sync/support/dav_answers.hpp"

namespace ox::program_tests {
namespace {

using support::CardServer;
using support::ScriptedAnswer;
using support::ScriptedRequest;
using Framing = ScriptedAnswer::Framing;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

// Of any process that this one has started and waited for, in MiB.
long mostMemory() {
  rusage usage{};
  ::getrusage(RUSAGE_CHILDREN, &usage);
  return usage.ru_maxrss / 1024;
}

std::string cardOf(const std::string& uid, const std::string& last = "Lee") {
  return card({"UID:" + uid, "N:" + last + ";" + uid + ";;;", "FN:" + uid + " " + last});
}

// The account Team was in step with its book; a person has been changed on each side since.
class HostileServer : public testing::Test {
 protected:
  HostileServer() {
    for (const auto* name : {"Ann", "Ben", "Cy"}) {
      server.put(std::string(name) + ".vcf", cardOf(name));
    }
    const auto added = run({"accounts", "add", "Team", "--url", server.bookUrl(), "--allow-http"});
    EXPECT_EQ(added.exitCode, 0) << added.errors;
    EXPECT_EQ(run({"sync"}).exitCode, 0);
    EXPECT_EQ(run({"set", "Ann", "note=ours"}).exitCode, 0);
    server.put("Ben.vcf", cardOf("Ben", "Ray"));
  }

  std::string place() const { return server.origin().substr(7); }

  // One run that ends with that code and says that of the account, and has changed nothing on
  // either side.
  void expectRefused(const std::string& why, int exitCode = 1) {
    const auto before = personsNow();
    const auto changes = server.state().changes;
    const auto result = run({"--quiet", "sync"});
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "oxcontacts: Team: " + why + "\n");
    EXPECT_EQ(personsNow(), before);
    EXPECT_EQ(server.state().changes, changes);
  }

  // Less than twice what the largest answer may have.
  static void expectModestMemory() {
    EXPECT_TRUE(kIsSanitized || mostMemory() < 512) << mostMemory();
  }

  void answerReports(ScriptedAnswer answer) {
    server.between([answer = std::move(answer)](const ScriptedRequest& request, const auto& well) {
      return request.method == "REPORT" ? answer : well();
    });
  }

  CardServer server;

 private:
  static std::string personsNow() { return run({"export", "--book", "Team"}).output; }
};

const std::string kStart = "<multistatus xmlns=\"DAV:\">";

ScriptedAnswer endless(const std::string& start, const std::string& part) {
  ScriptedAnswer answer{.status = 207,
                        .headers = {{"Content-Type", "application/xml"}},
                        .body = start,
                        .framing = Framing::Chunked};
  std::string parts;
  while (!part.empty() && parts.size() < 100000) parts += part;
  answer.rest = [parts] { return parts; };
  return answer;
}

TEST_F(HostileServer, ThatNeverEndsIsGivenUp) {
  const auto unreadable = std::string("The XML of the answer cannot be read: ");
  answerReports(endless(kStart, "<x>" + std::string(10'000, 'a') + "</x>"));
  expectRefused(place() + " gave an unusable answer: the answer is larger than what is taken");
  answerReports(endless(kStart + "<response><href>", "a"));
  expectRefused(unreadable + "one element holds more than 64 MiB.");
  answerReports(endless(kStart + "<response a=\"", "a"));
  expectRefused(unreadable + "a tag or a comment is longer than 2 MiB.");
  answerReports(endless(kStart + "<response><propstat><prop>", "<a/>"));
  expectRefused("One entry of the answer has more than 10,000 elements.");
  answerReports(endless(kStart, "<response>"));
  expectRefused(unreadable + "it is nested deeper than 32.");
  auto refusal = endless({}, "No. ");
  refusal.status = 403;
  answerReports(refusal);
  expectRefused(place() + " gave an unusable answer: the answer is larger than what is taken");
  ScriptedAnswer headers{.status = 207};
  for (int i = 0; i < 100'000; ++i) headers.headers.emplace_back("X-" + std::to_string(i), "a");
  answerReports(headers);
  expectRefused(place() + " gave an unusable answer: the answer has too many headers");
  expectModestMemory();
}

// Nothing of what it says lies elsewhere is asked for, or taken for a card of the book.
TEST_F(HostileServer, WhoseCardsLieElsewhereIsFollowedNowhere) {
  CardServer other;
  const auto elsewhere = "http://localhost:" + std::to_string(other.scripted.port());
  std::string listing;
  for (const std::string href :
       {"/ann/other/x.vcf", "/ann/cards/../../root.vcf", "/ann/cards/%2e%2e/%2E./x.vcf", "../x.vcf",
        "../../../../etc/passwd", "/ann/cards/deeper/x.vcf", "//localhost/ann/cards/x.vcf",
        "file:///etc/passwd", "javascript:alert(1)", "ann/cards/x.vcf", "\\\\x\\y.vcf/..", ""}) {
    listing += support::listed(href, "\"1\"");
  }
  listing += support::listed(elsewhere + "/ann/cards/x.vcf", "\"1\"");
  server.between([&](const ScriptedRequest& request, const auto& well) {
    auto answer = well();
    const auto start = answer.body.find("<response>");
    if (request.method == "REPORT") answer.body.insert(start, listing);
    if (request.method == "PUT") {
      answer.headers.emplace_back("Location", elsewhere + "/ann/cards/y.vcf");
    }
    return answer;
  });
  const auto before = server.scripted.requests().size();
  const auto result = run({"sync"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, "Team: 0 new, 1 changed, 0 deleted here; 1 sent, 0 deleted there\n");
  auto requests = server.scripted.requests();
  requests.erase(requests.begin(), requests.begin() + static_cast<std::ptrdiff_t>(before));
  EXPECT_EQ(support::listed(requests),
            "REPORT /ann/cards/, REPORT /ann/cards/, PUT /ann/cards/Ann.vcf, REPORT /ann/cards/");
  for (const auto& request : requests) {
    for (const auto& href : support::hrefsIn(request)) {
      EXPECT_TRUE(href == "/ann/cards/Ann.vcf" || href == "/ann/cards/Ben.vcf") << href;
    }
  }
  EXPECT_EQ(other.scripted.connections(), 0U);
  EXPECT_EQ(server.texts().size(), 3U);
}

TEST_F(HostileServer, ThatLeadsElsewhereIsFollowedToNoBook) {
  const auto leading = [&](const std::string& place) {
    server.between([place](const auto&, const auto&) {
      return ScriptedAnswer{.status = 307, .headers = {{"Location", place}}};
    });
  };
  leading("ftp://localhost/");
  expectRefused(place() + " leads to 'ftp://localhost/', which is no URL of https or http");
  leading("file:///etc/passwd");
  expectRefused(place() + " leads to 'file:///etc/passwd', which is no URL of https or http");
  leading(server.bookUrl());
  expectRefused(place() + " leads on and on: more than 5 redirects");
}

// Any host is reached through the proxy, so that the name stands for a server on the public
// network.
TEST_F(HostileServer, OfThePublicNetworkLeadsIntoNoPrivateOne) {
  support::ScriptedServer proxy;
  CardServer inside;
  proxy.answer([&](const ScriptedRequest&) {
    return ScriptedAnswer{.status = 302, .headers = {{"Location", inside.bookUrl()}}};
  });
  const auto result =
      support::runProcess(programCommand({"accounts", "add", "Club", "--url",
                                          "http://dav.example.org/", "--allow-http"}),
                          "", {"http_proxy=" + proxy.origin()});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "oxcontacts: dav.example.org:80 leads into a private network, to " +
                               inside.origin().substr(7) + "\n");
  EXPECT_EQ(proxy.requests().size(), 1U);
  EXPECT_EQ(inside.scripted.connections(), 0U);
}

TEST_F(HostileServer, ThatTricklesIsLeftAtOnceByWhoInterrupts) {
  answerReports({.status = 207,
                 .headers = {{"Content-Type", "application/xml"}},
                 .body = kStart + std::string(100'000, ' '),
                 .pauseBetween = std::chrono::milliseconds(20)});
  const auto before = server.scripted.requests().size();
  support::RunningProcess sync(programCommand({"sync"}));
  while (server.scripted.requests().size() == before) ::usleep(10'000);
  ::kill(sync.id(), SIGINT);
  const auto result = sync.wait();
  EXPECT_EQ(result.exitCode, 130);
  EXPECT_EQ(result.errors, "oxcontacts: Team: interrupted; what is done is kept\n");
}

TEST_F(HostileServer, WhoseEntitiesGrowIsGivenUp) {
  std::string bomb = "<!DOCTYPE a [<!ENTITY e0 \"ha\">";
  for (int i = 1; i < 30; ++i) {
    const auto before = "&e" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY e" + std::to_string(i) + " \"" + before + before + "\">";
  }
  answerReports({.status = 207,
                 .headers = {{"Content-Type", "application/xml"}},
                 .body = bomb + "]>" + kStart + "&e29;</multistatus>"});
  expectRefused("The XML of the answer cannot be read: it has a document type.");
  expectModestMemory();
}

TEST_F(HostileServer, ThatListsTenMillionCardsIsGivenUp) {
  if (kIsSanitized) GTEST_SKIP() << "takes a minute under a sanitizer";
  auto listing = endless(kStart, {});
  int count = 0;
  listing.rest = [&count] {
    std::string part;
    for (int i = 0; i < 1000 && count < 10'000'000; ++i, ++count) {
      part += "<response><href>/ann/cards/" + std::to_string(count) + "</href></response>";
    }
    return part;
  };
  answerReports(listing);
  expectRefused("The answer has more than 2,000,000 entries.");
  EXPECT_LT(count, 10'000'000);
  expectModestMemory();
}

}  // namespace
}  // namespace ox::program_tests
