#include <gtest/gtest.h>
#include <string>

#include "tests/sync/dav/scripted_book.hpp"

using namespace ox::sync;
using namespace ox::support;

namespace {

// "whole; a.vcf "1"; gone b.vcf; token x", hrefs without the book's own path.
std::string shown(const Listing& listing) {
  std::string text = listing.isWhole ? "whole" : "changes";
  for (const auto& card : listing.cards) {
    text += "; " + card.href + " " + card.etag;
    if (card.bytes != 0) text += " " + std::to_string(card.bytes);
  }
  for (const auto& href : listing.gone) text += "; gone " + href;
  return text + "; token " + listing.token;
}

ScriptedServer::Script always(const ScriptedAnswer& answer) {
  return [answer](const ScriptedRequest&) { return answer; };
}

std::string member(const std::string& href, const std::string& properties) {
  return response(href, propstat("<resourcetype/>" + properties));
}

}  // namespace

TEST(DavListing, NamesEverythingWithoutAToken) {
  ScriptedBook scripted(always(
      multistatus(listed("/b/a.vcf", "\"1\"") + listed("/b/b%20.vcf", "W/\"2\"") + token("t1"))));
  EXPECT_EQ(shown(scripted.book.list({})), "whole; /b/a.vcf \"1\"; /b/b%20.vcf W/\"2\"; token t1");
  EXPECT_EQ(scripted.asked(), "REPORT /b/");
  const auto request = scripted.server.requests()[0];
  EXPECT_EQ(tokenIn(request), "");
  EXPECT_EQ(request.header("depth"), "0");
  EXPECT_EQ(request.header("content-type"), "application/xml; charset=utf-8");
  EXPECT_EQ(request.body.find("limit"), std::string::npos);
  EXPECT_EQ(scripted.book.abilities().syncCollection, true);
}

TEST(DavListing, NamesWhatChangedSinceAToken) {
  ScriptedBook scripted(
      always(multistatus(listed("/b/a.vcf", "\"2\"") + gone("/b/c.vcf") + token("data:,5"))));
  EXPECT_EQ(shown(scripted.book.list("data:,4&<")),
            "changes; /b/a.vcf \"2\"; gone /b/c.vcf; token data:,5");
  EXPECT_EQ(tokenIn(scripted.server.requests()[0]), "data:,4&amp;&lt;");
}

TEST(DavListing, TakesA404ForGoneWhateverStandsBesideIt) {
  ScriptedBook scripted(always(multistatus(
      response("/b/c.vcf", status("404 Not Found") + propstat("<getetag/>", "418 I'm a teapot")) +
      token("t2"))));
  EXPECT_EQ(shown(scripted.book.list("t1")), "changes; gone /b/c.vcf; token t2");
}

TEST(DavListing, TakesNothingForGoneInAFirstListing) {
  ScriptedBook scripted(
      always(multistatus(listed("/b/a.vcf", "1") + gone("/b/c.vcf") + token("t"))));
  EXPECT_EQ(shown(scripted.book.list({})), "whole; /b/a.vcf 1; token t");
}

TEST(DavListing, TakesACardThatCannotBeLookedAtForOneThatIsThere) {
  ScriptedBook scripted(always(
      multistatus(response("/b/a.vcf", status("403 Forbidden")) +
                  response("/b/b.vcf", propstat("<getetag/>", "404 Not Found")) + token("t"))));
  EXPECT_EQ(shown(scripted.book.list({})), "whole; /b/a.vcf ; /b/b.vcf ; token t");
}

TEST(DavListing, PassesOverWhatIsNoCardOfTheBook) {
  ScriptedBook scripted(always(multistatus(
      listed("/b/", "\"book\"") + listed("/b/sub/", "\"s\"") + listed("/b/sub/x.vcf", "\"x\"") +
      listed("/other/y.vcf", "\"y\"") + listed("https://evil.example/b/z.vcf", "\"z\"") +
      listed("/b/../b/d.vcf", "\"d\"") + listed("/b/a.vcf", "\"1\"") +
      listed("http://127.0.0.1/b/e.vcf", "\"e\"") + listed("file:///b/f.vcf", "\"f\"") +
      listed("javascript:g", "\"g\"") + listed("", "\"h\"") + listed("//", "\"i\"") + token("t"))));
  EXPECT_EQ(shown(scripted.book.list({})),
            "whole; /b/a.vcf \"1\"; http://127.0.0.1/b/e.vcf \"e\"; token t");
}

