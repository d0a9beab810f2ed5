#include <gtest/gtest.h>

#include "card_text.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/write/writer.hpp"
#include "written_card.hpp"

using namespace std::string_literals;

namespace ox::vcard {
namespace {

constexpr std::array kVersions = {CardVersion::V30, CardVersion::V40};

TEST(CardUid, LosesControlCharactersWhenItIsRead) {
  expectRows({
      {"2.1", "TITLE:x\nUID;ENCODING=QUOTED-PRINTABLE:u1=0D=0AEND:VCARD=0D=0ABEGIN:VCARD\n",
       "JobTitle=x\nUID=u1END:VCARDBEGIN:VCARD\nrepair 4: UID with control characters\n"},
  });
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nVERSION:2.1\nX-ADDRESSBOOKSERVER-KIND:group\nFN:G\n"
                      "X-ADDRESSBOOKSERVER-MEMBER;ENCODING=QUOTED-PRINTABLE:a=0AX:b\nEND:VCARD\n"),
            "group\nGroupName=G\nmember=aX:b\nrepair 5: UID with control characters\n");
}

TEST(CardUid, HasNoBlanksAtItsEndsWhereNoUriHoldsThem) {
  expectRows({
      {"3.0", "TITLE:x\nUID:\x01\tu 1 \x02\n",
       "JobTitle=x\nUID=u 1\nrepair 4: UID with control characters\n"},
      {"4.0", "TITLE:x\nUID:x-ox-uid:%20u%20\n", "JobTitle=x\nUID= u \n"},
  });
  for (const auto* uid : {" u ", "\n u\x01 "}) {
    PropertyBag bag;
    bag.set(property_id::kCardUid, Object(uid));
    EXPECT_EQ(linesOf(bag, {}), "N:;;;;\nFN;X-DERIVED=TRUE:?\nUID:u\n");
    std::string group;
    appendGroup(bag, {uid}, {}, group);
    EXPECT_EQ(std::get<Card>(readAll(group).at(0)).members, std::vector<std::string>{"u"});
  }
  PropertyBag blank;
  blank.set(property_id::kCardUid, Object("  "));
  EXPECT_EQ(linesOf(blank, {}), "N:;;;;\nFN;X-DERIVED=TRUE:?\n");
}

TEST(CardUid, StandsAsItCameAndMembersNameItByAUri) {
  const std::string uuid = "4fbe8971-0bc3-424c-9c26-36c3e1eff6b1";
  struct Row {
    std::string uid;
    std::string line;    // of UID in 4.0
    std::string member;  // of MEMBER in 4.0
  };
  const std::vector<Row> rows = {
      {uuid, "UID;VALUE=text:" + uuid, "urn:uuid:" + uuid},
      {"urn:uuid:" + uuid, "UID:urn:uuid:" + uuid, "urn:uuid:" + uuid},
      {"grp1", "UID;VALUE=text:grp1", "urn:uuid:grp1"},
      {"a,b/1", "UID;VALUE=text:a\\,b/1", "urn:uuid:a,b/1"},
      {"a%2f", "UID;VALUE=text:a%2f", "x-ox-uid:a%252f"},
      {"a b:c\\;é", "UID;VALUE=text:a b:c\\\\\\;é", "x-ox-uid:a%20b%3Ac%5C%3B%C3%A9"},
      {"mailto:a@b", "UID:mailto:a@b", "mailto:a@b"},
      {"x-ox-uid:a%20b", "UID;VALUE=text:x-ox-uid:a%20b", "x-ox-uid:x-ox-uid%3Aa%2520b"},
  };
  for (const auto& row : rows) {
    PropertyBag bag;
    bag.set(property_id::kCardUid, Object(row.uid));
    EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), "FN;DERIVED=TRUE:?\n" + row.line + "\n");
    std::string group;
    appendGroup(bag, {row.uid}, {.version = CardVersion::V40}, group);
    EXPECT_NE(group.find("\r\nMEMBER:" + row.member + "\r\n"), group.npos) << group;
    for (const auto version : kVersions) {
      const auto card = writeCard(bag, nullptr, {.version = version});
      const auto person = std::get<Card>(readAll(card).at(0));
      EXPECT_EQ(*person.properties.text(property_id::kCardUid), row.uid);
      group.clear();
      appendGroup(bag, {row.uid}, {.version = version}, group);
      const auto read = std::get<Card>(readAll(group).at(0));
      EXPECT_EQ(*read.properties.text(property_id::kCardUid), row.uid);
      EXPECT_EQ(read.members.at(0), uidKey(row.uid));
    }
  }
}

