#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>

#include "ox/base/base64.hpp"
#include "ox/sync/http/http_session.hpp"
#include "tests/sync/http/asked.hpp"
#include "tests/sync/http/digest_server.hpp"

namespace ox::sync {
namespace {

// ann:wonder land
const std::string kBasic = "Basic YW5uOndvbmRlciBsYW5k";

ScriptedAnswer basicOnly(const ScriptedRequest& request) {
  if (request.header("authorization") == kBasic) {
    return {.status = 207, .body = request.method + " " + request.body};
  }
  return {.status = 401, .headers = {{"WWW-Authenticate", "Basic realm=\"Cards\""}}};
}

// "-" for each request without it.
std::string authorizations(const ScriptedServer& server) {
  std::string list;
  for (const auto& request : server.requests()) {
    const auto header = request.header("authorization");
    list += (list.empty() ? "" : ", ") + (header.empty() ? "-" : header);
  }
  return list;
}

// The first word of each.
std::string schemes(const ScriptedServer& server) {
  std::string list;
  for (const auto& request : server.requests()) {
    const auto header = request.header("authorization");
    list +=
        (list.empty() ? "" : ", ") + (header.empty() ? "-" : header.substr(0, header.find(' ')));
  }
  return list;
}

TEST(Basic, IsAskedForOnceAndThenSentAtOnce) {
  ScriptedServer server;
  server.answer(basicOnly);
  HttpClient client(annsLogin(server), {});
  EXPECT_EQ(client.scheme(), "");
  EXPECT_EQ(client.send(put(server.url("/a"), "one")).body, "PUT one");
  EXPECT_EQ(client.scheme(), "basic");
  EXPECT_EQ(client.send(put(server.url("/b"), "two")).body, "PUT two");
  EXPECT_EQ(authorizations(server), "-, " + kBasic + ", " + kBasic);
  EXPECT_EQ(client.requests(), 3U);
}

TEST(Basic, ThatIsRememberedNeedsNoQuestion) {
  ScriptedServer server;
  server.answer(basicOnly);
  HttpClient client(annsLogin(server), {});
  client.setScheme("basic");
  EXPECT_EQ(client.send(get(server.url())).status, 207);
  EXPECT_EQ(authorizations(server), kBasic);
}

TEST(Basic, ThatIsRefusedIsNotSentAgain) {
  ScriptedServer server;
  server.answer(basicOnly);
  std::string lines;
  WireHooks hooks;
  hooks.trace = [&](std::string_view line) { lines.append(line); };
  HttpClient client(annsLogin(server, "red queen"), hooks);
  EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
            "Login: " + place(server) + " refused the login of ann (401)");
  EXPECT_EQ(server.requests().size(), 2U);
  EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
            "Login: " + place(server) + " refused the login of ann (401)");
  EXPECT_EQ(server.requests().size(), 3U);
  EXPECT_EQ(lines.find("queen"), std::string::npos);
  EXPECT_EQ(lines.find("Basic"), std::string::npos);
}

TEST(Login, ThatNobodyWantsIsNotSent) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.body = "open"}; });
  HttpClient client(annsLogin(server), {});
  client.send(get(server.url()));
  client.send(get(server.url()));
  EXPECT_EQ(authorizations(server), "-, -");
}

TEST(Login, ThatIsMissingIsSaidSo) {
  ScriptedServer server;
  server.answer(basicOnly);
  HttpClient client(plainLogin(server), {});
  EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
            "Login: " + place(server) + " wants a login (401)");
  EXPECT_EQ(server.requests().size(), 1U);
}

TEST(Login, OfAnUnknownKindIsNotTried) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer {
    return {.status = 401, .headers = {{"WWW-Authenticate", "Negotiate"}}};
  });
  HttpClient client(annsLogin(server), {});
  EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
            "Login: " + place(server) + " offers no way to log in that is known here (401)");
  EXPECT_EQ(authorizations(server), "-");
}

