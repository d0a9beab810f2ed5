#include <algorithm>
#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::BookReport;

struct Ends {
  std::vector<std::string> here;
  std::vector<std::string> there;

  bool operator==(const Ends&) const = default;
};

// What both sides say in the end, whatever REV says and in whatever order.
Ends endsOf(const SyncedBook& book, const BookElsewhere& elsewhere) {
  Ends ends;
  ends.here = book.lines();
  std::ranges::sort(ends.here);
  for (const auto& [href, card] : elsewhere.cards()) {
    const auto& text = card.text;
    std::string lines;
    for (std::size_t at = 0; at < text.size();) {
      const auto end = text.find("\r\n", at) + 2;
      const auto line = text.substr(at, end - at);
      const bool isOfRun =
          line.starts_with("REV:") || line.starts_with("UID:") || line.starts_with("PRODID:");
      if (!isOfRun) lines += line;
      at = end;
    }
    ends.there.push_back(std::move(lines));
  }
  std::ranges::sort(ends.there);
  return ends;
}

// Edits of every sort on both sides, not yet in step.
void disturb(SyncedBook& book, BookElsewhere& elsewhere) {
  for (const auto* name : {"a", "b", "c", "d", "e", "f"}) {
    elsewhere.put(std::string(name) + ".vcf", cardText(name, name, "X", {"TEL;TYPE=CELL:1"}));
  }
  book.runClean();
  const auto persons = book.persons();
  book.set(persons[0], property_id::kNote, "ours");
  elsewhere.put("b.vcf", cardText("b", "bee", "X"));
  book.set(persons[2], property_id::kNote, "ours too");
  elsewhere.put("c.vcf", cardText("c", "c", "X", {"TEL;TYPE=CELL:1", "TEL;TYPE=CELL:2"}));
  book.remove(persons[3]);
  elsewhere.erase("e.vcf");
  book.addPerson("new", "here", {"7"});
  book.addPerson("newer", "here", {"8"});
  elsewhere.put("g.vcf", cardText("g", "new", "there"));
  elsewhere.requests = 0;
}

Ends undisturbedEnds(std::size_t& requests) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere, "undisturbed");
  disturb(book, elsewhere);
  book.runClean();
  requests = elsewhere.requests;
  return endsOf(book, elsewhere);
}

TEST(BrokenConnection, AtAnyRequestLosesNothingAndDoublesNothing) {
  std::size_t requests = 0;
  const auto expected = undisturbedEnds(requests);
  ASSERT_EQ(expected.here.size(), 7U);
  ASSERT_EQ(expected.there.size(), 7U);
  ASSERT_GE(requests, 7U);
  for (std::size_t request = 0; request < requests; ++request) {
    for (const bool isDone : {false, true}) {
      SCOPED_TRACE(std::to_string(request) + (isDone ? " after" : " before"));
      BookElsewhere elsewhere;
      SyncedBook book(elsewhere, "broken " + std::to_string(request) + (isDone ? "a" : "b"));
      disturb(book, elsewhere);
      (isDone ? elsewhere.breaksAfter : elsewhere.breaksBefore) = request;
      const auto broken = book.run();
      elsewhere.breaksAfter.reset();
      elsewhere.breaksBefore.reset();
      EXPECT_NE(broken.state, BookReport::State::Guarded);
      const auto clean = book.run();
      EXPECT_EQ(clean.state, BookReport::State::InStep);
      EXPECT_EQ(clean.conflicts, 0U);
      EXPECT_EQ(endsOf(book, elsewhere), expected);
      elsewhere.log.clear();
      book.run();
      book.run();
      EXPECT_EQ(elsewhere.log.back(), "LIST");
    }
  }
}

