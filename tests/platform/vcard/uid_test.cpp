#include <gtest/gtest.h>

#include "card_text.hpp"
#include "platform/vcard/writer.hpp"
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

}  // namespace
}  // namespace ox::vcard