// A URL of another place, whoever gave it, is asked without the secret.
TEST(Login, IsNotSentToAnotherPlace) {
  ScriptedServer server;
  ScriptedServer other;
  other.answer(basicOnly);
  HttpClient client(annsLogin(server), {});
  client.setScheme("basic");
  EXPECT_EQ(failureOf([&] { client.send(get(other.url())); }),
            "Login: " + place(other) +
                " wants a login (401); the password was not sent there, since it belongs to "
                "another place: a login at http://" +
                place(other) + " would be one of its own");
  EXPECT_EQ(authorizations(other), "-");
  EXPECT_EQ(server.requests().size(), 0U);
}

TEST(Login, BelongsToThePlaceThatTheUserNamed) {
  const auto accepts = [](const std::string& named, const std::string& url) {
    LoginSettings login;
    login.url = named;
    return HttpSession(login, {}, {}).isAccepted(parsedUrl(url));
  };
  EXPECT_TRUE(accepts("https://cards.example/ann/", "https://CARDS.example:443/book/"));
  EXPECT_FALSE(accepts("https://cards.example/ann/", "https://cards.example:8443/"));
  EXPECT_FALSE(accepts("https://cards.example/ann/", "http://cards.example/"));
  EXPECT_FALSE(accepts("https://cards.example/ann/", "https://cards.example.evil.example/"));
  EXPECT_FALSE(accepts("https://cards.example/ann/", "https://cards.example@evil.example/"));
  EXPECT_TRUE(accepts("cards.example:8443", "https://cards.example:8443/"));
  EXPECT_TRUE(accepts("ann@cards.example", "https://cards.example/"));
  EXPECT_FALSE(accepts("ann@cards.example", "http://cards.example/"));
  EXPECT_EQ(failureOf([&] { accepts("gopher://cards.example/", "https://cards.example/"); }),
            "Usage: 'gopher://cards.example/' is no URL of https or http");
}

TEST(Digest, IsPreferredAndSendsBodiesWhole) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (!isDigestOf(request, "ann", "wonder land", "n1")) return digestChallenge("n1");
    return {.status = 201, .body = std::to_string(request.body.size())};
  });
  HttpClient client(annsLogin(server), {});
  const std::string body(100'000, 'x');
  EXPECT_EQ(client.send(put(server.url("/a"), body)).body, "100000");
  EXPECT_EQ(client.scheme(), "digest");
  EXPECT_EQ(client.send(put(server.url("/b"), body)).body, "100000");
  EXPECT_EQ(listed(server.requests()), "PUT /a, PUT /a, PUT /b");
  EXPECT_EQ(schemes(server), "-, Digest, Digest");
  for (const auto& request : server.requests()) EXPECT_EQ(request.body.size(), body.size());
}

// No empty body is sent to find out: a server that wants no login any more would keep it.
TEST(Digest, ThatIsRememberedSendsNoEmptyBody) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.status = 201}; });
  HttpClient client(annsLogin(server), {});
  client.setScheme("digest");
  EXPECT_EQ(client.send(put(server.url("/a"), "a card")).status, 201);
  ASSERT_EQ(listed(server.requests()), "PUT /a");
  EXPECT_EQ(server.requests().at(0).body, "a card");
}

TEST(Digest, GoesOnWithANewChallenge) {
  for (const std::string more : {", stale=true", ""}) {
    ScriptedServer server;
    int count = 0;
    server.answer([&](const ScriptedRequest& request) -> ScriptedAnswer {
      const auto nonce = count < 2 ? "n1" : "n2";
      if (!isDigestOf(request, "ann", "wonder land", nonce)) return digestChallenge(nonce, more);
      ++count;
      return {.status = 201, .body = request.body};
    });
    HttpClient client(annsLogin(server), {});
    for (const auto* body : {"one", "two", "three", "four"}) {
      EXPECT_EQ(client.send(put(server.url("/a"), body)).body, body);
    }
    EXPECT_EQ(schemes(server), "-, Digest, Digest, Digest, Digest, Digest") << more;
    EXPECT_EQ(client.requests(), 6U);
  }
}