TEST(DavListing, TakesAnEtagThatNoHeaderCanHoldForNone) {
  ScriptedBook scripted(always(multistatus(listed("/b/a.vcf", "\"1\"&#13;\nX-Evil: 1") +
                                           listed("/b/b.vcf", "\"2\tx\"") + token("t"))));
  EXPECT_EQ(shown(scripted.book.list({})), "whole; /b/a.vcf ; /b/b.vcf ; token t");
}

TEST(DavListing, CountsOneCardOnceHoweverItIsSpelled) {
  ScriptedBook scripted(always(
      multistatus(listed("/b/a%40.vcf", "\"1\"") + listed("/b/a@.vcf", "\"2\"") + token("t"))));
  EXPECT_EQ(shown(scripted.book.list({})), "whole; /b/a@.vcf \"2\"; token t");
}

TEST(DavListing, IsNoneWhenItSpeaksOfOtherPlacesOnly) {
  ScriptedBook scripted(always(multistatus(listed("/other/y.vcf", "\"y\"") + token("t"))));
  EXPECT_EQ(failureOf([&] { scripted.book.list({}); }), "Protocol");
  EXPECT_EQ(failureOf([&] { scripted.book.list("t0"); }), "Protocol");
}

TEST(DavListing, IsEmptyForAnEmptyBook) {
  ScriptedBook scripted(always(multistatus(token("t"))));
  EXPECT_EQ(shown(scripted.book.list({})), "whole; token t");
}

TEST(DavListing, FollowsAListingThatIsCut) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    const auto since = tokenIn(request);
    const auto more = response("/b/", status("507 Insufficient Storage"));
    if (since.empty()) {
      return multistatus(listed("/b/a.vcf", "\"1\"") + listed("/b/b.vcf", "\"1\"") + more +
                         token("p1"));
    }
    if (since == "p1") {
      return multistatus(more + gone("/b/a.vcf") + listed("/b/c.vcf", "\"1\"") + token("p2"));
    }
    return multistatus(listed("/b/b.vcf", "\"2\"") + token("end"));
  });
  EXPECT_EQ(shown(scripted.book.list({})), "whole; /b/b.vcf \"2\"; /b/c.vcf \"1\"; token end");
  EXPECT_EQ(scripted.asked(), "REPORT /b/, REPORT /b/, REPORT /b/");
}

TEST(DavListing, DoesNotFollowACutThatLeadsNowhere) {
  const auto more = response("/b/", status("507 Insufficient Storage"));
  ScriptedBook same(always(multistatus(listed("/b/a.vcf", "\"1\"") + more + token("t1"))));
  EXPECT_EQ(failureOf([&] { same.book.list("t1"); }), "Protocol");
  EXPECT_EQ(same.asked(), "REPORT /b/");
  ScriptedBook none(always(multistatus(listed("/b/a.vcf", "\"1\"") + more)));
  EXPECT_EQ(failureOf([&] { none.book.list({}); }), "Protocol");
}

TEST(DavListing, ListsEverythingOnceTheTokenIsDead) {
  for (const int code : {400, 403, 409, 410, 412, 500}) {
    ScriptedBook scripted([code](const ScriptedRequest& request) {
      if (!tokenIn(request).empty()) {
        return xmlAnswer(code, "<error xmlns='DAV:'><valid-sync-token/></error>");
      }
      return multistatus(listed("/b/a.vcf", "\"1\"") + token("new"));
    });
    EXPECT_EQ(shown(scripted.book.list("old")), "whole; /b/a.vcf \"1\"; token new") << code;
  }
}

