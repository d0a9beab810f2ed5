// Answers that are cut, false, silent or too large.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/sync/http/asked.hpp"

namespace ox::sync {
namespace {

using std::chrono::milliseconds;

// What became of a PUT, which is asked for once, and of a GET that may be tried three times.
std::string putTo(ScriptedServer& server, const HttpLimits& limits = shortPauses()) {
  HttpClient client(plainLogin(server), {}, limits);
  return failureOf([&] { client.send(put(server.url("/a"), "a card")); });
}

std::string getFrom(ScriptedServer& server, const HttpLimits& limits = shortPauses()) {
  HttpClient client(plainLogin(server), {}, limits);
  return failureOf([&] { client.send(get(server.url("/a"))); });
}

TEST(CutAnswer, IsNoAnswer) {
  for (const auto framing : {Framing::Length, Framing::Chunked}) {
    ScriptedServer server;
    server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
      return {.status = 207, .body = "<multistatus/>", .framing = framing, .cutAt = 5};
    });
    const auto expected = "Protocol: the answer of " + place(server) + " broke off: ";
    EXPECT_EQ(getFrom(server).substr(0, expected.size()), expected);
    EXPECT_EQ(server.requests().size(), 3U);
    EXPECT_EQ(putTo(server).substr(0, expected.size()), expected);
    EXPECT_EQ(server.requests().size(), 4U);
  }
}

TEST(CutAnswer, OfAWrongLengthIsNoAnswer) {
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.body = "short", .closesAfterwards = true, .promised = 50};
  });
  const auto expected = "Protocol: the answer of " + place(server) + " broke off: ";
  EXPECT_EQ(putTo(server).substr(0, expected.size()), expected);
}

// What was given to the sink by then is forgotten.
TEST(CutAnswer, BeginsItsSinkAnew) {
  ScriptedServer server;
  int tries = 0;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    ScriptedAnswer answer{.status = 207, .body = "whole text"};
    if (++tries < 3) answer.cutAt = 4;
    return answer;
  });
  HttpClient client(plainLogin(server), {}, shortPauses());
  std::string taken;
  int begun = 0;
  const BodySink sink{[&](const HttpAnswer&) {
                        ++begun;
                        taken.clear();
                      },
                      [&](std::string_view part) { taken += part; }};
  EXPECT_EQ(client.send(get(server.url()), &sink).status, 207);
  EXPECT_EQ(taken, "whole text");
  EXPECT_EQ(begun, 3);
}

TEST(Silence, IsLimited) {
  auto limits = shortPauses();
  limits.silence = milliseconds(300);
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.body = "x", .silence = std::chrono::hours(1)};
  });
  const auto reason = place(server) + " gave no answer: no answer came in 0 s of silence";
  EXPECT_EQ(putTo(server, limits), "Unreachable: " + reason);
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(getFrom(server, limits), "Unreachable: " + reason);
  EXPECT_EQ(server.requests().size(), 4U);
}

TEST(Silence, WithinAnAnswerIsLimited) {
  auto limits = shortPauses();
  limits.silence = milliseconds(300);
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.body = "some text", .stallsAt = 4};
  });
  EXPECT_EQ(putTo(server, limits), "Protocol: the answer of " + place(server) +
                                       " broke off: no answer came in 0 s of silence");
}

// However long it takes: only nothing at all is too slow.
TEST(Silence, IsNoneWhereALittleComes) {
  auto limits = shortPauses();
  limits.silence = milliseconds(400);
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.body = "slow text", .pauseBetween = milliseconds(100)};
  });
  HttpClient client(plainLogin(server), {}, limits);
  EXPECT_EQ(client.send(get(server.url())).body, "slow text");
}

TEST(LargeAnswer, IsNotTaken) {
  auto limits = shortPauses();
  limits.keptBody = 1000;
  limits.sunkBody = 5000;
  ScriptedServer server;
  std::size_t size = 1000;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.status = 207, .body = std::string(size, 'x'), .framing = Framing::Chunked};
  });
  HttpClient client(plainLogin(server), {}, limits);
  EXPECT_EQ(client.send(get(server.url())).body.size(), 1000U);
  size = 1001;
  EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
            "Protocol: " + place(server) +
                " gave an unusable answer: the answer is larger than what is taken");
  EXPECT_EQ(server.requests().size(), 2U);
  const BodySink sink{{}, [](std::string_view) {}};
  size = 5000;
  EXPECT_EQ(client.send(get(server.url()), &sink).status, 207);
  size = 5001;
  EXPECT_EQ(failureOf([&] { client.send(get(server.url()), &sink); }).substr(0, 9), "Protocol:");
}