TEST(Digest, ThatIsRefusedIsNotSentAgain) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return digestChallenge("n1"); });
  HttpClient client(annsLogin(server), {});
  EXPECT_EQ(failureOf([&] { client.send(put(server.url("/a"), "a card")); }),
            "Login: " + place(server) + " refused the login of ann (401)");
  EXPECT_EQ(schemes(server), "-, Digest");
}

// A server that was set up anew may want another scheme than the one that is remembered.
TEST(Digest, TakesOverFromARememberedBasic) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (!isDigestOf(request, "ann", "wonder land", "n1")) return digestChallenge("n1");
    return {.status = 207};
  });
  HttpClient client(annsLogin(server), {});
  client.setScheme("basic");
  EXPECT_EQ(client.send(get(server.url())).status, 207);
  EXPECT_EQ(client.scheme(), "digest");
  EXPECT_EQ(schemes(server), "Basic, Digest");
}

// The challenge of another place is in the handle by then.
TEST(Digest, IsNotComputedByTheChallengeOfAnotherPlace) {
  ScriptedServer other;
  other.answer([](const ScriptedRequest&) -> ScriptedAnswer { return digestChallenge("theirs"); });
  ScriptedServer server;
  server.answer([&](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.target == "/away") {
      return {.status = 302, .headers = {{"Location", other.url("/x")}}};
    }
    if (!isDigestOf(request, "ann", "wonder land", "n1")) return digestChallenge("n1");
    return {.status = 207};
  });
  HttpClient client(annsLogin(server), {});
  EXPECT_EQ(client.send(get(server.url())).status, 207);
  EXPECT_EQ(failureOf([&] { client.send(get(server.url("/away"))); }).substr(0, 6), "Login:");
  EXPECT_EQ(client.send(get(server.url())).status, 207);
  EXPECT_EQ(schemes(server), "-, Digest, Digest, -, Digest");
  EXPECT_EQ(schemes(other), "-");
}

TEST(Bearer, IsSentAtOnceAndToItsPlaceAlone) {
  ScriptedServer other;
  other.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.body = "there"}; });
  ScriptedServer server;
  server.answer([&](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.target == "/away") {
      return {.status = 302, .headers = {{"Location", other.url("/x")}}};
    }
    return {.status = 207};
  });
  auto login = plainLogin(server);
  login.password = {PasswordSource::Kind::BearerCommand, "printf 'tok.en-1\\nmore\\n'"};
  HttpClient client(login, {});
  EXPECT_EQ(client.scheme(), "bearer");
  EXPECT_EQ(client.send(get(server.url())).status, 207);
  EXPECT_EQ(client.send(get(server.url("/away"))).body, "there");
  EXPECT_EQ(authorizations(server), "Bearer tok.en-1, Bearer tok.en-1");
  EXPECT_EQ(authorizations(other), "-");
}

TEST(Bearer, ThatIsRefusedIsNotSentAgain) {
  ScriptedServer server;
  server.answer(basicOnly);
  auto login = plainLogin(server);
  login.password = {PasswordSource::Kind::BearerCommand, "echo token"};
  HttpClient client(login, {});
  EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
            "Login: " + place(server) + " refused the login (401)");
  EXPECT_EQ(authorizations(server), "Bearer token");
}

TEST(Http, IsAskedOnlyWhereTheLoginAllowsIt) {
  ScriptedServer server;
  auto login = annsLogin(server);
  login.allowHttp = false;
  HttpClient client(login, {});
  EXPECT_EQ(
      failureOf([&] { client.send(get(server.url())); }),
      "Unencrypted: " + server.url() + " is not encrypted, and the login does not allow that");
  EXPECT_EQ(server.connections(), 0U);
}

}  // namespace
}  // namespace ox::sync
