#include <gtest/gtest.h>

#include "ox/records/property_keys.hpp"
#include "written_card.hpp"

// What is written beside the values of a record that was edited since its card was read.

namespace ox::vcard {
namespace {

TEST(CardThrough, AnAccountThatChangedIsWrittenAnew) {
  auto bag = propertiesOf("4.0", "FN:?\nIMPP:xmpp:bob@x?message\nIMPP:xmpp:ann@x?message\n");
  auto values = *std::get<MultiValuePtr>(*bag.find(property_id::kInstantMessage));
  Dictionary account = *values.entries[1].value.dictionary();
  account.set(kABInstantMessageUsernameKey, "cy@x?");
  values.entries[1].value = account;
  bag.set(property_id::kInstantMessage, std::make_shared<const MultiValue>(values));
  const auto lines = linesOf(bag, {.version = CardVersion::V40});
  EXPECT_NE(lines.find("IMPP;X-SERVICE-TYPE=Jabber:xmpp:bob@x?message\n"
                       "IMPP;X-SERVICE-TYPE=Jabber:xmpp:cy@x%3F\n"),
            lines.npos)
      << lines;
}

TEST(CardThrough, ListsThatChangedAreWrittenAsTheRecordHoldsThem) {
  auto bag = propertiesOf("3.0",
                          "N:Ray;Al;Q.,R.\nNICKNAME:Jim,Jimmie\nORG:X;North\\; South\n"
                          "ADR:;;a,b;Town\n");
  bag.set(property_id::kFirst, Object("Bo"));
  bag.set(property_id::kNickname, Object("Jim"));
  bag.set(property_id::kDepartment, Object("North"));
  auto values = *std::get<MultiValuePtr>(*bag.find(property_id::kAddress));
  Dictionary address = *values.entries[0].value.dictionary();
  address.set(kABAddressCityKey, "City");
  values.entries[0].value = address;
  bag.set(property_id::kAddress, std::make_shared<const MultiValue>(values));
  EXPECT_EQ(linesOf(bag, {}),
            "N:Ray;Bo;Q. R.;;\nFN:Bo Q. R. Ray\nNICKNAME:Jim\nORG:X;North\n"
            "ADR:;;a\\,b;City;;;\n");
}

TEST(CardThrough, DetailsBelongToTheirEntriesWhereverTheirNumbersStarted) {
  auto bag = propertiesOf("3.0",
                          "N:a;;;;\nFN:a\nTEL;TYPE=HOME:1\nTEL;X-A=b:2\n"
                          "item1.TEL;TYPE=WORK:4\nitem1.X-ABLabel:Boat\n");
  auto values = *std::get<MultiValuePtr>(*bag.find(property_id::kPhone));
  values.entries.erase(values.entries.begin());
  values.entries.insert(values.entries.begin() + 1, {4, std::nullopt, " 7"});
  values.primary = 3;
  bag.set(property_id::kPhone, std::make_shared<const MultiValue>(values));
  const auto lines = linesOf(bag, {});
  EXPECT_TRUE(
      lines.starts_with("N:a;;;;\nFN:a\nTEL;X-A=b:2\nTEL: 7\n"
                        "item1.TEL;TYPE=pref;TYPE=WORK:4\nitem1.X-ABLabel:Boat\n"
                        "X-OX-PROPERTY:"))
      << lines;
  const auto again = propertiesOf("3.0", lines);
  EXPECT_EQ(linesOf(again, {}), lines);
  const auto& phones = *std::get<MultiValuePtr>(*again.find(property_id::kPhone));
  ASSERT_EQ(phones.entries.size(), 3U);
  EXPECT_EQ(*phones.entries[1].value.text(), " 7");
  EXPECT_EQ(phones.primary, 3U);
}

TEST(CardThrough, SecondLinesDoNotTakeThePlaceOfAClearedValue) {
  const std::string names = "N:a;;;;\nFN:a\n";
  const std::string seconds =
      "TITLE:b\nORG:d\nNICKNAME:f\nNOTE;LANGUAGE=de:h\nPHOTO;ENCODING=b:AQI=\n"
      "PHOTO;VALUE=uri:http://x/p\n";
  auto bag = propertiesOf("3.0", names +
                                     "TITLE:a\nORG:c\nNICKNAME:e\nNOTE;LANGUAGE=en:g\n"
                                     "PHOTO;ENCODING=b:/9j/\n" +
                                     seconds);
  EXPECT_TRUE(linesOf(bag, {}, makeData("\xFF\xD8\xFF")).ends_with(seconds));
  PropertyBag cleared;
  for (const auto& [id, value] : bag.entries()) {
    if (id == property_id::kLast || id == property_id::kUnmodelledLines) cleared.set(id, value);
  }
  const auto lines = linesOf(cleared, {});
  EXPECT_EQ(lines, names +
                       "X-OX-LINE:TITLE%3Ab\nX-OX-LINE:ORG%3Ad\nX-OX-LINE:NICKNAME%3Af\n"
                       "X-OX-LINE:NOTE%3BLANGUAGE%3Dde%3Ah\n"
                       "X-OX-LINE:PHOTO%3BENCODING%3Db%3AAQI%3D\nPHOTO;VALUE=uri:http://x/p\n");
  EXPECT_EQ(linesOf(propertiesOf("3.0", lines), {}), lines);
}

TEST(CardThrough, PreservedWordsGiveNoLabelToAnEntryWithout) {
  const std::string names = "N:a;;;;\nFN:a\n";
  auto bag = propertiesOf(
      "3.0", names + "item1.TEL;TYPE=WORK;X-A=b:1\nitem1.X-ABLabel:Boat\nTEL;TYPE=MODEM:2\n");
  auto values = *std::get<MultiValuePtr>(*bag.find(property_id::kPhone));
  values.entries[0].label.reset();
  bag.set(property_id::kPhone, std::make_shared<const MultiValue>(values));
  const auto lines = linesOf(bag, {});
  EXPECT_EQ(lines,
            names + "TEL:1\nTEL;TYPE=MODEM:2\nX-OX-LINE:%3B16%231%3BTYPE%3DWORK%3BX-A%3Db\n");
  EXPECT_EQ(linesOf(propertiesOf("3.0", lines), {}), lines);
}

}  // namespace
}  // namespace ox::vcard
