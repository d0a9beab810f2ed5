#include <gtest/gtest.h>
#include <zlib.h>

#include "tests/sync/http/asked.hpp"

namespace ox::sync {
namespace {

std::string gzipped(const std::string& text) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, text.size()), '\0');
  std::string plain = text;
  stream.next_in = reinterpret_cast<Bytef*>(plain.data());
  stream.avail_in = static_cast<uInt>(plain.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

TEST(Requests, SayWhatTheyWereTold) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.status = 207}; });
  HttpClient client(plainLogin(server), {});
  client.send({.method = "REPORT",
               .url = server.url("/book/?a=b"),
               .headers = {"Depth: 1", "Content-Type: application/xml; charset=utf-8"},
               .body = "<sync/>",
               .onlyReads = true});
  const auto request = server.requests().at(0);
  EXPECT_EQ(request.method, "REPORT");
  EXPECT_EQ(request.target, "/book/?a=b");
  EXPECT_EQ(request.body, "<sync/>");
  EXPECT_EQ(request.header("depth"), "1");
  EXPECT_EQ(request.header("content-type"), "application/xml; charset=utf-8");
  EXPECT_EQ(request.header("content-length"), "7");
  EXPECT_EQ(request.header("host"), place(server));
  EXPECT_EQ(request.header("user-agent").substr(0, 11), "oxcontacts/");
  EXPECT_NE(request.header("accept-encoding").find("gzip"), std::string::npos);
  EXPECT_FALSE(request.has("expect"));
  EXPECT_FALSE(request.has("authorization"));
}

TEST(Requests, HaveNoBodyAndNoTypeOfTheirOwn) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.status = 204}; });
  HttpClient client(plainLogin(server), {});
  for (const auto* method : {"GET", "DELETE", "PROPFIND", "HEAD", "PUT"}) {
    EXPECT_EQ(
        client.send({.method = method, .url = server.url("/x"), .headers = {}, .body = {}}).status,
        204);
  }
  EXPECT_EQ(listed(server.requests()), "GET /x, DELETE /x, PROPFIND /x, HEAD /x, PUT /x");
  for (const auto& request : server.requests()) {
    EXPECT_FALSE(request.has("content-type")) << request.method;
    EXPECT_EQ(request.body, "") << request.method;
  }
  EXPECT_EQ(server.requests().back().header("content-length"), "0");
}

TEST(Requests, SendLargeBodiesWhole) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    return {.status = 201, .body = std::to_string(request.body.size())};
  });
  HttpClient client(plainLogin(server), {});
  EXPECT_EQ(client.send(put(server.url("/c"), std::string(5'000'000, 'x'))).body, "5000000");
  EXPECT_EQ(client.bytes(), 5'000'007U);
}

TEST(Requests, KeepTheirConnection) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.body = "x"}; });
  HttpClient client(plainLogin(server), {});
  for (int count = 0; count < 5; ++count) client.send(get(server.url()));
  EXPECT_EQ(server.connections(), 1U);
  EXPECT_EQ(client.requests(), 5U);
  EXPECT_EQ(client.bytes(), 5U);
}

TEST(Answers, HaveHeadersInLowerCase) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer {
    return {.headers = {{"ETag", "\"a, b\""}, {"X-Two", "1"}, {"x-two", "2"}}, .body = "text"};
  });
  HttpClient client(plainLogin(server), {});
  const auto answer = client.send(get(server.url("/a?b")));
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.url, server.url("/a?b"));
  EXPECT_EQ(answer.movedTo, "");
  EXPECT_EQ(answer.body, "text");
  ASSERT_NE(answer.header("etag"), nullptr);
  EXPECT_EQ(*answer.header("etag"), "\"a, b\"");
  EXPECT_EQ(*answer.header("x-two"), "1");
  EXPECT_EQ(answer.header("ETag"), nullptr);
}

