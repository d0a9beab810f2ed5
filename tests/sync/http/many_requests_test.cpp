#include <algorithm>
#include <gtest/gtest.h>
#include <stdexcept>

#include "tests/sync/http/asked.hpp"
#include "tests/sync/http/digest_server.hpp"

namespace ox::sync {
namespace {

using Job = HttpClient::Job;
using std::chrono::milliseconds;

// PUT /0 to /count-1; what became of each is written at its place.
std::vector<Job> puts(const ScriptedServer& server, std::size_t count,
                      std::vector<std::string>& results) {
  results.assign(count, "-");
  std::vector<Job> jobs;
  for (std::size_t number = 0; number < count; ++number) {
    const auto url = server.url("/" + std::to_string(number));
    auto& result = results.at(number);
    jobs.push_back(
        {[url] { return put(url, "card of " + url); },
         [&result](const HttpAnswer& answer) { result += std::to_string(answer.status); },
         [&result](const std::string&) { result += "failed"; }});
  }
  return jobs;
}

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const auto& text : texts) all += (all.empty() ? "" : " ") + text;
  return all;
}

TEST(ManyRequests, AreUnderWayAtOnceUpToALimit) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer {
    return {.status = 201, .silence = milliseconds(20)};
  });
  HttpClient client(plainLogin(server), {});
  std::vector<std::string> results;
  client.sendAll(puts(server, 40, results), 4);
  EXPECT_EQ(std::count(results.begin(), results.end(), "-201"), 40);
  EXPECT_EQ(server.mostAtOnce(), 4U);
  EXPECT_EQ(server.connections(), 4U);
  EXPECT_EQ(server.requests().size(), 40U);
}

TEST(ManyRequests, AreAskedForWhenTheyAreSent) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.status = 201}; });
  HttpClient client(plainLogin(server), {});
  std::string log;
  std::vector<Job> jobs;
  for (const auto* name : {"a", "b", "c"}) {
    jobs.push_back({[&, name] {
                      log += std::string("ask ") + name + ";";
                      return put(server.url(), name);
                    },
                    [&, name](const HttpAnswer&) { log += std::string("done ") + name + ";"; },
                    {}});
  }
  client.sendAll(jobs, 1);
  EXPECT_EQ(log, "ask a;done a;ask b;done b;ask c;done c;");
}

TEST(ManyRequests, GoOnWhereOneHasNoAnswer) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.target == "/3") return {.closesUnanswered = true};
    if (request.target == "/5") return {.body = "cut", .cutAt = 1};
    return {.status = request.target == "/6" ? 412 : 204};
  });
  HttpClient client(plainLogin(server), {}, shortPauses());
  std::vector<std::string> results;
  client.sendAll(puts(server, 8, results), 2);
  EXPECT_EQ(joined(results), "-204 -204 -204 -failed -204 -failed -412 -204");
  EXPECT_EQ(server.requests().size(), 8U);
}

TEST(ManyRequests, EndWhereNothingIsAnsweredAnyMore) {
  ScriptedServer server;
  server.answer(
      [](const ScriptedRequest&) -> ScriptedAnswer { return {.closesUnanswered = true}; });
  HttpClient client(plainLogin(server), {}, shortPauses());
  std::vector<std::string> results;
  EXPECT_EQ(failureOf([&] { client.sendAll(puts(server, 100, results), 2); }).substr(0, 12),
            "Unreachable:");
  EXPECT_LE(server.requests().size(), 6U);
  EXPECT_EQ(static_cast<std::size_t>(std::count(results.begin(), results.end(), "-failed")),
            server.requests().size());
}

// Those that were under way by then are still told.
TEST(ManyRequests, EndWhereTheLoginIsRefused) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.target == "/1") return {.status = 401};
    return {.status = 204, .silence = milliseconds(100)};
  });
  HttpClient client(annsLogin(server), {}, shortPauses());
  client.setScheme("basic");
  // As long as nobody knows the server, one request waits for another.
  client.send(get(server.url("/first")));
  std::vector<std::string> results;
  EXPECT_EQ(failureOf([&] { client.sendAll(puts(server, 50, results), 3); }),
            "Login: " + place(server) + " refused the login of ann (401)");
  EXPECT_EQ(server.requests().size(), 4U) << listed(server.requests());
  EXPECT_EQ(results.at(0) + results.at(1) + results.at(2), "-204--204");
}

TEST(ManyRequests, FindOutTheLoginWithOne) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.has("authorization")) return {.status = 204, .silence = milliseconds(5)};
    return {.status = 401, .headers = {{"WWW-Authenticate", "Basic realm=\"x\""}}};
  });
  HttpClient client(annsLogin(server), {});
  std::vector<std::string> results;
  client.sendAll(puts(server, 12, results), 4);
  EXPECT_EQ(std::count(results.begin(), results.end(), "-204"), 12);
  EXPECT_EQ(server.requests().size(), 13U);
}

