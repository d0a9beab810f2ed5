#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "tests/sync/dav/scripted_book.hpp"

using namespace ox::sync;
using namespace ox::support;

namespace {

const std::string kText = "BEGIN:VCARD\r\nFN:A\r\nEND:VCARD\r\n";

Push create(const std::string& href) {
  return {.kind = Push::Kind::Create, .href = href, .etag = {}, .text = [] { return kText; }};
}
Push update(const std::string& href, const std::string& etag) {
  return {.kind = Push::Kind::Update,
          .href = href,
          .etag = etag,
          .text = [] { return kText; },
          .isOf = [](std::string_view) { return true; }};
}
Push removal(const std::string& href, const std::string& etag) {
  return {.kind = Push::Kind::Remove,
          .href = href,
          .etag = etag,
          .text = {},
          .isOf = [](std::string_view) { return true; }};
}

const char* nameOf(Pushed::Outcome outcome) {
  static constexpr const char* kNames[] = {"Done",     "Changed", "Exists",   "Gone",
                                           "ReadOnly", "Refused", "TooLarge", "UidElsewhere",
                                           "Locked",   "Unknown"};
  return kNames[static_cast<std::size_t>(outcome)];
}

std::vector<Pushed> pushed(RemoteBook& book, const std::vector<Push>& pushes) {
  std::vector<Pushed> results(pushes.size());
  std::vector<int> told(pushes.size());
  book.push(pushes, [&](std::size_t at, Pushed result) {
    results[at] = std::move(result);
    ++told[at];
  });
  EXPECT_EQ(told, std::vector<int>(pushes.size(), 1));
  return results;
}

// "Done Changed Gone" of a Create, an Update and a Remove that are answered alike.
std::string outcomes(const ScriptedAnswer& answer) {
  ScriptedBook scripted([&](const ScriptedRequest& request) {
    return request.method == "PROPFIND" ? multistatus(itself()) : answer;
  });
  std::string text;
  for (const auto& push :
       {create("/b/a.vcf"), update("/b/a.vcf", "\"1\""), removal("/b/a.vcf", "\"1\"")}) {
    text +=
        (text.empty() ? "" : " ") + std::string(nameOf(pushed(scripted.book, {push})[0].outcome));
  }
  return text;
}

ScriptedAnswer error(int code, const std::string& inner) {
  return xmlAnswer(code,
                   "<?xml version='1.0'?><d:error xmlns:d='DAV:'"
                   " xmlns:C='urn:ietf:params:xml:ns:carddav' xmlns:s='urn:x'>" +
                       inner + "</d:error>");
}

}  // namespace

TEST(DavPush, SendsEachChangeUnderItsCondition) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    auto answer = plain(request.method == "DELETE" ? 200 : 201, "done");
    if (request.method == "PUT") answer.headers.emplace_back("ETag", "\"new\"");
    return answer;
  });
  const auto results = pushed(scripted.book, {create("/b/a%40.vcf"), update("/b/b.vcf", "unquoted"),
                                              removal("/b/c.vcf", "\"3\"")});
  for (const auto& result : results) EXPECT_STREQ(nameOf(result.outcome), "Done");
  EXPECT_EQ(results[0].etag, "\"new\"");
  EXPECT_EQ(results[2].etag, "");
  std::map<std::string, ScriptedRequest> requests;
  for (const auto& request : scripted.server.requests()) requests[request.target] = request;
  EXPECT_EQ(requests["/b/a%40.vcf"].method, "PUT");
  EXPECT_EQ(requests["/b/a%40.vcf"].header("if-none-match"), "*");
  EXPECT_EQ(requests["/b/a%40.vcf"].header("content-type"), "text/vcard; charset=utf-8");
  EXPECT_EQ(requests["/b/a%40.vcf"].body, kText);
  EXPECT_EQ(requests["/b/b.vcf"].method, "PUT");
  EXPECT_EQ(requests["/b/b.vcf"].header("if-match"), "unquoted");
  EXPECT_FALSE(requests["/b/b.vcf"].has("if-none-match"));
  EXPECT_EQ(requests["/b/c.vcf"].method, "DELETE");
  EXPECT_EQ(requests["/b/c.vcf"].header("if-match"), "\"3\"");
  EXPECT_EQ(requests["/b/c.vcf"].body, "");
}

