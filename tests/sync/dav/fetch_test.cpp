#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "tests/sync/dav/scripted_book.hpp"

using namespace ox::sync;
using namespace ox::support;

namespace {

std::string textOf(const std::string& name) {
  return "BEGIN:VCARD\r\nFN:" + name + "\r\nEND:VCARD\r\n";
}

// As a server writes it into XML.
std::string card(const std::string& href, const std::string& etag, const std::string& text) {
  const auto mark = etag.empty() ? "" : "<getetag>" + etag + "</getetag>";
  return response(href, propstat(mark + "<C:address-data>" + text + "</C:address-data>"));
}

ScriptedAnswer got(const std::string& etag, const std::string& text) {
  ScriptedAnswer answer{.status = 200, .headers = {{"Content-Type", "text/vcard"}}, .body = text};
  if (!etag.empty()) answer.headers.emplace_back("ETag", etag);
  return answer;
}

std::vector<ListedCard> named(const std::vector<std::string>& hrefs, std::uint64_t bytes = 0) {
  std::vector<ListedCard> cards;
  for (const auto& href : hrefs)
    cards.push_back({.href = href, .etag = "\"listed\"", .bytes = bytes});
  return cards;
}

std::vector<std::string> numbered(std::size_t count) {
  std::vector<std::string> hrefs;
  for (std::size_t at = 0; at < count; ++at) hrefs.push_back("/b/" + std::to_string(at) + ".vcf");
  return hrefs;
}

std::string stateOf(const FetchedCard& card) {
  if (card.state == FetchedCard::State::Gone) return "gone";
  if (card.state == FetchedCard::State::Unreadable) return "unreadable";
  return card.etag;
}

// "a.vcf "1"; b.vcf gone", in the order of the hrefs; each told once.
std::string fetched(RemoteBook& book, const std::vector<ListedCard>& cards,
                    std::map<std::string, FetchedCard>* kept = nullptr) {
  std::map<std::string, FetchedCard> told;
  std::size_t count = 0;
  book.fetch(cards, [&](FetchedCard card) {
    ++count;
    told[card.href] = std::move(card);
  });
  EXPECT_EQ(count, cards.size());
  std::string text;
  for (const auto& [href, card] : told) {
    text += (text.empty() ? "" : "; ") + href + " " + stateOf(card);
  }
  if (kept) *kept = std::move(told);
  return text;
}

// A multiget of what the request names, as a server does it that knows every card.
ScriptedAnswer everyCard(const ScriptedRequest& request) {
  std::string inner;
  for (const auto& href : hrefsIn(request)) inner += card(href, "\"1\"", textOf(href));
  return multistatus(inner);
}

}  // namespace

TEST(DavFetch, AsksForEachHrefAsItIsSpelled) {
  ScriptedBook scripted(everyCard);
  EXPECT_EQ(fetched(scripted.book, named({"/b/a%40&b.vcf", "/b/%2b.vcf", "http://127.0.0.1/b/x"})),
            "/b/%2b.vcf \"1\"; /b/a%40&b.vcf \"1\"; http://127.0.0.1/b/x \"1\"");
  EXPECT_EQ(hrefsIn(scripted.server.requests()[0]),
            (std::vector<std::string>{"/b/a%40&amp;b.vcf", "/b/%2b.vcf", "http://127.0.0.1/b/x"}));
}

TEST(DavFetch, MatchesAnswersByTheirPlace) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    if (request.method == "GET") return plain(500);
    return multistatus(
        card("/b/c%2B@.vcf", "\"3\"", textOf("C")) + card("/other/z.vcf", "\"9\"", textOf("Z")) +
        card("/b/a.vcf", "\"1\"", textOf("A")) + card("/b/a.vcf", "\"8\"", textOf("again")) +
        card("/b/never-asked.vcf", "\"7\"", textOf("N")) +
        card("https://127.0.0.1:1/b/b.vcf", "\"2\"", textOf("B")));
  });
  std::map<std::string, FetchedCard> kept;
  EXPECT_EQ(fetched(scripted.book, named({"/b/a.vcf", "/b/b.vcf", "/b/c%2b%40.vcf"}), &kept),
            "/b/a.vcf \"1\"; /b/b.vcf \"2\"; /b/c%2b%40.vcf \"3\"");
  EXPECT_EQ(kept["/b/a.vcf"].text, textOf("A"));
  EXPECT_EQ(scripted.asked(), "REPORT /b/");
}