// Bob was sent, and nobody knows here that he has arrived.
class LostAnswer : public testing::Test {
 protected:
  LostAnswer() {
    elsewhere.put("a.vcf", cardText("a", "A", "X"));
    book.runClean();
    bob = book.addPerson("Bob", "Ray", {"1"});
    elsewhere.requests = 0;
    elsewhere.breaksAfter = 1;
    EXPECT_EQ(book.run().kind, sync::RemoteFailure::Unreachable);
    EXPECT_EQ(elsewhere.cards().size(), 2U);
    elsewhere.breaksAfter.reset();
  }

  std::string bobThere() const {
    const auto& first = elsewhere.cards().begin()->first;
    return first == "a.vcf" ? elsewhere.cards().rbegin()->first : first;
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
  RecordKey bob;
};

TEST_F(LostAnswer, ToANewCardIsFoundAgain) {
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 2U);
  EXPECT_EQ(book.persons().size(), 2U);
}

TEST_F(LostAnswer, ToANewCardIsFoundAgainWhereTheOtherSideChoseItsPlace) {
  const auto text = elsewhere.text(bobThere());
  elsewhere.loses(bobThere());
  elsewhere.put("chosen.vcf", text);
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 2U);
  EXPECT_EQ(book.persons().size(), 2U);
}

TEST_F(LostAnswer, ToANewCardIsFoundAgainWhereTheOtherSideChoseItsUid) {
  auto text = elsewhere.text(bobThere());
  const auto uid = text.find("UID:") + 4;
  text.replace(uid, text.find("\r\n", uid) - uid, "chosen");
  elsewhere.put(bobThere(), text);
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 2U);
  EXPECT_EQ(book.persons().size(), 2U);
}

TEST_F(LostAnswer, ToANewCardThatIsDeletedHereSinceDeletesItThere) {
  book.remove(bob);
  book.runClean();
  EXPECT_EQ(elsewhere.onlyHref(), "a.vcf");
  EXPECT_EQ(book.persons().size(), 1U);
}

TEST_F(LostAnswer, ToANewCardBringsNothingBackThatIsEditedHereSince) {
  book.edit(bob, [](PropertyBag& values) { values.set(property_id::kPhone, PropertyValue()); });
  book.addPhone(bob, "22");
  book.runClean();
  EXPECT_EQ(book.phones(bob), std::vector<std::string>{"22"});
  elsewhere.erase("a.vcf");
  const auto& text = elsewhere.onlyText();
  EXPECT_EQ(text.find(":1\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find(":22\r\n"), std::string::npos) << text;
}

TEST(LostRequest, OfANewCardWhosePersonIsGoneTakesNothingFromTheNextNewCard) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  elsewhere.put("a.vcf", cardText("a", "A", "X"));
  book.runClean();
  const auto bob = book.addPerson("Bob", "Ray");
  elsewhere.requests = 0;
  elsewhere.breaksBefore = 1;
  book.run();
  elsewhere.breaksBefore.reset();
  book.remove(bob);
  book.addPerson("Cy", "Doe");
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 2U);
  EXPECT_EQ(syncSource().countAgreedSyncCards(book.container()), 2U);
}

TEST(NewCard, WhoseFileNameIsTakenGetsAnother) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  const auto bob = book.addPerson("Bob", "Ray");
  book.set(bob, property_id::kCardUid, "bob");
  book.runClean();
  const auto cy = book.addPerson("Cy", "Doe");
  book.set(cy, property_id::kCardUid, "cy");
  // Another client is faster, with a person of its own.
  elsewhere.beforePush = [&](const sync::Push& push) {
    if (push.href == "cy.vcf" && !elsewhere.cards().contains("cy.vcf")) {
      elsewhere.put("cy.vcf", cardText("other", "Other", "One"));
    }
  };
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 3U);
  auto lines = book.lines();
  std::ranges::sort(lines);
  EXPECT_EQ(lines, (std::vector<std::string>{"Bob Ray:", "Cy Doe:", "Other One:"}));
  EXPECT_NE(elsewhere.text("cy.vcf").find("Other"), std::string::npos);
}

}  // namespace
}  // namespace ox::test