TEST(DavPush, SaysWhatBecameOfEachChange) {
  EXPECT_EQ(outcomes(plain(204)), "Done Done Done");
  EXPECT_EQ(outcomes(plain(400)), "Refused Refused Refused");
  EXPECT_EQ(outcomes(plain(403)), "Refused Refused Refused");
  EXPECT_EQ(outcomes(plain(404)), "Refused Gone Gone");
  EXPECT_EQ(outcomes(plain(405)), "ReadOnly ReadOnly Refused");
  EXPECT_EQ(outcomes(plain(409)), "Refused Refused Refused");
  EXPECT_EQ(outcomes(plain(410)), "Refused Gone Gone");
  EXPECT_EQ(outcomes(plain(412)), "Exists Changed Changed");
  EXPECT_EQ(outcomes(plain(413)), "TooLarge TooLarge TooLarge");
  EXPECT_EQ(outcomes(plain(415)), "Refused Refused Refused");
  EXPECT_EQ(outcomes(plain(423)), "Locked Locked Locked");
  EXPECT_EQ(outcomes(plain(500)), "Unknown Unknown Unknown");
  EXPECT_EQ(outcomes(plain(502)), "Unknown Unknown Unknown");
  EXPECT_EQ(outcomes(plain(507)), "TooLarge TooLarge TooLarge");
}

TEST(DavPush, ReadsThePreconditionThatFailed) {
  EXPECT_EQ(outcomes(error(403, "<d:need-privileges><d:resource/></d:need-privileges>")),
            "ReadOnly ReadOnly ReadOnly");
  for (const int code : {400, 403, 409, 412}) {
    EXPECT_EQ(outcomes(error(code,
                             "<C:no-uid-conflict><d:href>/x/y.vcf</d:href>"
                             "</C:no-uid-conflict>")),
              "UidElsewhere UidElsewhere UidElsewhere");
  }
  EXPECT_EQ(outcomes(plain(400, "no-uid-conflict")), "UidElsewhere UidElsewhere UidElsewhere");
  EXPECT_EQ(outcomes(error(400,
                           "<s:message>VCard object with uid already exists in this"
                           " addressbook collection.</s:message>")),
            "UidElsewhere UidElsewhere UidElsewhere");
  EXPECT_EQ(outcomes(error(403, "<C:max-resource-size/>")), "TooLarge TooLarge TooLarge");
  EXPECT_EQ(outcomes(error(403, "<d:quota-not-exceeded/>")), "TooLarge TooLarge TooLarge");
  EXPECT_EQ(outcomes(error(412, "<C:valid-address-data/>")), "Refused Refused Refused");
  EXPECT_EQ(outcomes(error(409, "<C:supported-address-data/>")), "Refused Refused Refused");
}

TEST(DavPush, ReadsAMultistatusForTheRealAnswer) {
  const auto within = [](const std::string& inner) {
    return outcomes(multistatus(response("http%3A//mangled/b/a.vcf", inner)));
  };
  EXPECT_EQ(within(status("200 OK")), "Done Done Done");
  EXPECT_EQ(within(status("412 Precondition Failed")), "Exists Changed Changed");
  EXPECT_EQ(within(status("412 Precondition Failed") + "<error><C:valid-address-data/></error>"),
            "Refused Refused Refused");
  EXPECT_EQ(within(status("423 Locked")), "Locked Locked Locked");
  EXPECT_EQ(within(propstat("<getetag/>", "403 Forbidden")), "Refused Refused Refused");
  EXPECT_EQ(within(""), "Unknown Unknown Unknown");
  EXPECT_EQ(outcomes(multistatus("")), "Unknown Unknown Unknown");
  EXPECT_EQ(outcomes(xmlAnswer(207, "<multistatus xmlns='DAV:'>")), "Unknown Unknown Unknown");
}

TEST(DavPush, GivesTheReasonInOneShortLine) {
  const auto reasonOf = [](const ScriptedAnswer& answer) {
    ScriptedBook scripted([&](const ScriptedRequest&) { return answer; });
    const auto result = pushed(scripted.book, {create("/b/a.vcf")})[0];
    return std::to_string(result.code) + " " + result.reason;
  };
  EXPECT_EQ(reasonOf(plain(400, "  Bad\r\n card\x01.\n")), "400 Bad card .");
  EXPECT_EQ(
      reasonOf(error(403, "<s:exception>Sabre</s:exception><s:message>No FN\n here</s:message>")),
      "403 No FN here");
  EXPECT_EQ(reasonOf(error(403, "<C:valid-address-data/>")), "403 valid-address-data");
  EXPECT_EQ(
      reasonOf(multistatus(response("/b/a.vcf", status("422 x") + "<responsedescription>not a"
                                                                  " card</responsedescription>"))),
      "422 not a card");
  auto html = page();
  html.status = 400;
  EXPECT_EQ(reasonOf(html), "400 ");
  const auto longOne = reasonOf(plain(400, std::string(199, 'x') + "\xC3\xA4" + "yyy"));
  EXPECT_EQ(longOne, "400 " + std::string(199, 'x') + "...");
}