TEST(DavFetch, GetsWhatTheAnswerLeavesOut) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    if (request.method == "REPORT") {
      return multistatus(card("/b/a.vcf", "\"1\"", textOf("A")) + gone("/b/hash%23.vcf") +
                         response("/b/none.vcf", propstat("<C:address-data/>", "404 Not Found")));
    }
    if (request.method == "PROPFIND") return multistatus(itself());
    if (request.target == "/b/hash%23.vcf") return got("\"2\"", textOf("B"));
    if (request.target == "/b/410.vcf") return plain(410);
    if (request.target == "/b/403.vcf") return plain(403, "not for you");
    return plain(404);
  });
  std::map<std::string, FetchedCard> kept;
  EXPECT_EQ(
      fetched(scripted.book,
              named({"/b/a.vcf", "/b/hash%23.vcf", "/b/none.vcf", "/b/410.vcf", "/b/403.vcf"}),
              &kept),
      "/b/403.vcf unreadable; /b/410.vcf gone; /b/a.vcf \"1\"; /b/hash%23.vcf \"2\";"
      " /b/none.vcf gone");
  EXPECT_EQ(kept["/b/403.vcf"].etag, "");  // to be asked for again
  EXPECT_EQ(kept["/b/403.vcf"].reason,
            scripted.server.url("/b/403.vcf") + " answered 403 (not for you).");
  for (const auto& request : scripted.server.requests()) {
    EXPECT_EQ(request.header("accept-encoding") == "identity", request.method == "GET");
  }
}

TEST(DavFetch, TakesNoCardForGoneWhenTheBookIs) {
  ScriptedBook scripted([](const ScriptedRequest&) { return plain(404); });
  EXPECT_EQ(failureOf([&] {
              scripted.book.fetch(named({"/b/a.vcf"}), [](const FetchedCard&) { FAIL(); });
            }),
            "Away");
}

TEST(DavFetch, TakesTheEtagBesideTheText) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    if (request.method == "GET") return got("\"header\"", textOf("B"));
    return multistatus(card("/b/a.vcf", "unquoted", textOf("A")) +
                       card("/b/b.vcf", "", textOf("B")));
  });
  EXPECT_EQ(fetched(scripted.book, named({"/b/a.vcf", "/b/b.vcf"})),
            "/b/a.vcf unquoted; /b/b.vcf \"header\"");
}

TEST(DavFetch, MarksACardWithoutAnyEtagByItsText) {
  std::string text = textOf("A");
  ScriptedBook scripted([&](const ScriptedRequest& request) {
    return request.method == "GET" ? got("", text) : multistatus("");
  });
  std::map<std::string, FetchedCard> kept;
  fetched(scripted.book, named({"/b/a.vcf"}), &kept);
  const auto mark = kept["/b/a.vcf"].etag;
  EXPECT_EQ(mark.substr(0, 7), "x-text:");
  EXPECT_EQ(mark.size(), 7U + 32U);
  fetched(scripted.book, named({"/b/a.vcf"}), &kept);
  EXPECT_EQ(kept["/b/a.vcf"].etag, mark);
  text = textOf("B");
  fetched(scripted.book, named({"/b/a.vcf"}), &kept);
  EXPECT_NE(kept["/b/a.vcf"].etag, mark);
}

TEST(DavFetch, EndsEachLineAsCardsDo) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    if (request.method == "GET") return got("\"4\"", "BEGIN:VCARD\nEND:VCARD");
    return multistatus(card("/b/1.vcf", "\"1\"", "BEGIN:VCARD\r\nEND:VCARD\r\n") +
                       card("/b/2.vcf", "\"2\"", "BEGIN:VCARD&#13;\nEND:VCARD&#13;\n") +
                       card("/b/3.vcf", "\"3\"", "BEGIN:VCARD\nEND:VCARD"));
  });
  std::map<std::string, FetchedCard> kept;
  fetched(scripted.book, named({"/b/1.vcf", "/b/2.vcf", "/b/3.vcf", "/b/4.vcf"}), &kept);
  for (const auto& [href, card] : kept) {
    EXPECT_EQ(card.text, "BEGIN:VCARD\r\nEND:VCARD\r\n") << href;
  }
}

