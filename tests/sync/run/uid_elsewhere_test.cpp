// A server that lets a UID stand in one card only, of whichever of its books.
#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "ox/sync/cards/card_content.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::SyncCounts;
using Lines = std::vector<std::string>;

class UidElsewhere : public testing::Test {
 protected:
  UidElsewhere() {
    elsewhere.put("bob.vcf", cardText("bob", "Bob", "Berg"));
    book.runClean();
    elsewhere.log.clear();
  }

  static std::string uidIn(const std::string& text) {
    const auto card = sync::readCard(text);
    const auto* read = std::get_if<sync::ReadCard>(&card);
    return read != nullptr ? std::string(sync::comparableUid(read->uid)) : std::string();
  }
  // Answers so where a card is created with that UID.
  void refuse(const std::string& uid, sync::Pushed::Outcome outcome, int code) {
    elsewhere.refuse = [=](const sync::Push& push) {
      std::optional<sync::Pushed> refused;
      if (push.kind == sync::Push::Kind::Create && uidIn(push.text()) == uid) {
        refused.emplace();
        refused->outcome = outcome;
        refused->href = push.href;
        refused->code = code;
        refused->reason = "no";
      }
      return refused;
    };
  }
  RecordKey addWithUid(const std::string& first, const std::string& uid) {
    const auto key = book.addPerson(first);
    book.set(key, property_id::kCardUid, uid);
    return key;
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_F(UidElsewhere, GivesANewCardANewOneWhereNoCardOfThisBookHasIt) {
  refuse("ann", sync::Pushed::Outcome::UidElsewhere, 409);
  const auto ann = addWithUid("Ann", "ann");
  const auto report = book.runClean();
  EXPECT_EQ(report.up, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(report.notes,
            Lines{"Ann: another card of that server has its UID, so it was sent under a new one"});
  ASSERT_EQ(elsewhere.cards().size(), 2U);
  const auto uid = book.text(ann, property_id::kCardUid);
  EXPECT_NE(uid, "ann");
  const auto wanted = sync::comparableUid(uid);
  bool isThere = false;
  for (const auto& [href, card] : elsewhere.cards())
    isThere = isThere || uidIn(card.text) == wanted;
  EXPECT_TRUE(isThere);
  elsewhere.log.clear();
  EXPECT_EQ(book.runClean().up, SyncCounts());
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

TEST_F(UidElsewhere, IsLookedForAfterAPlain400Too) {
  refuse("ann", sync::Pushed::Outcome::Refused, 400);
  addWithUid("Ann", "ann");
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 2U);
}

TEST_F(UidElsewhere, IsKeptWhereTheCardIsRefusedWithAnotherOneToo) {
  elsewhere.refuse = [](const sync::Push& push) {
    sync::Pushed refused;
    refused.outcome = sync::Pushed::Outcome::Refused;
    refused.href = push.href;
    refused.code = 400;
    refused.reason = "bad card";
    return std::optional(refused);
  };
  const auto ann = addWithUid("Ann", "ann");
  const auto report = book.run();
  ASSERT_EQ(report.refused.size(), 1U);
  EXPECT_EQ(report.refused[0].reason, "bad card");
  EXPECT_EQ(book.text(ann, property_id::kCardUid), "ann");
  elsewhere.log.clear();
  book.run();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

// Another client has put it there between the listing and the sending.
TEST_F(UidElsewhere, AdoptsTheCardOfThisBookThatHasIt) {
  refuse("ann", sync::Pushed::Outcome::UidElsewhere, 409);
  const auto ann = addWithUid("Ann", "ann");
  book.addPhone(ann, "1");
  elsewhere.beforePush = [&](const sync::Push&) {
    if (!elsewhere.cards().contains("other.vcf")) {
      elsewhere.put("other.vcf", cardText("ann", "Ann", "", {"TEL;TYPE=CELL:2"}));
    }
  };
  book.runClean();
  EXPECT_EQ(book.persons().size(), 2U);
  EXPECT_EQ(book.phones(ann).size(), 2U);
  ASSERT_EQ(elsewhere.cards().size(), 2U);
  EXPECT_NE(elsewhere.text("other.vcf").find("TEL;TYPE=CELL:1"), std::string::npos)
      << elsewhere.text("other.vcf");
  EXPECT_EQ(book.text(ann, property_id::kCardUid), "ann");
  elsewhere.beforePush = nullptr;
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

}  // namespace
}  // namespace ox::test