TEST(DavPush, TakesTheNewPlaceOnlyWithinTheBook) {
  const auto hrefAfter = [](const std::string& location) {
    ScriptedBook scripted([&](const ScriptedRequest& request) {
      auto answer = plain(201);
      const auto host = request.header("host");
      answer.headers.emplace_back("Location", location.starts_with("HOST")
                                                  ? "http://" + host + location.substr(4)
                                                  : location);
      return answer;
    });
    return pushed(scripted.book, {create("/b/a.vcf")})[0].href;
  };
  EXPECT_EQ(hrefAfter("/b/chosen%40.vcf"), "/b/chosen%40.vcf");
  EXPECT_EQ(hrefAfter("HOST/b/chosen.vcf"), "/b/chosen.vcf");
  EXPECT_EQ(hrefAfter("chosen.vcf"), "/b/chosen.vcf");
  for (const auto* elsewhere :
       {"//b/chosen.vcf", "/other/chosen.vcf", "https://evil.example/b/a.vcf", "/b/", "/b/../x.vcf",
        "/b/sub/x.vcf", "mailto:x", "HOST@evil.example/b/a.vcf"}) {
    EXPECT_EQ(hrefAfter(elsewhere), "/b/a.vcf") << elsewhere;
  }
}

TEST(DavPush, LooksFirstWhereTheEtagIsWeak) {
  std::string now;
  ScriptedBook scripted([&](const ScriptedRequest& request) {
    if (request.method != "GET") return plain(204);
    EXPECT_EQ(request.header("accept-encoding"), "identity");
    auto answer = plain(200, kText);
    answer.headers = {{"Content-Type", "text/vcard"}, {"ETag", now}};
    return answer;
  });
  for (const auto* same : {"\"1\"", "W/\"1\""}) {
    now = same;
    const auto results = pushed(scripted.book, {update("/b/a.vcf", "W/\"1\"")});
    EXPECT_STREQ(nameOf(results[0].outcome), "Done");
    EXPECT_EQ(scripted.server.requests().back().method, "PUT");
    EXPECT_EQ(scripted.server.requests().back().header("if-match"), "\"1\"");
  }
  now = "W/\"2\"";
  const auto results =
      pushed(scripted.book, {update("/b/a.vcf", "W/\"1\""), removal("/b/b.vcf", "W/\"1\"")});
  EXPECT_STREQ(nameOf(results[0].outcome), "Changed");
  EXPECT_STREQ(nameOf(results[1].outcome), "Changed");
  // The last two are looked at together.
  const auto asked = scripted.asked();
  const std::string before = "GET /b/a.vcf, PUT /b/a.vcf, GET /b/a.vcf, PUT /b/a.vcf, ";
  EXPECT_TRUE(asked == before + "GET /b/a.vcf, GET /b/b.vcf" ||
              asked == before + "GET /b/b.vcf, GET /b/a.vcf")
      << asked;
}

TEST(DavPush, ComparesTheTextWhereAWeakEtagStaysTheSame) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    if (request.method != "GET") return plain(204);
    auto answer = plain(200, kText);
    answer.headers = {{"Content-Type", "text/vcard"}, {"ETag", "W/\"1\""}};
    return answer;
  });
  auto change = update("/b/a.vcf", "W/\"1\"");
  change.isOf = [](std::string_view text) { return text == kText; };
  EXPECT_STREQ(nameOf(pushed(scripted.book, {change})[0].outcome), "Done");
  change.isOf = [](std::string_view text) { return text != kText; };
  EXPECT_STREQ(nameOf(pushed(scripted.book, {change})[0].outcome), "Changed");
  EXPECT_EQ(scripted.asked(), "GET /b/a.vcf, PUT /b/a.vcf, GET /b/a.vcf");
}

