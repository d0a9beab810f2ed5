// sync and accounts add, with places that are no address book, or not any more.
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/support/card_server.hpp"
#include "tests/sync/support/dav_answers.hpp"
#include "tests/sync/support/tls_server.hpp"

namespace ox::program_tests {
namespace {

using support::CardServer;
using support::ScriptedAnswer;
using support::ScriptedRequest;
using support::ScriptedServer;

std::string cardOf(const std::string& uid, const std::string& last = "Lee") {
  return card({"UID:" + uid, "N:" + last + ";" + uid + ";;;", "FN:" + uid + " " + last});
}

// What stands behind "oxcontacts: " in the one line that is told; nothing was added.
std::string refusalOf(ScriptedServer& server, const ScriptedServer::Script& script) {
  server.answer(script);
  const auto result =
      run({"accounts", "add", "Team", "--url", server.url("/dav/"), "--allow-http"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(runJson({"accounts"}).size(), 1U);
  EXPECT_EQ(runJson({"sync", "--status"}), Json::array());
  EXPECT_TRUE(result.errors.starts_with("oxcontacts: ")) << result.errors;
  EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
  return result.errors.substr(12, result.errors.size() - 13);
}

TEST(NoAddressBook, IsNamedWithTheReason) {
  ScriptedServer server;
  const auto url = server.url("/dav/");
  const auto start = "There is no address book at " + url + ": " + url;
  const auto collection = [](const std::string& type) {
    return support::multistatus(support::response(
        "/dav/", support::propstat("<resourcetype><collection/>" + type + "</resourcetype>")));
  };
  const auto expectRefused = [&](const ScriptedAnswer& answer, const std::string& why) {
    EXPECT_EQ(refusalOf(server, [&](const auto&) { return answer; }), why);
  };
  auto page = support::page();
  const std::string noDav = " with text/html where a multistatus of WebDAV was expected.";
  expectRefused(page, start + " answered 200" + noDav);
  page.status = 207;
  expectRefused(page, start + " answered 207" + noDav);
  expectRefused(support::plain(404), start + " answered 404.");
  expectRefused(support::plain(405), start + " answered 405.");
  expectRefused(support::plain(403, "Go away."), start + " answered 403 (Go away.).");
  expectRefused(collection({}), start + " speaks WebDAV, but leads to no address book.");
  expectRefused(collection("<calendar xmlns=\"urn:ietf:params:xml:ns:caldav\"/>"),
                start + " speaks WebDAV, but leads to no address book.");
  expectRefused(support::plain(401), server.origin().substr(7) + " wants a login (401)");
}

TEST(NoAddressBook, AnswersOverHttpWhichIsToBeAllowed) {
  CardServer server;
  const auto result = run({"accounts", "add", "Team", "--url", server.bookUrl()});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "oxcontacts: " + server.bookUrl() +
                               " is not encrypted, and the login does not allow that; "
                               "--allow-http does\n");
  EXPECT_EQ(server.scripted.connections(), 0U);
}

TEST(NoAddressBook, IsBelievedWhoseCertificateDoesNotFit) {
  support::makeCertificate("authority", "Our authority");
  support::makeCertificate("server", "server", "authority", "IP:127.0.0.1");
  support::makeCertificate("other", "server", "authority", "DNS:dav.example.org");
  const auto secret = support::temporaryFile("secret", "secret\n");
  std::filesystem::permissions(secret, std::filesystem::perms::owner_read);
  const auto ours = support::temporaryPath("authority.crt").string();
  for (const auto* name : {"server", "other"}) {
    const support::TlsServer server(name);
    std::vector<std::string> words = {"accounts",   "add",    "Team", "--url",
                                      server.url(), "--user", "ann",  "--password-file",
                                      secret};
    // One that no authority of the system knows, and one of an authority of ours for another name.
    if (name == std::string("other")) words.insert(words.end(), {"--ca", ours});
    const auto result = run(words);
    EXPECT_EQ(result.exitCode, 1);
    const auto start =
        "oxcontacts: the certificate of " + server.place() + " cannot be trusted: SSL";
    EXPECT_EQ(result.errors.substr(0, start.size()), start);
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1);
    EXPECT_EQ(runJson({"accounts"}).size(), 1U);
    EXPECT_FALSE(std::filesystem::exists(support::temporaryPath(std::string(name) + ".log")));
  }
}

// The account Team was in step with its book; a person has been changed on each side since.
class ServerTroubles : public testing::Test {
 protected:
  ServerTroubles() {
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

  // One run that fails and changes nothing on either side, and one that is disturbed by nothing.
  void expectRefused(const std::string& why) {
    const auto before = run({"export", "--book", "Team"}).output;
    const auto changes = server.state().changes;
    const auto result = run({"sync"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "oxcontacts: Team: " + why + "\n");
    EXPECT_EQ(run({"export", "--book", "Team"}).output, before);
    EXPECT_EQ(server.state().changes, changes);
    server.between(nullptr);
    EXPECT_EQ(run({"sync"}).output,
              "Team: 0 new, 1 changed, 0 deleted here; 1 sent, 0 deleted there\n");
  }

  CardServer server;
};

TEST_F(ServerTroubles, OfABookThatIsGoneDeleteNothing) {
  server.between([](const auto&, const auto&) { return support::plain(404); });
  expectRefused(server.bookUrl() + " answered 404.");
}

TEST_F(ServerTroubles, OfAPageForLoggingInDeleteNothing) {
  server.between([](const auto&, const auto&) { return support::page(); });
  expectRefused(server.bookUrl() +
                " answered 200 with text/html where a multistatus of WebDAV was expected.");
}

TEST_F(ServerTroubles, OfALoginThatIsRefusedDeleteNothing) {
  server.between([](const auto&, const auto&) { return support::plain(401); });
  expectRefused(place() + " wants a login (401)");
}

TEST_F(ServerTroubles, OfAServerThatWantsToBeLeftAloneAreForLater) {
  server.between([](const auto&, const auto&) {
    auto answer = support::plain(503);
    answer.headers.emplace_back("Retry-After", "7200");
    return answer;
  });
  const auto result = run({"sync"});
  EXPECT_EQ(result.exitCode, 5);
  EXPECT_EQ(result.errors,
            "oxcontacts: Team: " + place() + " wants to be left alone (503) for 7200 s\n");
  server.between(nullptr);
  const auto requests = server.scripted.requests().size();
  EXPECT_EQ(run({"sync"}).exitCode, 5);
  EXPECT_EQ(server.scripted.requests().size(), requests);
}

TEST_F(ServerTroubles, OfACardThatNobodyCanReadStopNoOther) {
  server.put("odd.vcf", "this is no card");
  server.put("two.vcf", cardOf("Dan") + cardOf("Eve"));
  server.put("half.vcf", cardOf("Fay").substr(0, 40));
  const auto result = run({"sync"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(result.output,
            "Team: 0 new, 1 changed, 0 deleted here; 1 sent, 0 deleted there; 3 refused\n");
  const auto refused = "oxcontacts: Team: refused " + CardServer::bookPath();
  EXPECT_EQ(result.errors, refused + "half.vcf: it is cut short: END:VCARD is missing\n" + refused +
                               "odd.vcf: no card in it\n" + refused +
                               "two.vcf: more than one card in it\n");
  EXPECT_EQ(run({"sync"}).exitCode, 3);
  server.put("half.vcf", cardOf("Fay"));
  EXPECT_EQ(run({"sync"}).output,
            "Team: 1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there; 2 refused\n");
  EXPECT_EQ(server.texts().size(), 6U);
}

}  // namespace
}  // namespace ox::program_tests
