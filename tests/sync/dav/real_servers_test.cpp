// What the two servers that come with the system do, and what a book makes of it.

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "ox/sync/dav/dav_book.hpp"
#include "ox/sync/dav/discovery.hpp"
#include "ox/sync/http/http_client.hpp"
#include "ox/sync/remote/remote_error.hpp"
#include "tests/sync/support/real_server.hpp"

using namespace ox::sync;
using ox::support::RealServer;

namespace {

LoginSettings loginTo(const RealServer& server, const std::string& url) {
  LoginSettings login;
  login.url = url;
  login.allowHttp = true;
  if (const auto file = server.passwordFile(); !file.empty()) {
    login.user = "ann";
    login.password = {PasswordSource::Kind::File, file};
  }
  return login;
}

std::string cardOf(const std::string& uid, const std::string& name) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nFN:" + name + "\r\nN:" + name +
         ";;;;\r\nREV:2024-01-01T00:00:00Z\r\nEND:VCARD\r\n";
}

std::string hasLine(const std::string& text, const std::string& line) {
  return text.find("\r\n" + line + "\r\n") == std::string::npos ? "no " + line : line;
}

std::vector<Pushed> pushAll(RemoteBook& book, const std::vector<Push>& pushes) {
  std::vector<Pushed> results(pushes.size());
  std::vector<int> told(pushes.size());
  book.push(pushes, [&](std::size_t at, Pushed pushed) {
    results[at] = std::move(pushed);
    ++told[at];
  });
  EXPECT_EQ(told, std::vector<int>(pushes.size(), 1));
  return results;
}

std::map<std::string, FetchedCard> fetchAll(RemoteBook& book,
                                            const std::vector<ListedCard>& cards) {
  std::map<std::string, FetchedCard> fetched;
  std::size_t told = 0;
  book.fetch(cards, [&](FetchedCard card) {
    ++told;
    fetched[card.href] = std::move(card);
  });
  EXPECT_EQ(told, cards.size());
  return fetched;
}

Push create(const RemoteBook& book, const std::string& name, const std::string& text) {
  return {.kind = Push::Kind::Create, .href = book.hrefFor(name), .etag = {}, .text = [text] {
            return text;
          }};
}

class RealBook : public testing::TestWithParam<RealServer::Kind> {};

}  // namespace

TEST_P(RealBook, IsFoundFromTheHostAlone) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->origin());
  HttpClient client(login, {});
  const auto offer = discover(client, login, {}, {});
  ASSERT_EQ(offer.books.size(), 1U);
  EXPECT_EQ(offer.books[0].url, server->bookUrl());
  EXPECT_EQ(offer.books[0].name, "addressbook");
  EXPECT_TRUE(offer.books[0].isOwn);
  EXPECT_FALSE(offer.books[0].isReadOnly);
  EXPECT_EQ(offer.principal, server->origin() + "/ann/");
  EXPECT_EQ(offer.foreignHost, "");
}

TEST_P(RealBook, IsTheBookOfItsOwnUrl) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  const auto offer = discover(client, login, {}, {});
  ASSERT_EQ(offer.books.size(), 1U);
  EXPECT_EQ(offer.books[0].url, server->bookUrl());
  DavBook book(client, offer.books[0].url);
  const auto facts = book.facts();
  EXPECT_EQ(facts.name, "addressbook");
  EXPECT_FALSE(facts.isReadOnly);
  EXPECT_FALSE(facts.wantsVersion4);
  EXPECT_EQ(book.abilities(), (DavAbilities{.syncCollection = true, .multiget = true}));
}

