#include "ox/formats/table/table_writer.hpp"

#include <gtest/gtest.h>

#include "ox/formats/table/table_source.hpp"
#include "tests/formats/card_lines.hpp"
#include "tests/formats/person_text.hpp"

namespace ox::formats_tests {
namespace {

constexpr std::string_view kFront =
    "Full Name,Prefix,First Name,Middle Name,Last Name,Suffix,Phonetic First Name,"
    "Phonetic Middle Name,Phonetic Last Name,Nickname,Maiden Name,Organization,Department,"
    "Job Title,Birthday,";

std::string tableOf(const std::vector<std::string>& cards) {
  formats::TableWriter writer;
  for (const auto& card : cards) writer.count(formats::fieldsOf(formats::WrittenCard(card)));
  auto table = writer.header();
  for (const auto& card : cards) table += writer.row(formats::fieldsOf(formats::WrittenCard(card)));
  return table;
}

TEST(TableWriter, HasColumnsForWhoHasTheMost) {
  EXPECT_EQ(tableOf({}), std::string(kFront) + "Tags,Note,UID\r\n");
  EXPECT_EQ(
      tableOf({cardOf({"N:Lee;Ann;;Dr.;", "FN:Dr. Ann Lee", "UID:u1", "EMAIL;PREF=1:a@x.org",
                       "EMAIL;TYPE=home;TYPE=x-odd:b@x.org", "BDAY:--0517", "CATEGORIES:one,two"}),
               cardOf({"N:;Bob;;;", "FN:Bob", "UID:u2", "item1.TEL:=1+1", "item1.X-ABLabel:Boat",
                       "NOTE:a\\, \\\"b\\\"\\nc ", "CATEGORIES:a;b"})}),
      std::string(kFront) +
          "Email 1 - Label,Email 1 - Value,Email 2 - Label,Email 2 - Value,"
          "Phone 1 - Label,Phone 1 - Value,Tags,Note,UID\r\n"
          "Dr. Ann Lee,Dr.,Ann,,Lee,,,,,,,,,,--05-17,*,a@x.org,Home,b@x.org,,,one ::: two,,u1\r\n"
          "Bob,,Bob,,,,,,,,,,,,,,,,,Boat,=1+1,\"a;b ::: \",\"a, \"\"b\"\"\nc \",u2\r\n");
}

TEST(TableWriter, IsReadBackAsItWas) {
  const std::vector<std::string> cards = {
      cardOf({"N:Lee;Ann;Mary;Dr.;MD",
              "FN:Ann the Great",
              "NICKNAME:Annie",
              "X-MAIDENNAME:Doe",
              "X-PHONETIC-FIRST-NAME:Anne",
              "X-PHONETIC-MIDDLE-NAME:Mari",
              "X-PHONETIC-LAST-NAME:Li",
              "ORG:ACME\\, Inc.;Sales;East",
              "TITLE:Boss",
              "BDAY:19900517",
              "TEL;TYPE=cell:+1 555",
              "TEL;TYPE=work;TYPE=fax;PREF=1:+1 556",
              "item1.TEL:+1 557",
              "item1.X-ABLabel:_$!<AppleWatch>!$_",
              "EMAIL;TYPE=home:a@x.org",
              "URL;TYPE=work:http://x.org/a,b",
              "IMPP;TYPE=home;X-SERVICE-TYPE=Jabber:xmpp:a@j.org",
              "X-SOCIALPROFILE;TYPE=chirp;X-USER=ann;X-USERID=7:http://c.org/ann",
              "item2.ADR;TYPE=home:Box 7;Back;1 Main\\nFloor 2;Town;CA;123;USA",
              "item2.X-ABADR:us",
              "ADR:;;Elsewhere;;;;",
              "RELATED;VALUE=text;TYPE=friend:Bob",
              "item3.RELATED;VALUE=text:Eve",
              "item3.X-ABLabel:_$!<Mother>!$_",
              "ANNIVERSARY:20000102",
              "item4.X-ABDATE:--0304",
              "item4.X-ABLabel:Boat",
              R"(NOTE:=1+1\, \"two\"\nlines\n)",
              "CATEGORIES:one,two\\, three"}),
      cardOf({"FN:ACME", "ORG:ACME"}),
      cardOf({"FN;DERIVED=TRUE:a@x.org", "EMAIL:a@x.org"}),
      cardOf({"N:王;小明;;;", "FN:王小明", "NOTE: blanks around "}),
      cardOf({"FN:Stars", "item1.TEL:1", "item1.X-ABLabel:* Home", "item2.TEL;PREF=1:2",
              "item2.X-ABLabel:**", "item3.TEL:3", "item3.X-ABLabel:*"}),
      cardOf({"FN:Ann \tLee", "NOTE: ", "CATEGORIES:Friends\t, ", "ADR:;; \t;;;;", "TEL:1"}),
  };
  const auto table = tableOf(cards);
  vcard::MemorySource source(table);
  formats::TableSource reader(source);
  std::vector<std::string> read;
  while (auto result = reader.next()) {
    ASSERT_TRUE(std::holds_alternative<vcard::Card>(*result));
    const auto& card = std::get<vcard::Card>(*result);
    EXPECT_TRUE(card.repairs.empty());
    std::string text;
    vcard::appendCard(card.properties, card.photo, {.version = vcard::CardVersion::V40}, text);
    read.push_back(text);
  }
  ASSERT_EQ(read.size(), cards.size());
  EXPECT_EQ(tableOf(read), table);
  // And the records are what the cards were.
  for (std::size_t i = 0; i < cards.size(); ++i) {
    const auto was = formats::cardOf(formats::fieldsOf(formats::WrittenCard(cards[i])), 0);
    const auto is = formats::cardOf(formats::fieldsOf(formats::WrittenCard(read[i])), 0);
    EXPECT_EQ(linesOf(is), linesOf(was));
  }
  EXPECT_EQ(linesOf(formats::cardOf(formats::fieldsOf(formats::WrittenCard(cards[1])), 0)),
            "FN:ACME | ORG:ACME");
}

}  // namespace
}  // namespace ox::formats_tests
