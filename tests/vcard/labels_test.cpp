#include <gtest/gtest.h>

#include "card_text.hpp"

namespace ox::vcard {
namespace {

struct Row {
  std::string version;
  std::string lines;
  std::string expected;
};

TEST(CardLabels, TypesBecomeLabelsAndOtherWordsAreKept) {
  const std::vector<Row> rows = {
      {"3.0", "TEL;TYPE=HOME,VOICE:1\n", "Phone[_$!<Home>!$_]=1\n"},
      {"3.0", "TEL;TYPE=\"work,voice\":1\n", "Phone[_$!<Work>!$_]=1\n"},
      {"3.0", "TEL;type=IPHONE;type=CELL:1\n", "Phone[_$!<iPhone>!$_]=1\n"},
      {"2.1", "TEL;CELL:1\n", "Phone[_$!<Mobile>!$_]=1\n"},
      {"2.1", "TEL;HOME;FAX:1\n", "Phone[_$!<HomeFAX>!$_]=1\n"},
      {"2.1", "TEL;FAX;WORK:1\n", "Phone[_$!<WorkFAX>!$_]=1\n"},
      {"3.0", "TEL;TYPE=OTHER,FAX:1\n", "Phone[_$!<OtherFAX>!$_]=1\n"},
      {"3.0", "TEL;TYPE=FAX:1\n", "Phone[_$!<OtherFAX>!$_]=1\n"},
      {"3.0", "TEL;TYPE=MAIN:1\nTEL;TYPE=PAGER:2\nTEL;TYPE=OTHER:3\n",
       "Phone[_$!<Main>!$_]=1\nPhone[_$!<Pager>!$_]=2\nPhone[_$!<Other>!$_]=3\n"},
      {"3.0", "TEL:1\nEMAIL;TYPE=INTERNET:a\n", "Phone[-]=1\nEmail[-]=a\n"},
      {"2.1", "TEL;MODEM;X-CAR:1\n", "Phone[CAR]=1\nkept=;16#1;TYPE=MODEM;TYPE=X-CAR\n"},
      {"3.0", "TEL;TYPE=CELL,WORK:1\n", "Phone[_$!<Mobile>!$_]=1\nkept=;16#1;TYPE=WORK\n"},
      {"4.0", "EMAIL;TYPE=work;PID=1.1;X-A=\"b;c:d\":e\n",
       "Email[_$!<Work>!$_]=e\nkept=;17#1;PID=1.1;X-A=\"b;c:d\"\n"},
      {"3.0", "ORG;LANGUAGE=en:A\n", "Organization=A\nkept=;8#0;LANGUAGE=en\n"},
      {"2.1", "ADR;HOME;:;;a\n", "Address[_$!<Home>!$_]={Street=a}\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(textOfCard(row.version, row.lines), row.expected) << row.lines;
  }
}

TEST(CardLabels, PrimaryIsTheMostPreferredEntry) {
  const std::vector<Row> rows = {
      {"2.1", "TEL:1\nTEL;PREF:2\nTEL;PREF:3\n",
       "Phone[-]=1\nPhone*[-]=2\nPhone[-]=3\n"
       "kept=;16#3;PREF=1\n"},
      {"3.0", "TEL:1\nTEL;type=pref:2\n", "Phone[-]=1\nPhone*[-]=2\n"},
      {"4.0", "TEL;PREF=50:1\nTEL;PREF=2:2\nTEL;PREF=9:3\n",
       "Phone[-]=1\nPhone*[-]=2\nPhone[-]=3\n"
       "kept=;16#1;PREF=50\nkept=;16#2;PREF=2\nkept=;16#3;PREF=9\n"},
      {"3.0", "TEL:1\nTEL:2\n", "Phone[-]=1\nPhone[-]=2\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(textOfCard(row.version, row.lines), row.expected) << row.lines;
  }
}

TEST(CardLabels, LastOfTwoLabelsOfAGroupCountsAndIsReported) {
  EXPECT_EQ(textOfCard("3.0", "item1.X-ABLabel:Boat\nitem1.TEL;TYPE=WORK:1\nITEM1.X-ABLabel:Car\n"),
            "Phone[Car]=1\nkept=;16#1;TYPE=WORK\n"
            "repair 3: a later X-ABLabel of the group takes its place\n");
}

TEST(CardLabels, GroupLabelsGoBeforeTypesWhereverTheyStand) {
  const std::vector<Row> rows = {
      {"3.0", "item1.TEL:1\nitem1.X-ABLabel:Boat\n", "Phone[Boat]=1\n"},
      {"3.0", "item1.X-ABLabel:_$!<Main>!$_\nitem1.TEL:1\n", "Phone[_$!<Main>!$_]=1\n"},
      {"3.0", "item1.TEL;TYPE=WORK:1\nitem1.X-ABLabel:\n", "Phone[_$!<Work>!$_]=1\n"},
      {"3.0", "item1.TEL;TYPE=WORK:1\nitem1.X-ABLabel:Boat\n",
       "Phone[Boat]=1\nkept=;16#1;TYPE=WORK\n"},
      {"3.0", "item1.X-OWN:1\nitem1.X-ABLabel:Boat\n",
       "kept=item1.X-OWN:1\nkept=item1.X-ABLabel:Boat\n"},
      {"3.0", "A.TEL:1\nb.EMAIL:2\na.X-ABLabel:x\nB.X-ABLabel:y\\, z\n",
       "Phone[x]=1\nEmail[y, z]=2\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(textOfCard(row.version, row.lines), row.expected) << row.lines;
  }
}

TEST(CardLabels, LastCountryCodeOfAGroupServesAllItsAddresses) {
  EXPECT_EQ(textOfCard("3.0",
                       "g.X-ABADR:de\ng.ADR:;;a;;;;\ng.X-ABADR:fr\ng.ADR:;;b;;;;\n"
                       "g.X-ABADR:France\n"),
            "Address[-]={Street=a,CountryCode=fr}\nAddress[-]={Street=b,CountryCode=fr}\n"
            "kept=g.X-ABADR:France\nkept=;21#1.g\nkept=;21#2.g\n"
            "repair 3: a later X-ABADR of the group takes its place\n");
}

TEST(CardLabels, OneLongLabelIsNotCopiedWithoutEnd) {
  const std::string label(300U << 10U, 'x');
  std::string lines = "g.X-ABLabel:" + label + "\n";
  for (int i = 0; i < 9; ++i) lines += "g.TEL;TYPE=HOME:1\n";
  const auto text = textOfCard("3.0", lines);
  std::size_t copies = 0;
  for (auto at = text.find(label); at != text.npos; at = text.find(label, at + 1)) ++copies;
  EXPECT_EQ(copies, 4U);
  const auto from = text.find("repair");
  ASSERT_NE(from, text.npos);
  EXPECT_EQ(text.substr(from), "repair 3: label too long for all of its group\n");
  EXPECT_NE(text.find("Phone[_$!<Home>!$_]=1\n"), text.npos);
}

TEST(CardLabels, GroupsWithoutNumberTakeNoMoreThanSortingTime) {
  std::string lines;
  for (int i = 0; i < 20000; ++i) {
    const auto group = "g" + std::to_string(i);
    lines += group + ".TEL:" + std::to_string(i) + "\n" + group + ".X-ABLabel:l" +
             std::to_string(i) + "\n";
  }
  const auto text = textOfCard("3.0", lines);
  EXPECT_NE(text.find("Phone[l19999]=19999\n"), std::string::npos);
}

}  // namespace
}  // namespace ox::vcard