TEST_P(RealBook, TellsEachChangeOnceByItsToken) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->bookUrl());
  const auto empty = book.list({});
  EXPECT_TRUE(empty.isWhole);
  EXPECT_EQ(empty.cards, std::vector<ListedCard>());
  ASSERT_NE(empty.token, "");

  const auto created = pushAll(book, {create(book, "ann@one", cardOf("one", "One")),
                                      create(book, "two", cardOf("two", "Two"))});
  for (const auto& pushed : created) {
    EXPECT_EQ(pushed.outcome, Pushed::Outcome::Done) << pushed.code << " " << pushed.reason;
  }
  const auto added = book.list(empty.token);
  EXPECT_FALSE(added.isWhole);
  EXPECT_EQ(added.gone, std::vector<std::string>());
  ASSERT_EQ(added.cards.size(), 2U);
  const auto fetched = fetchAll(book, added.cards);
  for (const auto& card : added.cards) {
    const auto& read = fetched.at(card.href);
    ASSERT_EQ(read.state, FetchedCard::State::Read) << read.reason;
    EXPECT_EQ(read.etag, card.etag);
    const bool isTwo = book.pathOf(card.href) == book.pathOf(book.hrefFor("two"));
    EXPECT_EQ(hasLine(read.text, isTwo ? "FN:Two" : "FN:One"), isTwo ? "FN:Two" : "FN:One");
  }

  const auto two = std::ranges::find_if(added.cards, [&](const ListedCard& card) {
    return book.pathOf(card.href) == book.pathOf(book.hrefFor("two"));
  });
  ASSERT_NE(two, added.cards.end());
  const auto updated =
      pushAll(book, {{.kind = Push::Kind::Update, .href = two->href, .etag = two->etag, .text = [] {
                        return cardOf("two", "Deux");
                      }}});
  EXPECT_EQ(updated[0].outcome, Pushed::Outcome::Done);
  const auto changed = book.list(added.token);
  ASSERT_EQ(changed.cards.size(), 1U);
  EXPECT_EQ(book.pathOf(changed.cards[0].href), book.pathOf(two->href));
  EXPECT_NE(changed.cards[0].etag, two->etag);

  const auto removed = pushAll(
      book,
      {{.kind = Push::Kind::Remove, .href = two->href, .etag = changed.cards[0].etag, .text = {}}});
  EXPECT_EQ(removed[0].outcome, Pushed::Outcome::Done);
  const auto last = book.list(changed.token);
  EXPECT_FALSE(last.isWhole);
  EXPECT_EQ(last.cards, std::vector<ListedCard>());
  ASSERT_EQ(last.gone.size(), 1U);
  EXPECT_EQ(book.pathOf(last.gone[0]), book.pathOf(two->href));
  const auto idle = book.list(last.token);
  EXPECT_EQ(idle.cards, std::vector<ListedCard>());
  EXPECT_EQ(idle.gone, std::vector<std::string>());
  EXPECT_EQ(idle.token, last.token);
}

TEST_P(RealBook, RefusesAStaleConditionAndATakenPlace) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->bookUrl());
  pushAll(book, {create(book, "one", cardOf("one", "One"))});
  const auto href = book.hrefFor("one");
  const auto results =
      pushAll(book, {create(book, "one", cardOf("one", "Another")),
                     {.kind = Push::Kind::Update,
                      .href = href,
                      .etag = "\"stale\"",
                      .text = [] { return cardOf("one", "Another"); }},
                     {.kind = Push::Kind::Remove, .href = href, .etag = "\"stale\"", .text = {}},
                     {.kind = Push::Kind::Remove,
                      .href = book.hrefFor("never"),
                      .etag = "\"stale\"",
                      .text = {}}});
  EXPECT_EQ(results[0].outcome, Pushed::Outcome::Exists);
  EXPECT_EQ(results[1].outcome, Pushed::Outcome::Changed);
  EXPECT_EQ(results[2].outcome, Pushed::Outcome::Changed);
  EXPECT_EQ(results[3].outcome, Pushed::Outcome::Gone);
  const auto fetched = fetchAll(book, book.list({}).cards);
  ASSERT_EQ(fetched.size(), 1U);
  EXPECT_EQ(hasLine(fetched.begin()->second.text, "FN:One"), "FN:One");
}