TEST(DavListing, ListsEverythingWhenTheTokenDiesInTheMiddle) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    const auto since = tokenIn(request);
    if (since == "old") {
      return multistatus(listed("/b/lost.vcf", "\"1\"") + token("p1") +
                         response("/b/", status("507 Insufficient Storage")));
    }
    if (since == "p1") return xmlAnswer(403, "<error xmlns='DAV:'><valid-sync-token/></error>");
    return multistatus(listed("/b/a.vcf", "\"1\"") + token("new"));
  });
  EXPECT_EQ(shown(scripted.book.list("old")), "whole; /b/a.vcf \"1\"; token new");
}

TEST(DavListing, ListsEverythingWhenTheAnswerHasNoToken) {
  ScriptedBook scripted([](const ScriptedRequest& request) {
    if (request.method == "PROPFIND") {
      return multistatus(itself() + member("/b/a.vcf", "<getetag>\"1\"</getetag>"));
    }
    return multistatus(listed("/b/a.vcf", "\"1\""));
  });
  EXPECT_EQ(shown(scripted.book.list("old")), "whole; /b/a.vcf \"1\"; token ");
  EXPECT_EQ(scripted.asked(), "REPORT /b/, REPORT /b/, PROPFIND /b/");
}

TEST(DavListing, TakesNoMembersThatWereCutForAll) {
  for (const auto* code : {"507 Insufficient Storage", "500 Internal Server Error"}) {
    ScriptedBook scripted([code](const ScriptedRequest& request) {
      if (request.method == "REPORT") return plain(405);
      return multistatus(member("/b/a.vcf", "<getetag>\"1\"</getetag>") +
                         response("/b/", status(code)));
    });
    EXPECT_THROW(scripted.book.list({}), RemoteError) << code;
  }
}

TEST(DavListing, AsksForMembersWhereThereIsNoReport) {
  for (const int code : {403, 405, 415, 501}) {
    ScriptedBook scripted([code](const ScriptedRequest& request) {
      if (request.method == "REPORT") return plain(code);
      return multistatus(
          itself("<S:getctag>c7</S:getctag>") +
          member("/b/a.vcf",
                 "<getetag>\"1\"</getetag><getcontentlength>123</getcontentlength>"
                 "<getcontenttype>text/vcard; charset=utf-8</getcontenttype>") +
          member("/b/b", "<getetag>\"2\"</getetag><getcontenttype>text/x-vcard</getcontenttype>") +
          member("/b/c", "<getetag>\"3\"</getetag>") +
          member("/b/d.vcf",
                 "<getetag>\"4\"</getetag><getcontenttype>application/octet-stream"
                 "</getcontenttype>") +
          member("/b/e.ics",
                 "<getetag>\"5\"</getetag><getcontenttype>text/calendar"
                 "</getcontenttype>") +
          response("/b/f", propstat("<resourcetype><collection/></resourcetype>"
                                    "<getetag>\"6\"</getetag>")) +
          response("/b/g.vcf", status("404 Not Found")));
    });
    EXPECT_EQ(shown(scripted.book.list({})),
              "whole; /b/a.vcf \"1\" 123; /b/b \"2\"; /b/c \"3\"; /b/d.vcf \"4\"; token x-ctag:c7");
    EXPECT_EQ(scripted.asked(), "REPORT /b/, PROPFIND /b/");
    EXPECT_EQ(scripted.server.requests()[1].header("depth"), "1");
    EXPECT_EQ(scripted.book.abilities().syncCollection, false);
    // It is not asked for the report again.
    scripted.book.list({});
    EXPECT_EQ(scripted.asked(), "REPORT /b/, PROPFIND /b/, PROPFIND /b/");
  }
}

TEST(DavListing, AsksForNoMembersWhileTheCtagStays) {
  std::string ctag = "c7";
  ScriptedBook scripted([&](const ScriptedRequest& request) {
    const auto members = member("/b/a.vcf", "<getetag>\"1\"</getetag>");
    return multistatus(itself("<S:getctag>" + ctag + "</S:getctag>") +
                       (request.header("depth") == "1" ? members : ""));
  });
  EXPECT_EQ(shown(scripted.book.list("x-ctag:c7")), "changes; token x-ctag:c7");
  EXPECT_EQ(scripted.asked(), "PROPFIND /b/");
  ctag = "c8";
  EXPECT_EQ(shown(scripted.book.list("x-ctag:c7")), "whole; /b/a.vcf \"1\"; token x-ctag:c8");
  EXPECT_EQ(scripted.asked(), "PROPFIND /b/, PROPFIND /b/, PROPFIND /b/");
}

