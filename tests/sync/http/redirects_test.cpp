#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/sync/http/asked.hpp"

namespace ox::sync {
namespace {

ScriptedAnswer to(const std::string& location, int status = 301) {
  return {.status = status, .headers = {{"Location", location}}, .body = "moved"};
}

TEST(Redirects, KeepMethodHeadersAndBody) {
  for (const int status : {301, 302, 303, 307, 308}) {
    ScriptedServer server;
    server.answer([&](const ScriptedRequest& request) -> ScriptedAnswer {
      if (request.target == "/old/a.vcf") return to("../new/a.vcf?x=1", status);
      return {.status = 204};
    });
    HttpClient client(plainLogin(server), {});
    const auto answer = client.send(put(server.url("/old/a.vcf"), "a card"));
    EXPECT_EQ(answer.status, 204);
    EXPECT_EQ(answer.url, server.url("/new/a.vcf?x=1"));
    EXPECT_EQ(answer.movedTo, status == 301 || status == 308 ? answer.url : "") << status;
    ASSERT_EQ(listed(server.requests()), "PUT /old/a.vcf, PUT /new/a.vcf?x=1");
    const auto last = server.requests().back();
    EXPECT_EQ(last.body, "a card");
    EXPECT_EQ(last.header("if-match"), "\"1\"");
    EXPECT_EQ(last.header("content-type"), "text/vcard; charset=utf-8");
    EXPECT_EQ(server.connections(), 1U);
  }
}

TEST(Redirects, OfWhichOneIsPassingMoveNothing) {
  ScriptedServer server;
  server.answer([&](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.target == "/a") return to("/b", 301);
    if (request.target == "/b") return to("/c", 302);
    if (request.target == "/c") return to("/d", 308);
    return {.body = "here"};
  });
  HttpClient client(plainLogin(server), {});
  const auto answer = client.send(get(server.url("/a")));
  EXPECT_EQ(answer.body, "here");
  EXPECT_EQ(answer.url, server.url("/d"));
  EXPECT_EQ(answer.movedTo, "");
}

TEST(Redirects, AreFollowedFiveTimes) {
  ScriptedServer server;
  server.answer([&](const ScriptedRequest& request) -> ScriptedAnswer {
    const auto number = std::stoi(request.target.substr(1));
    if (number == 0) return {.body = "end"};
    return to("/" + std::to_string(number - 1));
  });
  HttpClient client(plainLogin(server), {});
  EXPECT_EQ(client.send(get(server.url("/5"))).body, "end");
  EXPECT_EQ(failureOf([&] { client.send(get(server.url("/6"))); }),
            "Protocol: " + place(server) + " leads on and on: more than 5 redirects");
  EXPECT_EQ(server.requests().size(), 12U);
}

TEST(Redirects, WithoutAPlaceAreAnswers) {
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer { return {.status = 302}; });
  HttpClient client(plainLogin(server), {});
  EXPECT_EQ(client.send(get(server.url())).status, 302);
}

TEST(Redirects, ToWhatIsNoPlaceEndTheRequest) {
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer { return to("ftp://127.0.0.1/x"); });
  HttpClient client(plainLogin(server), {});
  EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
            "Protocol: " + place(server) +
                " leads to 'ftp://127.0.0.1/x', which is no URL of https or http");
}

TEST(Redirects, ToAnotherHostGoWithoutTheSecret) {
  ScriptedServer other;
  other.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.body = "elsewhere"}; });
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer { return to(other.url("/there")); });
  HttpClient client(annsLogin(server), {});
  client.setScheme("basic");
  const auto answer = client.send(put(server.url("/here"), "a card"));
  EXPECT_EQ(answer.body, "elsewhere");
  EXPECT_EQ(answer.movedTo, other.url("/there"));
  ASSERT_EQ(listed(server.requests()), "PUT /here");
  EXPECT_TRUE(server.requests().at(0).has("authorization"));
  ASSERT_EQ(listed(other.requests()), "PUT /there");
  EXPECT_FALSE(other.requests().at(0).has("authorization"));
  EXPECT_EQ(other.requests().at(0).body, "a card");
}

TEST(Redirects, ToAnotherHostThatWantsALoginSayThatItGotNone) {
  ScriptedServer other;
  other.answer([](const ScriptedRequest&) -> ScriptedAnswer {
    return {.status = 401, .headers = {{"WWW-Authenticate", "Basic realm=\"x\""}}};
  });
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer { return to(other.url("/there")); });
  HttpClient client(annsLogin(server), {});
  EXPECT_EQ(failureOf([&] { client.send(get(server.url("/here"))); }),
            "Login: " + place(other) +
                " wants a login (401); the password was not sent there, since it belongs to "
                "another place: a login at http://" +
                place(other) + " would be one of its own");
  EXPECT_EQ(listed(other.requests()), "GET /there");
}

TEST(Redirects, ToAnAcceptedHostTakeTheSecretAlong) {
  ScriptedServer other;
  other.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.has("authorization")) return {.body = "welcome"};
    return {.status = 401, .headers = {{"WWW-Authenticate", "Basic realm=\"x\""}}};
  });
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer { return to(other.url("/there")); });
  HttpClient client(annsLogin(server), {});
  client.accept(other.origin());
  EXPECT_EQ(client.send(get(server.url("/here"))).body, "welcome");
  EXPECT_EQ(listed(other.requests()), "GET /there, GET /there");
}

// The first host is known to a proxy alone, so that it is nobody's private one.
TEST(Redirects, FromElsewhereIntoAPrivateNetworkAreRefused) {
  ScriptedServer proxy;
  proxy.answer([&](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.target == "http://cards.invalid/public") return to("http://other.invalid/");
    if (request.target == "http://other.invalid/") return {.body = "fine"};
    return to("http://127.0.0.1:9/admin");
  });
  ::setenv("http_proxy", proxy.origin().c_str(), 1);
  LoginSettings login;
  login.url = "http://cards.invalid/";
  login.allowHttp = true;
  HttpClient client(login, {});
  EXPECT_EQ(client.send(get("http://cards.invalid/public")).body, "fine");
  EXPECT_EQ(failureOf([&] { client.send(get("http://cards.invalid/private")); }),
            "Insecure: cards.invalid:80 leads into a private network, to 127.0.0.1:9");
  EXPECT_EQ(listed(proxy.requests()),
            "GET http://cards.invalid/public, GET http://other.invalid/, "
            "GET http://cards.invalid/private");
  ::unsetenv("http_proxy");
}

}  // namespace
}  // namespace ox::sync
