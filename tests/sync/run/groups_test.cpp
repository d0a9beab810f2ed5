#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::SyncCounts;
using Keys = std::vector<RecordKey>;
using Lines = std::vector<std::string>;

constexpr const char* kAnn = "11111111-1111-4111-8111-111111111111";
constexpr const char* kBob = "22222222-2222-4222-8222-222222222222";
constexpr const char* kCy = "33333333-3333-4333-8333-333333333333";
constexpr const char* kFriends = "44444444-4444-4444-8444-444444444444";
constexpr const char* kInner = "55555555-5555-4555-8555-555555555555";

// Ann and Bob are there; Friends holds Ann and somebody whom nobody knows.
class GroupOfTwo : public testing::Test {
 protected:
  GroupOfTwo() {
    elsewhere.put("friends.vcf", groupText(kFriends, "Friends", {kAnn, kCy}));
    elsewhere.put("ann.vcf", cardText(kAnn, "Ann", "Lee"));
    elsewhere.put("bob.vcf", cardText(kBob, "Bob", "Ray"));
    book.runClean();
    elsewhere.log.clear();
  }

  RecordKey person(const std::string& first) const {
    for (const auto& key : book.persons()) {
      if (book.text(key, property_id::kFirst) == first) return key;
    }
    return {};
  }
  RecordKey friends() const { return book.groups().at(0); }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_F(GroupOfTwo, HoldsTheMemberWhomTheStoreKnows) {
  EXPECT_EQ(book.text(friends(), property_id::kGroupName), "Friends");
  EXPECT_EQ(book.members(friends()), Keys{person("Ann")});
}

TEST_F(GroupOfTwo, WritesNothingWhenRunAgain) {
  const auto before = containerSource().moment();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(containerSource().moment(), before);
}

TEST_F(GroupOfTwo, KeepsTheUnknownMemberWhenAnotherComes) {
  book.link(friends(), person("Bob"));
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 1, 0}));
  const auto& text = elsewhere.text("friends.vcf");
  EXPECT_NE(text.find(std::string("MEMBER:urn:uuid:") + kAnn + "\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find(std::string("MEMBER:urn:uuid:") + kCy + "\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find(std::string("MEMBER:urn:uuid:") + kBob + "\r\n"), std::string::npos) << text;
}

TEST_F(GroupOfTwo, LosesAMemberOnEitherSide) {
  book.unlink(friends(), person("Ann"));
  book.runClean();
  EXPECT_EQ(elsewhere.text("friends.vcf").find(kAnn), std::string::npos);
  EXPECT_NE(elsewhere.text("friends.vcf").find(kCy), std::string::npos);
  elsewhere.put("friends.vcf", groupText(kFriends, "Friends", {kBob}));
  EXPECT_EQ(book.runClean().down, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(book.members(friends()), Keys{person("Bob")});
}

TEST_F(GroupOfTwo, BringsTogetherMembersOfBothSides) {
  book.link(friends(), person("Bob"));
  elsewhere.put("dan.vcf", cardText("dan", "Dan", "Moe"));
  elsewhere.put("friends.vcf", groupText(kFriends, "Friends", {kAnn, kCy, "dan"}));
  book.runClean();
  EXPECT_EQ(book.members(friends()).size(), 3U);
  const auto& text = elsewhere.text("friends.vcf");
  for (const auto* uid : {kAnn, kBob, kCy, "dan"}) EXPECT_NE(text.find(uid), std::string::npos);
}

TEST_F(GroupOfTwo, GetsItsMemberWhenTheCardComes) {
  elsewhere.put("cy.vcf", cardText(kCy, "Cy", "Doe"));
  book.runClean();
  EXPECT_EQ(book.members(friends()), (Keys{person("Ann"), person("Cy")}));
  elsewhere.log.clear();
  const auto before = containerSource().moment();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(containerSource().moment(), before);
}

TEST_F(GroupOfTwo, IsSentAfterItsNewMembers) {
  const auto dan = book.addPerson("Dan");
  const auto family = book.addGroup("Family", {dan, person("Ann")});
  EXPECT_EQ(book.runClean().up, (SyncCounts{2, 0, 0}));
  const auto uid = family.text().substr(0, 36);
  const auto& text = elsewhere.text(uid + ".vcf");
  EXPECT_NE(text.find("X-ADDRESSBOOKSERVER-KIND:group\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("MEMBER:urn:uuid:" + dan.text().substr(0, 36)), std::string::npos) << text;
  EXPECT_NE(text.find(std::string("MEMBER:urn:uuid:") + kAnn), std::string::npos) << text;
  EXPECT_EQ(elsewhere.log.at(2), "CREATE " + uid + ".vcf");
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

TEST(NewGroup, IsWrittenAsTheOthersOfItsBook) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  elsewhere.put(
      "g.vcf",
      "BEGIN:VCARD\r\nVERSION:4.0\r\nUID:urn:uuid:44444444-4444-4444-8444-444444444444\r\n"
      "FN:Old\r\nKIND:group\r\nEND:VCARD\r\n");
  book.runClean();
  const auto group = book.addGroup("New");
  book.runClean();
  const auto& text = elsewhere.text(group.text().substr(0, 36) + ".vcf");
  EXPECT_NE(text.find("VERSION:4.0\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("\r\nKIND:group\r\n"), std::string::npos) << text;
}

TEST_F(GroupOfTwo, LiesInAnotherGroup) {
  elsewhere.put("inner.vcf", groupText(kInner, "Inner", {kBob}));
  elsewhere.put("friends.vcf", groupText(kFriends, "Friends", {kAnn, kInner}));
  book.runClean();
  ASSERT_EQ(book.groups().size(), 2U);
  EXPECT_EQ(*containerSource().committedChildren(friends(), RecordKind::Group),
            Keys{book.groups()[1]});
}

TEST_F(GroupOfTwo, ThatLiesInItselfKeepsWhatItsCardSays) {
  elsewhere.put("inner.vcf", groupText(kInner, "Inner", {kFriends}));
  elsewhere.put("friends.vcf", groupText(kFriends, "Friends", {kAnn, kInner}));
  book.run();
  book.run();
  elsewhere.log.clear();
  book.run();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_NE(elsewhere.text("inner.vcf").find(kFriends), std::string::npos);
  EXPECT_NE(elsewhere.text("friends.vcf").find(kInner), std::string::npos);
}

TEST_F(GroupOfTwo, GoesOnBothSides) {
  book.remove(friends());
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 0, 1}));
  EXPECT_FALSE(elsewhere.cards().contains("friends.vcf"));
  elsewhere.put("friends.vcf", groupText(kFriends, "Friends", {kAnn}));
  book.runClean();
  EXPECT_EQ(book.groups().size(), 1U);
  elsewhere.erase("friends.vcf");
  EXPECT_EQ(book.runClean().down, (SyncCounts{0, 0, 1}));
  EXPECT_TRUE(book.groups().empty());
  EXPECT_EQ(book.persons().size(), 2U);
}

TEST_F(GroupOfTwo, IsNotToldOfAPersonWhoWasDeletedHere) {
  book.remove(person("Ann"));
  book.runClean();
  EXPECT_FALSE(elsewhere.cards().contains("ann.vcf"));
  EXPECT_EQ(elsewhere.text("friends.vcf").find(kAnn), std::string::npos);
}

}  // namespace
}  // namespace ox::test
