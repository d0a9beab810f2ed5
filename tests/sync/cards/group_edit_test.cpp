#include <gtest/gtest.h>

#include "cards.hpp"

namespace ox::sync {
namespace {

const EditOptions kNow{"20261123T060700Z"};

std::string editedMembers(const std::string& text, std::vector<std::string> members) {
  const auto said = contentOf(text);
  EXPECT_TRUE(said.isGroup);
  auto wanted = said;
  wanted.members = std::move(members);
  return editedCard(text, said, wanted, kNow);
}

TEST(EditedGroup, TouchesTheLinesOfChangedMembersAlone) {
  const auto text = cardText(
      "N:Team\nFN:Team\nUID:g\n"
      "X-ADDRESSBOOKSERVER-KIND:group\n"
      "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:A-1\n"
      "x-addressbookserver-member:bare-2\n"
      "X-ADDRESSBOOKSERVER-MEMBER:mailto:ann@example.org\n"
      "X-ADDRESSBOOKSERVER-MEMBER:URN:UUID:a-1\n"
      "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:gone-3\n"
      "X-ADDRESSBOOKSERVER-MEMBER;X-A=1:urn:uuid:unknown-4\n"
      "REV:20200101T000000Z\n");
  EXPECT_EQ(editedMembers(text, {"A-1", "bare-2", "mailto:ann@example.org", "unknown-4", "new-5"}),
            cardText("N:Team\nFN:Team\nUID:g\n"
                     "X-ADDRESSBOOKSERVER-KIND:group\n"
                     "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:A-1\n"
                     "x-addressbookserver-member:bare-2\n"
                     "X-ADDRESSBOOKSERVER-MEMBER:mailto:ann@example.org\n"
                     "X-ADDRESSBOOKSERVER-MEMBER:URN:UUID:a-1\n"
                     "X-ADDRESSBOOKSERVER-MEMBER;X-A=1:urn:uuid:unknown-4\n"
                     "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:new-5\n"
                     "REV:20261123T060700Z\n"));
}

TEST(EditedGroup, SpellsNewMembersAsTheOthers) {
  EXPECT_EQ(
      editedMembers(cardText("FN:Team\nUID:g\nKIND:group\nMEMBER:a\nN:Team\n", "4.0"), {"a", "b"}),
      cardText("FN:Team\nUID:g\nKIND:group\nMEMBER:a\nMEMBER:b\nN:Team\n"
               "REV:20261123T060700Z\n",
               "4.0"));
  EXPECT_EQ(editedMembers(cardText("FN:Team\nN:Team\nUID:g\nKIND:group\n", "4.0"), {"b"}),
            cardText("FN:Team\nN:Team\nUID:g\nKIND:group\nMEMBER:urn:uuid:b\n"
                     "REV:20261123T060700Z\n",
                     "4.0"));
}

TEST(EditedGroup, ChangesItsName) {
  const auto text = cardText(
      "N:Team;;;;\nFN:Team\nUID:g\nX-ADDRESSBOOKSERVER-KIND:group\n"
      "X-ADDRESSBOOKSERVER-MEMBER:a\nX-FOO:1\n");
  const auto said = contentOf(text);
  auto wanted = said;
  setText(wanted, property_id::kGroupName, "Crew");
  const auto edited = editedCard(text, said, wanted, kNow);
  EXPECT_EQ(edited, cardText("N:Crew;;;;\nFN:Crew\nUID:g\nX-ADDRESSBOOKSERVER-KIND:group\n"
                             "X-ADDRESSBOOKSERVER-MEMBER:a\nX-FOO:1\nREV:20261123T060700Z\n"));
}

TEST(EditedGroup, IsMadeAnewWithItsMembers) {
  CardContent content;
  content.isGroup = true;
  setText(content, property_id::kGroupName, "Crew");
  content.members = {"11111111-2222-3333-4444-555555555555"};
  EXPECT_EQ(newCard(content, "g", vcard::CardVersion::V30, kNow),
            cardText("N:Crew;;;;\nFN:Crew\nX-ADDRESSBOOKSERVER-KIND:group\nUID:g\n"
                     "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:11111111-2222-3333-4444-555555555555\n"
                     "REV:20261123T060700Z\n"));
}

}  // namespace
}  // namespace ox::sync