TEST(Answers, OfAnyStatusAreAnswers) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    return {.status = std::stoi(request.target.substr(1)), .body = "why"};
  });
  HttpClient client(plainLogin(server), {}, shortPauses());
  for (const int status :
       {200, 204, 207, 300, 302, 304, 400, 403, 404, 409, 412, 413, 423, 500, 507}) {
    EXPECT_EQ(client.send(get(server.url("/" + std::to_string(status)))).status, status);
  }
}

TEST(Answers, AreUnpacked) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.header("accept-encoding").find("gzip") == std::string::npos) {
      return {.body = "plain"};
    }
    return {.headers = {{"Content-Encoding", "gzip"}}, .body = gzipped("was packed")};
  });
  HttpClient client(plainLogin(server), {});
  EXPECT_EQ(client.send(get(server.url())).body, "was packed");
  auto request = get(server.url());
  request.wantsIdentity = true;
  EXPECT_EQ(client.send(request).body, "plain");
  EXPECT_EQ(server.requests().back().header("accept-encoding"), "identity");
}

TEST(Sink, IsGivenTheBodyOfASuccessAlone) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest& request) -> ScriptedAnswer {
    if (request.target == "/bad") return {.status = 404, .body = "no such card"};
    if (request.target == "/empty") return {.status = 207};
    return {.status = 207, .body = std::string(300'000, 'x'), .framing = Framing::Chunked};
  });
  HttpClient client(plainLogin(server), {});
  std::string log;
  std::size_t taken = 0;
  const BodySink sink{[&](const HttpAnswer& head) { log += std::to_string(head.status) + ";"; },
                      [&](std::string_view part) { taken += part.size(); }};
  EXPECT_EQ(client.send(get(server.url("/good")), &sink).body, "");
  EXPECT_EQ(client.send(get(server.url("/bad")), &sink).body, "no such card");
  client.send(get(server.url("/empty")), &sink);
  EXPECT_EQ(log, "207;207;");
  EXPECT_EQ(taken, 300'000U);
}

TEST(Sink, ThrowsThroughToTheCaller) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {.body = "some text"}; });
  HttpClient client(plainLogin(server), {}, shortPauses());
  struct Mine {
    int number;
  };
  for (const bool atBegin : {true, false}) {
    const BodySink sink{[&](const HttpAnswer&) {
                          if (atBegin) throw Mine{1};
                        },
                        [](std::string_view) { throw Mine{2}; }};
    try {
      client.send(get(server.url()), &sink);
      FAIL() << "nothing was thrown";
    } catch (const Mine& mine) {
      EXPECT_EQ(mine.number, atBegin ? 1 : 2);
    }
  }
  EXPECT_EQ(server.requests().size(), 2U);
  EXPECT_EQ(client.send(get(server.url())).body, "some text");
}

TEST(Trace, HasALineForEachTryWithoutWhatIsSecret) {
  ScriptedServer server;
  server.answer([](const ScriptedRequest&) -> ScriptedAnswer {
    return {.status = 207, .headers = {{"Set-Cookie", "a=b"}}, .body = "text of a card"};
  });
  std::string lines;
  WireHooks hooks;
  hooks.trace = [&](std::string_view line) { lines.append(line).append("\n"); };
  HttpClient client(annsLogin(server), hooks);
  client.setScheme("basic");
  client.send({.method = "PROPFIND",
               .url = "http://u:p@" + place(server) + "/a/?token=t",
               .headers = {"Depth: 1"},
               .body = "<x/>"});
  ASSERT_TRUE(lines.starts_with("PROPFIND " + server.url("/a/") + " 207 ")) << lines;
  EXPECT_TRUE(lines.ends_with(" ms\n")) << lines;
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 1);
}

TEST(Headers, ThatWouldBeTwoAreNotSent) {
  ScriptedServer server;
  HttpClient client(plainLogin(server), {});
  auto request = put(server.url("/c"), "text");
  request.headers = {"If-Match: \"1\"\r\nDepth: infinity"};
  EXPECT_EQ(failureOf([&] { client.send(request); }),
            "Protocol: a header of a request would hold a line end");
  EXPECT_EQ(server.requests().size(), 0U);
}

}  // namespace
}  // namespace ox::sync