// Each connection's handle asks for a challenge of its own, and counts for itself.
TEST(ManyRequests, OfDigestSendEachBodyWhole) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (!isDigestOf(request, "ann", "wonder land", "n1")) return digestChallenge("n1");
    return {.status = 201, .body = request.body};
  });
  HttpClient client(annsLogin(server), {});
  std::vector<std::string> bodies(10);
  std::vector<Job> jobs;
  for (std::size_t number = 0; number < bodies.size(); ++number) {
    jobs.push_back({[&, number] { return put(server.url(), std::to_string(number)); },
                    [&, number](const HttpAnswer& answer) { bodies.at(number) = answer.body; },
                    {}});
  }
  client.sendAll(jobs, 3);
  EXPECT_EQ(joined(bodies), "0 1 2 3 4 5 6 7 8 9");
  EXPECT_LE(server.requests().size(), 13U);
  for (const auto& request : server.requests()) EXPECT_EQ(request.body.size(), 1U);
}

TEST(ManyRequests, ThatReadThrowWhatKeepsThemFromAnAnswer) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    return {.body = "x", .closesUnanswered = request.target == "/1"};
  });
  HttpClient client(plainLogin(server), {}, shortPauses());
  std::vector<Job> jobs;
  for (int number = 0; number < 3; ++number) {
    const auto url = server.url("/" + std::to_string(number));
    jobs.push_back({[url] { return get(url); }, [](const HttpAnswer&) {},
                    [](const std::string&) { FAIL() << "told as if it changed something"; }});
  }
  EXPECT_EQ(failureOf([&] { client.sendAll(jobs, 1); }).substr(0, 12), "Unreachable:");
  // Once over the connection that was kept and at once over a new one, then twice again.
  EXPECT_EQ(listed(server.requests()), "GET /0, GET /1, GET /1, GET /1, GET /1");
  EXPECT_EQ(client.requests(), 5U);
}

TEST(ManyRequests, HaveSinksOfTheirOwn) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    return {.status = 207, .body = std::string(50'000, request.target.back())};
  });
  HttpClient client(plainLogin(server), {});
  std::vector<std::string> bodies(6);
  std::vector<Job> jobs;
  for (std::size_t number = 0; number < bodies.size(); ++number) {
    const auto url = server.url("/" + std::to_string(number));
    jobs.push_back({[url] { return get(url); },
                    [](const HttpAnswer& answer) { EXPECT_EQ(answer.body, ""); },
                    {},
                    {{}, [&, number](std::string_view part) { bodies.at(number) += part; }}});
  }
  client.sendAll(jobs, 2);
  for (std::size_t number = 0; number < bodies.size(); ++number) {
    EXPECT_EQ(bodies.at(number), std::string(50'000, static_cast<char>('0' + number)));
  }
}

TEST(ManyRequests, LeaveTheServerAloneWhenItAsksForIt) {
  ScriptedServer server;
  int pauses = 1;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    if (pauses-- > 0) return {.status = 429, .headers = {{"Retry-After", "10"}}};
    return {.status = 204};
  });
  auto limits = shortPauses();
  limits.second = milliseconds(50);
  HttpClient client(plainLogin(server), {}, limits);
  std::vector<std::string> results;
  const auto start = std::chrono::steady_clock::now();
  client.sendAll(puts(server, 9, results), 1);
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(500));
  EXPECT_EQ(std::count(results.begin(), results.end(), "-204"), 9);
  EXPECT_EQ(listed(server.requests()).substr(0, 22), "PUT /0, PUT /0, PUT /1");
}

TEST(ManyRequests, EndWithWhatTheCallerThrows) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.status = 204}; });
  HttpClient client(plainLogin(server), {});
  const std::vector<Job> jobs(5, Job{[&] { return put(server.url(), "x"); },
                                     [](const HttpAnswer&) { throw std::logic_error("mine"); },
                                     {}});
  EXPECT_THROW(client.sendAll(jobs, 1), std::logic_error);
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(client.send(get(server.url())).status, 204);
}

// Looking at one answer may need another one.
TEST(ManyRequests, MaySendOneMoreWhenOneIsDone) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    return {.body = request.target, .silence = milliseconds(20)};
  });
  HttpClient client(plainLogin(server), {});
  std::string seen;
  std::vector<Job> jobs;
  for (int number = 0; number < 6; ++number) {
    const auto url = server.url("/" + std::to_string(number));
    jobs.push_back({[url] { return get(url); },
                    [&](const HttpAnswer& answer) {
                      seen += answer.body + client.send(get(server.url("/again"))).body + ";";
                    },
                    {}});
  }
  client.sendAll(jobs, 3);
  EXPECT_EQ(seen.size(), std::string("/0/again;").size() * 6);
  EXPECT_EQ(server.requests().size(), 12U);
}

TEST(ManyRequests, StopWhenTheHostSaysSo) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.status = 204}; });
  WireHooks hooks;
  int done = 0;
  hooks.isStopped = [&] { return done >= 2; };
  HttpClient client(plainLogin(server), hooks);
  const std::vector<Job> jobs(
      50, Job{[&] { return put(server.url(), "x"); }, [&](const HttpAnswer&) { ++done; }, {}});
  EXPECT_EQ(failureOf([&] { client.sendAll(jobs, 1); }), "Stopped: stopped before it was done");
  EXPECT_EQ(done, 2);
}

}  // namespace
}  // namespace ox::sync