TEST(DavListing, BelievesNoEmptyListingWithoutTheBookInIt) {
  ScriptedBook empty(always(multistatus("")), {.syncCollection = false, .multiget = {}});
  EXPECT_EQ(failureOf([&] { empty.book.list({}); }), "Protocol");
  ScriptedBook mangled(always(multistatus(gone("http%3A//127.0.0.1/b/"))),
                       {.syncCollection = false, .multiget = {}});
  EXPECT_EQ(failureOf([&] { mangled.book.list({}); }), "Away");
}

TEST(DavListing, IsAwayWhereTheBookIsNot) {
  for (const int code : {404, 410}) {
    ScriptedBook scripted(always(plain(code)));
    EXPECT_EQ(failureOf([&] { scripted.book.list({}); }), "Away");
    EXPECT_EQ(failureOf([&] { scripted.book.list("t"); }), "Away");
    EXPECT_EQ(failureOf([&] { scripted.book.list("x-ctag:c"); }), "Away");
    EXPECT_EQ(failureOf([&] { scripted.book.facts(); }), "Away");
  }
}

TEST(DavListing, BelievesNothingButAWholeMultistatus) {
  const auto whole = multistatus(listed("/b/a.vcf", "\"1\"") + token("t"));
  auto asText = whole;
  asText.headers = {{"Content-Type", "text/plain"}};
  auto untyped = whole;
  untyped.headers.clear();
  auto with200 = whole;
  with200.status = 200;
  for (const auto& answer : {page(), asText, untyped, with200, plain(204), xmlAnswer(207, "")}) {
    ScriptedBook scripted(always(answer));
    EXPECT_EQ(failureOf([&] { scripted.book.list({}); }), "Protocol");
    EXPECT_EQ(failureOf([&] { scripted.book.list("t"); }), "Protocol");
    EXPECT_EQ(failureOf([&] { scripted.book.facts(); }), "Protocol");
  }
}

TEST(DavListing, BelievesNoBodyThatIsCut) {
  const auto whole = multistatus(listed("/b/a.vcf", "\"1\"") + token("t"));
  for (std::size_t eighth = 0; eighth < 8; ++eighth) {
    // As HTTP promised, but the XML is not.
    auto shortened = whole;
    shortened.body.resize(whole.body.size() * eighth / 8);
    ScriptedBook ended(always(shortened));
    EXPECT_EQ(failureOf([&] { ended.book.list({}); }), "Protocol") << eighth;
    // Not even that.
    auto cut = whole;
    cut.cutAt = whole.body.size() * eighth / 8;
    ScriptedBook broken(always(cut));
    const auto failure = failureOf([&] { broken.book.list({}); });
    EXPECT_EQ(failure, "Protocol") << eighth;
  }
}

TEST(DavListing, ForgetsWhatCameBeforeABreak) {
  int tries = 0;
  ScriptedBook scripted([&](const ScriptedRequest&) {
    if (++tries > 1) return multistatus(listed("/b/b.vcf", "\"1\"") + token("t2"));
    auto broken = multistatus(listed("/b/a.vcf", "\"1\"") + token("t1") + std::string(5000, ' '));
    broken.cutAt = broken.body.size() - 10;
    return broken;
  });
  EXPECT_EQ(shown(scripted.book.list({})), "whole; /b/b.vcf \"1\"; token t2");
}

TEST(DavFacts, AreWhatTheBookSaysOfItself) {
  ScriptedBook scripted(always(multistatus(itself(
      "<displayname> Team </displayname><C:max-resource-size>1048576</C:max-resource-size>"
      "<current-user-privilege-set><privilege><read/></privilege></current-user-privilege-set>"
      "<supported-report-set><supported-report><report><sync-collection/></report>"
      "</supported-report><supported-report><C:addressbook-multiget/></supported-report>"
      "</supported-report-set><C:supported-address-data><C:address-data-type version='4.0'"
      " content-type='text/vcard'/></C:supported-address-data>"))));
  const auto facts = scripted.book.facts();
  EXPECT_EQ(facts.name, "Team");
  EXPECT_EQ(facts.mostBytes, 1048576U);
  EXPECT_TRUE(facts.isReadOnly);
  EXPECT_TRUE(facts.wantsVersion4);
  EXPECT_EQ(scripted.book.abilities(), (DavAbilities{.syncCollection = true, .multiget = true}));
}