TEST(DavFetch, MakesBatchesOfTwentyUntilItKnowsHowLargeCardsAre) {
  ScriptedBook scripted(everyCard);
  fetched(scripted.book, named(numbered(260)));
  std::vector<std::size_t> sizes;
  for (const auto& request : scripted.server.requests()) sizes.push_back(hrefsIn(request).size());
  std::ranges::sort(sizes);
  EXPECT_EQ(sizes, (std::vector<std::size_t>{20, 20, 20, 100, 100}));
  EXPECT_LE(scripted.server.mostAtOnce(), 2U);
}

TEST(DavFetch, MakesBatchesOfFourMegabytesOfWhatIsKnown) {
  ScriptedBook scripted(everyCard);
  fetched(scripted.book, named(numbered(7), std::uint64_t{3} << 19));
  std::vector<std::size_t> sizes;
  for (const auto& request : scripted.server.requests()) sizes.push_back(hrefsIn(request).size());
  std::ranges::sort(sizes);
  EXPECT_EQ(sizes, (std::vector<std::size_t>{1, 2, 2, 2}));
  ScriptedBook small(everyCard);
  fetched(small.book, named(numbered(150), 300));
  EXPECT_EQ(hrefsIn(small.server.requests()[0]).size() + hrefsIn(small.server.requests()[1]).size(),
            150U);
  EXPECT_EQ(small.asked(), "REPORT /b/, REPORT /b/");
}

TEST(DavFetch, LosesOneCardAloneWhereOneMakesTheAnswerIllFormed) {
  for (const std::string bad : {"\x01", "\xFF"}) {
    ScriptedBook scripted([&](const ScriptedRequest& request) {
      if (request.method == "GET") return got("\"g\"", textOf("bad" + bad));
      std::string inner;
      for (const auto& href : hrefsIn(request)) {
        inner += card(href, "\"1\"", textOf(href == "/b/13.vcf" ? "bad" + bad : href));
      }
      return multistatus(inner);
    });
    std::map<std::string, FetchedCard> kept;
    fetched(scripted.book, named(numbered(20)), &kept);
    for (const auto& [href, card] : kept) {
      EXPECT_EQ(card.state, FetchedCard::State::Read) << href;
      EXPECT_EQ(card.text, textOf(href == "/b/13.vcf" ? "bad" + bad : href));
    }
    std::size_t gets = 0;
    for (const auto& request : scripted.server.requests()) gets += request.method == "GET" ? 1 : 0;
    EXPECT_EQ(gets, 1U);
  }
}

TEST(DavFetch, HalvesABatchThatFailsAsAWhole) {
  for (const int code : {404, 500}) {
    ScriptedBook scripted([&](const ScriptedRequest& request) {
      if (request.method == "PROPFIND") return multistatus(itself());
      if (request.method == "GET") return plain(code);
      const auto hrefs = hrefsIn(request);
      return std::ranges::count(hrefs, "/b/5.vcf") > 0 ? plain(code) : everyCard(request);
    });
    std::map<std::string, FetchedCard> kept;
    fetched(scripted.book, named(numbered(16)), &kept);
    for (const auto& [href, card] : kept) {
      const auto expected = href != "/b/5.vcf" ? "\"1\"" : code == 404 ? "gone" : "unreadable";
      EXPECT_EQ(stateOf(card), expected) << href;
    }
    std::vector<std::size_t> sizes;
    for (const auto& request : scripted.server.requests()) {
      if (request.method == "REPORT") sizes.push_back(hrefsIn(request).size());
    }
    std::ranges::sort(sizes, std::greater<>());
    const std::vector<std::size_t> once = {16, 8, 8, 4, 4, 2, 2, 1, 1};
    const std::vector<std::size_t> thrice = {16, 16, 16, 8, 8, 4, 4, 2, 2, 1, 1};
    EXPECT_EQ(sizes, code == 404 ? once : thrice);
  }
}