TEST_P(RealBook, SaysWhichCardItDoesNotTake) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->bookUrl());
  const auto results = pushAll(book, {create(book, "junk", "no card at all\r\n"),
                                      create(book, "good", cardOf("good", "Good"))});
  EXPECT_EQ(results[0].outcome, Pushed::Outcome::Refused)
      << results[0].code << " " << results[0].reason;
  EXPECT_EQ(results[1].outcome, Pushed::Outcome::Done);
  EXPECT_EQ(book.list({}).cards.size(), 1U);
}

TEST_P(RealBook, ListsEverythingWhenTheTokenIsNotKnown) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->bookUrl());
  HttpLimits limits;
  limits.pauses = {HttpLimits::Time(1), HttpLimits::Time(1)};
  HttpClient client(login, {}, limits);
  DavBook book(client, server->bookUrl());
  pushAll(book, {create(book, "one", cardOf("one", "One"))});
  for (const auto* token : {"http://radicale.org/ns/sync/"
                            "0000000000000000000000000000000000000000000000000000000000000000",
                            "0000000000000000000000000000000000000000", "junk"}) {
    const auto listing = book.list(token);
    EXPECT_TRUE(listing.isWhole) << token;
    ASSERT_EQ(listing.cards.size(), 1U) << token;
    EXPECT_EQ(book.pathOf(listing.cards[0].href), book.pathOf(book.hrefFor("one")));
    EXPECT_NE(listing.token, "");
  }
}

TEST_P(RealBook, IsAwayWhereThereIsNone) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->origin() + "/ann/nothing/");
  const auto failureOf = [](const auto& step) {
    try {
      step();
    } catch (const RemoteError& error) {
      return error.kind();
    }
    return RemoteFailure::Usage;
  };
  EXPECT_EQ(failureOf([&] { book.facts(); }), RemoteFailure::Away);
  EXPECT_EQ(failureOf([&] { book.list({}); }), RemoteFailure::Away);
  EXPECT_EQ(failureOf([&] { book.list("some-token"); }), RemoteFailure::Away);
  const std::vector<ListedCard> cards = {
      {.href = "/ann/nothing/a.vcf", .etag = "\"1\"", .bytes = 0}};
  EXPECT_EQ(failureOf([&] { book.fetch(cards, [](const FetchedCard&) { FAIL(); }); }),
            RemoteFailure::Away);
}

TEST_P(RealBook, TellsOfCardsThatAreNotThereAny) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->bookUrl());
  pushAll(book, {create(book, "a", cardOf("a", "A")), create(book, "b#c", cardOf("b", "B"))});
  auto cards = book.list({}).cards;
  ASSERT_EQ(cards.size(), 2U);
  cards.push_back({.href = book.hrefFor("gone"), .etag = "\"1\"", .bytes = 0});
  cards.push_back({.href = "/elsewhere/x.vcf", .etag = "\"1\"", .bytes = 0});
  const auto fetched = fetchAll(book, cards);
  EXPECT_EQ(fetched.at(cards[0].href).state, FetchedCard::State::Read);
  EXPECT_EQ(fetched.at(cards[1].href).state, FetchedCard::State::Read);
  EXPECT_EQ(fetched.at(cards[2].href).state, FetchedCard::State::Gone);
  EXPECT_EQ(fetched.at(cards[3].href).state, FetchedCard::State::Unreadable);
}

TEST_P(RealBook, TellsItsStateWithTheOthersOfItsHome) {
  OX_START_OR_SKIP(server, GetParam());
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->bookUrl());
  const auto home = server->bookUrl().substr(0, server->bookUrl().size() - 12);
  const auto token = book.list({}).token;
  const auto before = client.requests();
  auto states = bookStates(client, home);
  EXPECT_EQ(client.requests() - before, 1U);
  ASSERT_EQ(states.size(), 1U);
  ASSERT_TRUE(states.contains(bookKey(server->bookUrl())));
  EXPECT_TRUE(states[bookKey(server->bookUrl())].isAsListed(token));
  pushAll(book, {create(book, "one", cardOf("one", "One"))});
  states = bookStates(client, home);
  EXPECT_FALSE(states[bookKey(server->bookUrl())].isAsListed(token));
}