TEST(LargeAnswer, HasTooManyHeaders) {
  ScriptedServer server;
  std::size_t lines = 200;
  std::size_t size = 1;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.headers = support::ScriptedHeaders(lines, {"X-A", std::string(size, 'x')})};
  });
  EXPECT_EQ(getFrom(server), "nothing");
  lines = 300;
  EXPECT_EQ(getFrom(server), "Protocol: " + place(server) +
                                 " gave an unusable answer: the answer has too many headers");
  lines = 100;
  size = 3000;
  EXPECT_EQ(getFrom(server), "Protocol: " + place(server) +
                                 " gave an unusable answer: the answer has too many headers");
}

// A port that is taken and that nobody listens on, or nobody who answers.
class TakenPort {
 public:
  TakenPort() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(socket_, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size), 0);
    place_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  }
  TakenPort(const TakenPort&) = delete;
  TakenPort& operator=(const TakenPort&) = delete;
  ~TakenPort() { ::close(socket_); }

  void listen() const { EXPECT_EQ(::listen(socket_, 4), 0); }
  const std::string& place() const { return place_; }

 private:
  int socket_;
  std::string place_;
};

TEST(NoServer, IsNamedWithItsPort) {
  const TakenPort taken;
  LoginSettings login;
  login.url = "http://" + taken.place();
  login.allowHttp = true;
  HttpClient client(login, {}, shortPauses());
  const auto expected = "Unreachable: " + login.url.substr(7) + " cannot be reached: ";
  EXPECT_EQ(failureOf([&] { client.send(get(login.url)); }).substr(0, expected.size()), expected);
  EXPECT_EQ(client.requests(), 3U);
  EXPECT_EQ(failureOf([&] { client.send(get("http://nobody.invalid/")); }).substr(0, 50),
            "Unreachable: nobody.invalid:80 cannot be reached: ");
}

// It waits for what a server of TLS would never say.
TEST(NoServer, OfTlsIsNotWaitedForLong) {
  const TakenPort silent;
  silent.listen();
  auto limits = shortPauses();
  limits.connecting = milliseconds(300);
  LoginSettings login;
  login.url = "https://" + silent.place();
  HttpClient client(login, {}, limits);
  const auto expected = "Unreachable: " + silent.place() + " cannot be reached: ";
  EXPECT_EQ(failureOf([&] { client.send(get(login.url)); }).substr(0, expected.size()), expected);
}

TEST(Stop, EndsAnyWaiting) {
  for (const bool isPausing : {true, false}) {
    ScriptedServer server;
    server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
      if (isPausing) return {.status = 503, .headers = {{"Retry-After", "50"}}};
      return {.body = "x", .silence = std::chrono::hours(1)};
    });
    const auto start = std::chrono::steady_clock::now();
    WireHooks hooks;
    hooks.isStopped = [&] { return std::chrono::steady_clock::now() - start > milliseconds(300); };
    HttpClient client(plainLogin(server), hooks);
    EXPECT_EQ(failureOf([&] { client.send(get(server.url())); }),
              "Stopped: stopped before it was done");
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(1500));
  }
}

TEST(Waiting, IsToldOfAfterAWhile) {
  ScriptedServer server;
  server.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.body = "x", .silence = milliseconds(900)};
  });
  auto limits = shortPauses();
  limits.firstWord = milliseconds(200);
  limits.nextWord = milliseconds(10'000);
  std::string words;
  WireHooks hooks;
  hooks.waiting = [&](std::string_view what) { words.append(what).append(";"); };
  HttpClient client(plainLogin(server), hooks, limits);
  client.send(get(server.url("/book/?x=y")));
  EXPECT_EQ(words, place(server) + " to answer GET /book/ (0 s);");
}

}  // namespace
}  // namespace ox::sync