TEST(DavFetch, GetsEachCardWhereThereIsNoReport) {
  for (const int code : {405, 501, 400}) {
    ScriptedBook scripted([&](const ScriptedRequest& request) {
      return request.method == "GET" ? got("\"1\"", textOf("A")) : plain(code);
    });
    std::map<std::string, FetchedCard> kept;
    fetched(scripted.book, named(numbered(300)), &kept);
    EXPECT_EQ(kept.size(), 300U);
    std::size_t reports = 0;
    for (const auto& request : scripted.server.requests()) {
      reports += request.method == "REPORT" ? 1 : 0;
    }
    // Two batches of 20 are tried, down to each card where the code does not say enough.
    EXPECT_EQ(reports, code == 400 ? 78U : 2U) << code;
    EXPECT_LE(scripted.server.mostAtOnce(), 4U);
  }
  ScriptedBook known([](const ScriptedRequest&) { return got("\"1\"", textOf("A")); },
                     {.syncCollection = {}, .multiget = false});
  fetched(known.book, named({"/b/a.vcf"}));
  EXPECT_EQ(known.asked(), "GET /b/a.vcf");
}

TEST(DavFetch, TakesNoPageForACard) {
  ScriptedBook captive([](const ScriptedRequest& request) {
    return request.method == "GET" ? page() : multistatus("");
  });
  EXPECT_EQ(failureOf([&] { fetched(captive.book, named({"/b/a.vcf"})); }), "Protocol");
  ScriptedBook file([](const ScriptedRequest& request) {
    auto answer = page();
    answer.headers.emplace_back("ETag", "\"listed\"");
    if (request.method == "PROPFIND") return multistatus(itself());
    return request.method == "GET" ? answer : multistatus("");
  });
  EXPECT_EQ(fetched(file.book, named({"/b/a.vcf"})), "/b/a.vcf unreadable");
}

// A server that fails, and somebody on the way who spoils what it says, spoil more than one card.
TEST(DavFetch, TakesNoCardForUnreadableWhereTheBookCannotBeAsked) {
  for (const bool isCut : {false, true}) {
    bool fails = true;
    ScriptedBook scripted([&](const ScriptedRequest& request) {
      if (request.method == "PROPFIND") return fails ? plain(500) : multistatus(itself());
      if (request.method != "GET") return plain(500);
      return isCut ? got("\"1\"", "BEGIN:VCARD\r\nFN:Ann\r\nTE") : plain(500);
    });
    EXPECT_EQ(failureOf([&] { fetched(scripted.book, named({"/b/a.vcf"})); }), "Protocol");
    fails = false;
    EXPECT_EQ(fetched(scripted.book, named({"/b/a.vcf"})),
              isCut ? "/b/a.vcf \"1\"" : "/b/a.vcf unreadable");
  }
}

TEST(DavFetch, ReadsACardLargerThanOtherAnswersMayBe) {
  const auto text =
      "BEGIN:VCARD\r\nNOTE:" + std::string(std::size_t{6} << 20, 'x') + "\r\nEND:VCARD\r\n";
  ScriptedBook scripted([&](const ScriptedRequest& request) {
    return request.method == "GET" ? got("\"1\"", text) : multistatus("");
  });
  std::map<std::string, FetchedCard> kept;
  EXPECT_EQ(fetched(scripted.book, named({"/b/a.vcf"}), &kept), "/b/a.vcf \"1\"");
  EXPECT_TRUE(kept["/b/a.vcf"].text == text);
}

TEST(DavFetch, TellsOneCardOnceForEachTimeItIsAskedFor) {
  ScriptedBook scripted(everyCard);
  std::vector<std::string> told;
  scripted.book.fetch(named({"/b/a%40.vcf", "/b/a@.vcf"}),
                      [&](const FetchedCard& card) { told.push_back(card.href); });
  std::ranges::sort(told);
  EXPECT_EQ(told, (std::vector<std::string>{"/b/a%40.vcf", "/b/a@.vcf"}));
}