INSTANTIATE_TEST_SUITE_P(Each, RealBook,
                         testing::Values(RealServer::Kind::Radicale, RealServer::Kind::Xandikos),
                         [](const auto& each) {
                           return each.param == RealServer::Kind::Radicale ? "Radicale"
                                                                           : "Xandikos";
                         });

TEST(Radicale, WantsTheRightPassword) {
  OX_START_OR_SKIP(server, RealServer::Kind::Radicale);
  auto login = loginTo(*server, server->bookUrl());
  login.user = "bob";
  HttpClient client(login, {});
  try {
    discover(client, login, {}, {});
    FAIL();
  } catch (const RemoteError& error) {
    EXPECT_EQ(error.kind(), RemoteFailure::Login);
  }
}

TEST(Radicale, OffersEachOfSeveralBooks) {
  OX_START_OR_SKIP(server, RealServer::Kind::Radicale);
  const auto team = server->addBook("team");
  const auto login = loginTo(*server, server->origin() + "/ann/");
  HttpClient client(login, {});
  auto offer = discover(client, login, {}, {});
  std::ranges::sort(offer.books, {}, &OfferedBook::url);
  ASSERT_EQ(offer.books.size(), 2U);
  EXPECT_EQ(offer.books[0].url, server->bookUrl());
  EXPECT_EQ(offer.books[1].url, team);
  EXPECT_EQ(offer.books[1].name, "team");
}

TEST(Radicale, GivesManyCardsInBatches) {
  OX_START_OR_SKIP(server, RealServer::Kind::Radicale);
  server->fill("addressbook", 300);
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->bookUrl());
  const auto listing = book.list({});
  ASSERT_EQ(listing.cards.size(), 300U);
  const auto before = client.requests();
  const auto fetched = fetchAll(book, listing.cards);
  EXPECT_EQ(client.requests() - before, 5U);  // twice 20, twice 100, one of 60
  for (std::size_t at = 0; at < 300; ++at) {
    const auto number = std::to_string(at);
    const auto& card = fetched.at("/ann/addressbook/card-" + number + ".vcf");
    ASSERT_EQ(card.state, FetchedCard::State::Read);
    ASSERT_EQ(hasLine(card.text, "FN:Person " + number), "FN:Person " + number);
  }
}

TEST(Radicale, NamesTheUidThatLiesElsewhere) {
  OX_START_OR_SKIP(server, RealServer::Kind::Radicale);
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->bookUrl());
  pushAll(book, {create(book, "one", cardOf("same", "One"))});
  const auto results = pushAll(book, {create(book, "two", cardOf("same", "Two"))});
  EXPECT_EQ(results[0].outcome, Pushed::Outcome::UidElsewhere);
  EXPECT_EQ(results[0].code, 409);
}

TEST(Radicale, LosesOneCardAloneToACharacterThatXmlCannotHold) {
  OX_START_OR_SKIP(server, RealServer::Kind::Radicale);
  server->fill("addressbook", 50);
  server->put("addressbook", "card-17.vcf",
              "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:card-17\r\nFN:Person 17\r\nN:17;;;;\r\n"
              "NOTE:a\x01"
              "b\r\nREV:2024-01-01T00:00:00Z\r\nEND:VCARD\r\n");
  const auto login = loginTo(*server, server->bookUrl());
  HttpClient client(login, {});
  DavBook book(client, server->bookUrl());
  const auto listing = book.list({});
  ASSERT_EQ(listing.cards.size(), 50U);
  const auto fetched = fetchAll(book, listing.cards);
  for (const auto& [href, card] : fetched) {
    EXPECT_EQ(card.state, FetchedCard::State::Read) << href << " " << card.reason;
  }
  EXPECT_EQ(hasLine(fetched.at("/ann/addressbook/card-17.vcf").text,
                    "NOTE:a\x01"
                    "b"),
            "NOTE:a\x01"
            "b");
}