TEST(DavPush, ComparesTheTextWhereThereIsNoEtag) {
  std::string there = kText;
  std::string date;
  ScriptedBook scripted([&](const ScriptedRequest& request) {
    if (request.method == "REPORT") return multistatus("");
    if (request.method == "PROPFIND") return multistatus(itself());
    if (request.method != "GET") return plain(204);
    if (there.empty()) return plain(404);
    auto answer = plain(200, there);
    answer.headers = {{"Content-Type", "text/vcard"}};
    if (!date.empty()) answer.headers.emplace_back("Last-Modified", date);
    return answer;
  });
  const std::vector<ListedCard> cards = {{.href = "/b/a.vcf", .etag = {}, .bytes = 0}};
  std::string mark;
  scripted.book.fetch(cards, [&](const FetchedCard& card) { mark = card.etag; });
  ASSERT_EQ(mark.substr(0, 7), "x-text:");
  const auto last = [&] { return scripted.server.requests().back(); };

  EXPECT_STREQ(nameOf(pushed(scripted.book, {update("/b/a.vcf", mark)})[0].outcome), "Done");
  EXPECT_EQ(last().method, "PUT");
  EXPECT_FALSE(last().has("if-match"));
  date = "Mon, 01 Jan 2024 00:00:00 GMT";
  EXPECT_STREQ(nameOf(pushed(scripted.book, {removal("/b/a.vcf", mark)})[0].outcome), "Done");
  EXPECT_EQ(last().method, "DELETE");
  EXPECT_EQ(last().header("if-unmodified-since"), date);
  there = "BEGIN:VCARD\r\nFN:B\r\nEND:VCARD\r\n";
  EXPECT_STREQ(nameOf(pushed(scripted.book, {update("/b/a.vcf", mark)})[0].outcome), "Changed");
  EXPECT_EQ(last().method, "GET");
  there.clear();
  EXPECT_STREQ(nameOf(pushed(scripted.book, {update("/b/a.vcf", mark)})[0].outcome), "Gone");
}

TEST(DavPush, NeverChangesWhatNobodyKnows) {
  ScriptedBook scripted([](const ScriptedRequest&) { return plain(204); });
  const auto results = pushed(scripted.book, {update("/b/a.vcf", ""), removal("/b/b.vcf", ""),
                                              create("/other/c.vcf"), removal("/b/", "\"1\"")});
  EXPECT_STREQ(nameOf(results[0].outcome), "Changed");
  EXPECT_STREQ(nameOf(results[1].outcome), "Changed");
  EXPECT_STREQ(nameOf(results[2].outcome), "Refused");
  EXPECT_STREQ(nameOf(results[3].outcome), "Refused");
  EXPECT_EQ(scripted.asked(), "");
}

TEST(DavPush, KnowsNothingOfAChangeWhoseAnswerWasLost) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    auto answer = plain(201);
    answer.closesUnanswered = request.target == "/b/lost.vcf";
    return answer;
  });
  const auto results = pushed(scripted.book, {create("/b/lost.vcf"), create("/b/a.vcf")});
  EXPECT_STREQ(nameOf(results[0].outcome), "Unknown");
  EXPECT_EQ(results[0].href, "/b/lost.vcf");
  EXPECT_STREQ(nameOf(results[1].outcome), "Done");
}

TEST(DavPush, IsAwayWhereTheBookIsNot) {
  ScriptedBook scripted([](const ScriptedRequest&) { return plain(404); });
  std::size_t told = 0;
  const std::vector<Push> pushes = {create("/b/a.vcf")};
  EXPECT_EQ(
      failureOf([&] { scripted.book.push(pushes, [&](std::size_t, const Pushed&) { ++told; }); }),
      "Away");
  EXPECT_EQ(told, 1U);
}

TEST(DavPush, SendsFourAtOnceAndNoMore) {
  ScriptedBook scripted([](const ScriptedRequest&) {
    auto answer = plain(201);
    answer.silence = std::chrono::milliseconds(30);
    return answer;
  });
  std::vector<Push> pushes;
  pushes.reserve(20);
  for (int at = 0; at < 20; ++at) pushes.push_back(create("/b/" + std::to_string(at) + ".vcf"));
  for (const auto& result : pushed(scripted.book, pushes)) {
    EXPECT_STREQ(nameOf(result.outcome), "Done");
  }
  EXPECT_EQ(scripted.server.mostAtOnce(), 4U);
  EXPECT_EQ(scripted.server.requests().size(), 20U);
}