TEST(CardUid, OfFormerCardsOfOursIsReadAsWhatItMeans) {
  const std::string uuid = "4fbe8971-0bc3-424c-9c26-36c3e1eff6b1";
  expectRows({
      {"4.0", "TITLE:x\nUID;X-OX-BARE=TRUE:urn:uuid:" + uuid + "\n",
       "JobTitle=x\nUID=" + uuid + "\n"},
      {"4.0", "TITLE:x\nUID:x-ox-uid:a%20b\n", "JobTitle=x\nUID=a b\n"},
      {"4.0", "TITLE:x\nUID;VALUE=text:a\\,b\n", "JobTitle=x\nUID=a,b\n"},
      {"4.0", "TITLE:x\nUID:a\\,b\n", "JobTitle=x\nUID=a\\,b\n"},
      {"3.0", "TITLE:x\nUID:x-ox-uid:a%20b\n", "JobTitle=x\nUID=x-ox-uid:a%20b\n"},
  });
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:G\nMEMBER:x-ox-uid:a%20b\n"
                      "MEMBER:urn:uuid:grp1\nMEMBER:mailto:a@b\nEND:VCARD\n"),
            "group\nGroupName=G\nmember=a b\nmember=grp1\nmember=mailto:a@b\n");
}

TEST(CardWriter, NoTextStartsALineOfItsOwn) {
  const std::string breaks = "a\r\nEND:VCARD\r\nBEGIN:VCARD\nFN:Forged\rX-B:c\x0B\0d"s;
  PropertyBag bag;
  for (const auto id : {property_id::kFirst, property_id::kOrganization, property_id::kNote,
                        property_id::kCardUid, property_id::kGroupName}) {
    bag.set(id, Object(breaks));
  }
  for (PropertyId id = property_id::kPhone; id <= property_id::kRelatedNames; ++id) {
    bag.set(id, std::make_shared<const MultiValue>(MultiValue{{{1, Text(breaks), breaks}}, 0}));
  }
  bag.set(property_id::kUnmodelledLines,
          Object(Array{"X-A:b\rEND:VCARD", "X-A;B=c\rEND:VCARD:d", "FN:x\rEND:VCARD",
                       ";16#1;X-A=b\rEND:VCARD", "A\rB:c", "AGENT\r:\nBEGIN:VCARD\nEND:VCARD"}));
  for (const auto version : kVersions) {
    const auto text = writeCard(bag, nullptr, {.version = version, .uid = breaks});
    EXPECT_EQ(readAll(text).size(), 1U) << text;
    EXPECT_EQ(text.find("\r\nEND:VCARD\r\n"), text.size() - 13) << text;
    std::string group;
    appendGroup(bag, {breaks, "b"}, {.version = version, .uid = breaks}, group);
    EXPECT_EQ(readAll(group).size(), 1U) << group;
    EXPECT_EQ(group.find("\r\nEND:VCARD\r\n"), group.size() - 13) << group;
  }
}

// Cards may say anything in the lines that are ours.
TEST(CardWriter, DetailsOfAnotherMakeNoMalformedLine) {
  const auto bag = propertiesOf("3.0",
                                "N:a\nTEL:1\nX-OX-LINE:;16#1.x y:z\nX-OX-LINE:;16#1.\n"
                                "X-OX-LINE:;16#1;PREF=x\nX-OX-LINE:;0#0:image/x;y\n"
                                "X-OX-LINE:;3#0:a;;;;;\nX-OX-LINE:;97#0:no digest\n");
  for (const auto version : kVersions) {
    const auto lines = linesOf(bag, {.version = version}, makeData("abc"));
    EXPECT_TRUE(lines.starts_with("N:a;;;;\nFN:a\nTEL")) << lines;
    EXPECT_EQ(lines.find("x y"), lines.npos) << lines;
    EXPECT_EQ(lines.find("image/x"), lines.npos) << lines;
  }
}

}  // namespace
}  // namespace ox::vcard
