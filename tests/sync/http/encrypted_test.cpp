// Certificates, with a server of TLS and authorities that are made for the run.
#include <gtest/gtest.h>
#include <string>

#include "tests/sync/http/asked.hpp"
#include "tests/sync/support/tls_server.hpp"

namespace ox::sync {
namespace {

using support::makeCertificate;
using support::temporaryPath;
using support::TlsServer;

std::string path(const std::string& name) {
  return temporaryPath(name).string();
}

class Encrypted : public testing::Test {
 protected:
  Encrypted() {
    makeCertificate("authority", "Our authority");
    makeCertificate("server", "server", "authority", "IP:127.0.0.1");
  }

  static LoginSettings login(const TlsServer& server) {
    LoginSettings login;
    login.url = server.url();
    login.authorities = path("authority.crt");
    return login;
  }
  static std::string failure(const LoginSettings& login) {
    HttpClient client(login, {}, shortPauses());
    return failureOf([&] { client.send(get(login.url)); });
  }
};

TEST_F(Encrypted, IsTrustedByTheAuthorityThatTheLoginNames) {
  const TlsServer server("server");
  HttpClient client(login(server), {});
  EXPECT_EQ(client.send(get(server.url())).body, "hello ");
  EXPECT_EQ(client.send(get(server.url("/again"))).body, "hello ");
  EXPECT_EQ(server.log(), "GET / -\nGET /again -\n");
}

TEST_F(Encrypted, IsNotTrustedByAnUnknownAuthority) {
  const TlsServer server("server");
  auto unknown = login(server);
  unknown.authorities.clear();
  const auto expected =
      "Insecure: the certificate of " + server.place() + " cannot be trusted: SSL certificate";
  EXPECT_EQ(failure(unknown).substr(0, expected.size()), expected);
  // It does not help that http is allowed.
  unknown.allowHttp = true;
  EXPECT_EQ(failure(unknown).substr(0, expected.size()), expected);
  // Nor that there is another authority.
  makeCertificate("stranger", "Another authority");
  unknown.authorities = path("stranger.crt");
  EXPECT_EQ(failure(unknown).substr(0, expected.size()), expected);
  EXPECT_EQ(server.log(), "");
}

TEST_F(Encrypted, IsNotTrustedUnderAnotherName) {
  makeCertificate("other", "127.0.0.1", "authority", "DNS:cards.example");
  const TlsServer server("other");
  const auto expected = "Insecure: the certificate of " + server.place() + " cannot be trusted: ";
  EXPECT_EQ(failure(login(server)).substr(0, expected.size()), expected);
  EXPECT_EQ(server.log(), "");
}

TEST_F(Encrypted, NeedsItsFiles) {
  const TlsServer server("server");
  auto missing = login(server);
  missing.authorities = path("nowhere.crt");
  const auto expected = "Usage: " + server.place() + " cannot be asked: ";
  EXPECT_EQ(failure(missing).substr(0, expected.size()), expected);
  missing = login(server);
  missing.clientCertificate = path("nowhere.pem");
  EXPECT_EQ(failure(missing).substr(0, expected.size()), expected);
  EXPECT_EQ(server.log(), "");
}

TEST_F(Encrypted, ShowsTheCertificateOfTheUserToItsOwnPlaceAlone) {
  makeCertificate("ann", "Ann", "authority");
  makeCertificate("elsewhere", "elsewhere", "authority", "IP:127.0.0.1");
  const TlsServer server("server", "authority");
  const TlsServer elsewhere("elsewhere", "authority");
  auto settings = login(server);
  settings.clientCertificate = path("ann.pem");
  HttpClient client(settings, {});
  EXPECT_EQ(client.send(get(server.url())).body, "hello Ann");
  const auto answer = client.send(get(server.url("/to/" + elsewhere.url("/x"))));
  EXPECT_EQ(answer.url, elsewhere.url("/x"));
  EXPECT_EQ(answer.body, "hello ");
  EXPECT_EQ(client.send(get(server.url())).body, "hello Ann");
  client.accept(elsewhere.url());
  EXPECT_EQ(client.send(get(elsewhere.url("/y"))).body, "hello Ann");
}

TEST_F(Encrypted, IsNotLeftByARedirect) {
  ScriptedServer plain;
  const TlsServer server("server");
  auto settings = login(server);
  settings.allowHttp = true;
  HttpClient client(settings, {});
  EXPECT_EQ(
      failureOf([&] { client.send(get(server.url("/to/" + plain.url()))); }),
      "Insecure: " + server.place() + " leads to " + place(plain) + ", where nothing is encrypted");
  EXPECT_EQ(plain.connections(), 0U);
}

TEST_F(Encrypted, TellsOfAServerThatSpeaksNoTls) {
  ScriptedServer plain;
  plain.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {}; });
  LoginSettings settings;
  settings.url = "https://" + place(plain);
  HttpClient client(settings, {});
  EXPECT_EQ(failureOf([&] { client.send(get(settings.url)); }),
            "Insecure: " + place(plain) +
                " does not speak TLS; if it is meant to be asked in the " +
                "clear, its URL is http://" + place(plain));
  EXPECT_EQ(plain.connections(), 1U);
}

TEST_F(Encrypted, TakesOverFromHttpByARedirect) {
  ScriptedServer plain;
  const TlsServer server("server");
  plain.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.status = 308, .headers = {{"Location", server.url("/there")}}};
  });
  auto settings = login(server);
  settings.url = plain.url();
  settings.allowHttp = true;
  HttpClient client(settings, {});
  const auto answer = client.send(get(plain.url()));
  EXPECT_EQ(answer.body, "hello ");
  EXPECT_EQ(answer.movedTo, server.url("/there"));
}

}  // namespace
}  // namespace ox::sync