TEST(DavFacts, TakeAsWritableWhatSaysNothing) {
  const auto isReadOnly = [](const std::string& set) {
    ScriptedBook scripted(always(multistatus(itself(set))));
    return scripted.book.facts().isReadOnly;
  };
  const auto having = [](const std::vector<std::string>& privileges) {
    std::string set = "<current-user-privilege-set>";
    for (const auto& name : privileges) set += "<privilege><" + name + "/></privilege>";
    return set + "</current-user-privilege-set>";
  };
  EXPECT_FALSE(isReadOnly(""));
  EXPECT_FALSE(isReadOnly(having({})));
  EXPECT_FALSE(isReadOnly(having({"all"})));
  EXPECT_FALSE(isReadOnly(having({"read", "write"})));
  EXPECT_FALSE(isReadOnly(having({"write-content", "bind", "unbind"})));
  EXPECT_TRUE(isReadOnly(having({"write-content", "bind"})));
  EXPECT_TRUE(isReadOnly(having({"read", "write-properties"})));
}

TEST(DavFacts, AreNoneOfWhatIsNoBook) {
  ScriptedBook folder(
      always(multistatus(response("/b/", propstat("<resourcetype><collection/></resourcetype>")))));
  EXPECT_EQ(failureOf([&] { folder.book.facts(); }), "NoBook");
  ScriptedBook other(always(
      multistatus(response("/x/", propstat("<resourcetype><C:addressbook/></resourcetype>")))));
  EXPECT_EQ(failureOf([&] { other.book.facts(); }), "Protocol");
}

TEST(BookStates, AreThoseOfTheBooksOfOneHome) {
  ScriptedBook scripted(
      always(multistatus(response("/", propstat("<resourcetype><collection/></resourcetype>")) +
                         itself("<sync-token>t1</sync-token><S:getctag>c1</S:getctag>") +
                         response("/c%40", propstat("<resourcetype><C:addressbook/></resourcetype>"
                                                    "<S:getctag>c2</S:getctag>")))));
  auto states = bookStates(scripted.client, scripted.server.url("/"));
  EXPECT_EQ(scripted.asked(), "PROPFIND /");
  ASSERT_EQ(states.size(), 2U);
  const auto& one = states.at(bookKey(scripted.server.url("/b/")));
  EXPECT_TRUE(one.isAsListed("t1"));
  EXPECT_TRUE(one.isAsListed("x-ctag:c1"));
  EXPECT_FALSE(one.isAsListed("t0"));
  EXPECT_FALSE(one.isAsListed(""));
  const auto& two = states.at(bookKey(scripted.server.url("/c@/")));
  EXPECT_TRUE(two.isAsListed("x-ctag:c2"));
  EXPECT_FALSE(two.isAsListed("x-ctag:"));
  EXPECT_FALSE(two.isAsListed(""));
}

TEST(DavBookPaths, AreThoseOfItsOwnMembers) {
  ScriptedBook scripted(always(plain(404)));
  const auto& book = scripted.book;
  EXPECT_EQ(book.hrefFor("abc"), "/b/abc.vcf");
  EXPECT_EQ(book.pathOf("/b/a%40b.vcf"), "/b/a@b.vcf");
  EXPECT_EQ(book.pathOf("/b/a%2Fb.vcf"), "/b/a%2Fb.vcf");
  EXPECT_EQ(book.pathOf("/b/"), "");
  EXPECT_EQ(book.pathOf("/b"), "");
  EXPECT_EQ(book.pathOf("/b/sub/a.vcf"), "");
  EXPECT_EQ(book.pathOf("/bb/a.vcf"), "");
  EXPECT_EQ(book.pathOf("/b/../b/a.vcf"), "");
  EXPECT_EQ(book.pathOf("//evil.example/b/a.vcf"), "");
}
