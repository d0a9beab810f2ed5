#include <gtest/gtest.h>

#include "ox/base/clock.hpp"
#include "tests/sync/http/asked.hpp"

namespace ox::sync {
namespace {

// Answers 200 after so many of the other kind.
void failFirst(ScriptedServer& server, int failures, const ScriptedAnswer& failure) {
  auto left = std::make_shared<int>(failures);
  server.answer([left, failure](const ScriptedRequest&) -> ScriptedAnswer {
    return (*left)-- > 0 ? failure : ScriptedAnswer{.body = "at last"};
  });
}

TEST(Retries, OfWhatOnlyReadsAreTwo) {
  for (const auto& failure :
       {ScriptedAnswer{.status = 500}, ScriptedAnswer{.status = 502}, ScriptedAnswer{.status = 504},
        ScriptedAnswer{.closesUnanswered = true}, ScriptedAnswer{.body = "cut", .cutAt = 1}}) {
    ScriptedServer server;
    failFirst(server, 2, failure);
    HttpClient client(plainLogin(server), {}, shortPauses());
    EXPECT_EQ(client.send(get(server.url())).body, "at last");
    EXPECT_EQ(server.requests().size(), 3U);
    EXPECT_EQ(client.requests(), 3U);
  }
}

TEST(Retries, EndWithTheAnswerThatCame) {
  ScriptedServer server;
  failFirst(server, 9, {.status = 502, .body = "bad gateway"});
  HttpClient client(plainLogin(server), {}, shortPauses());
  const auto answer = client.send(get(server.url()));
  EXPECT_EQ(answer.status, 502);
  EXPECT_EQ(answer.body, "bad gateway");
  EXPECT_EQ(server.requests().size(), 3U);
}

TEST(Retries, WaitLongerEachTime) {
  ScriptedServer server;
  failFirst(server, 2, {.status = 500});
  HttpLimits limits;
  limits.pauses = {HttpLimits::Time(100), HttpLimits::Time(400)};
  HttpClient client(plainLogin(server), {}, limits);
  const auto start = std::chrono::steady_clock::now();
  client.send(get(server.url()));
  const auto time = std::chrono::steady_clock::now() - start;
  EXPECT_GE(time, std::chrono::milliseconds(500));
  EXPECT_LT(time, std::chrono::milliseconds(3000));
}

TEST(Retries, OfClosedConnectionsReconnect) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.body = "at last"}; });
  server.closeNext(2);
  HttpClient client(plainLogin(server), {}, shortPauses());
  EXPECT_EQ(client.send(get(server.url())).body, "at last");
  EXPECT_EQ(server.connections(), 3U);
}

TEST(Retries, AreNotForWhatChangesSomething) {
  for (const int status : {500, 502, 504}) {
    ScriptedServer server;
    failFirst(server, 1, {.status = status});
    HttpClient client(plainLogin(server), {}, shortPauses());
    EXPECT_EQ(client.send(put(server.url("/a"), "a card")).status, status);
    EXPECT_EQ(server.requests().size(), 1U);
  }
  ScriptedServer server;
  failFirst(server, 1, {.closesUnanswered = true});
  HttpClient client(plainLogin(server), {}, shortPauses());
  const auto expected = "Unreachable: " + place(server) + " gave no answer: ";
  EXPECT_EQ(
      failureOf([&] { client.send(put(server.url("/a"), "a card")); }).substr(0, expected.size()),
      expected);
  EXPECT_EQ(server.requests().size(), 1U);
}

// The library below would send it again, since the connection had been in use before. But it may
// have been carried out.
TEST(Retries, OverAKeptConnectionAreNotForWhatChangesSomething) {
  for (const auto* method : {"PUT", "DELETE"}) {
    ScriptedServer server;
    server.answer([&](const ScriptedRequest& request) -> ScriptedAnswer {
      return {.body = "x", .closesUnanswered = request.method == method};
    });
    HttpClient client(plainLogin(server), {}, shortPauses());
    client.send(get(server.url("/first")));
    EXPECT_EQ(failureOf([&] {
                client.send({.method = method,
                             .url = server.url("/a"),
                             .headers = {"If-Match: \"1\""},
                             .body = std::string(method) == "PUT" ? "a card" : ""});
              }),
              "Unreachable: " + place(server) +
                  " gave no answer: the connection was closed before the answer");
    EXPECT_EQ(listed(server.requests()), "GET /first, " + std::string(method) + " /a");
    EXPECT_EQ(server.requests().back().connection, 0U);
  }
}

// A connection that was closed while nobody used it is noticed before anything is sent.
TEST(Retries, AreNotNeededForAConnectionThatWasClosedBefore) {
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.body = "x", .closesAfterwards = true};
  });
  HttpClient client(plainLogin(server), {}, shortPauses());
  for (int count = 0; count < 10; ++count) {
    EXPECT_EQ(client.send(put(server.url("/a"), "a card")).status, 200);
    ::usleep(20'000);  // so that the end of the connection has arrived
  }
  EXPECT_EQ(server.requests().size(), 10U);
  EXPECT_EQ(server.connections(), 10U);
}

TEST(RetryAfter, IsWaitedForUpToAMinute) {
  for (const int status : {429, 503}) {
    ScriptedServer server;
    failFirst(server, 2, {.status = status, .headers = {{"Retry-After", "30"}}});
    HttpClient client(plainLogin(server), {}, shortPauses());
    EXPECT_EQ(client.send(put(server.url("/a"), "a card")).body, "at last");
    EXPECT_EQ(listed(server.requests()), "PUT /a, PUT /a, PUT /a");
    EXPECT_EQ(server.requests().back().body, "a card");
  }
}

// When it may be asked again, in seconds from now; missing: it does not say.
std::optional<std::int64_t> pausedFor(ScriptedServer& server, const ScriptedAnswer& answer) {
  server.answer([answer](const ScriptedRequest&) { return answer; });
  HttpClient client(plainLogin(server), {}, shortPauses());
  try {
    client.send(get(server.url()));
  } catch (const RemoteError& error) {
    EXPECT_EQ(nameOf(error.kind()), "TryLater");
    if (error.notBefore() == 0) return {};
    return (error.notBefore() - millisecondsNow() + 500) / 1000;
  }
  return -1;
}

TEST(RetryAfter, OfMoreThanAMinuteEndsTheLogin) {
  ScriptedServer server;
  EXPECT_EQ(pausedFor(server, {.status = 429, .headers = {{"Retry-After", "61"}}}), 61);
  EXPECT_EQ(pausedFor(server, {.status = 503,
                               .headers = {{"Retry-After", "Tue, 14 Nov 2023 10:05:00 GMT"},
                                           {"Date", "Tue, 14 Nov 2023 10:00:00 GMT"}}}),
            300);
  EXPECT_EQ(server.requests().size(), 2U);
  EXPECT_EQ(pausedFor(server, {.status = 429, .headers = {{"Retry-After", "31"}}}), 31);
  EXPECT_EQ(server.requests().size(), 4U);
}

TEST(RetryAfter, ThatIsMissingEndsTheLogin) {
  ScriptedServer server;
  EXPECT_EQ(pausedFor(server, {.status = 503}), std::nullopt);
  EXPECT_EQ(pausedFor(server, {.status = 429, .headers = {{"Retry-After", "soon"}}}), std::nullopt);
  EXPECT_EQ(server.requests().size(), 2U);
  HttpClient client(plainLogin(server), {}, shortPauses());
  EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
            "TryLater: " + place(server) + " wants to be left alone (429)");
}

}  // namespace
}  // namespace ox::sync
