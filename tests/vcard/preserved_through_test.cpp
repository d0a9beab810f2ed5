#include <gtest/gtest.h>

#include "card_text.hpp"
#include "written_card.hpp"

// What a card says beside the values that a record holds, through the store and out again.

namespace ox::vcard {
namespace {

TEST(CardThrough, UrisOfAccountsGoOutAsTheyCame) {
  std::vector<ThroughRow> rows;
  for (const std::string line :
       {"IMPP:sip:alice@x\n", "IMPP:irc://irc.x.example/alice,isnick\n", "IMPP:matrix:u/a:x\n",
        "IMPP:https://x.example/a?b=c&d=%C3%A9\n", "IMPP:sip:a%20b@x\n",
        "IMPP;X-SERVICE-TYPE=Jabber:xmpp:bob@x?message\n",
        "IMPP;X-SERVICE-TYPE=AIM:aim:goim?screenname=x\n", "IMPP;X-SERVICE-TYPE=Skype:x-apple:a\n",
        "IMPP;X-SERVICE-TYPE=Jabber:xmpp:%FF%FE\n", "IMPP;X-SERVICE-TYPE=Own:own:me\n",
        "IMPP;X-SERVICE-TYPE=Jabber:XMPP:bob@x\n"}) {
    rows.push_back({"3.0", line, line, line});
    rows.push_back({"4.0", line, line, line});
  }
  rows.push_back({"4.0", "IMPP;TYPE=home:xmpp:a/b\n",
                  "IMPP;TYPE=HOME;X-SERVICE-TYPE=Jabber:xmpp:a/b\n",
                  "IMPP;TYPE=home;X-SERVICE-TYPE=Jabber:xmpp:a/b\n"});
  expectThrough(rows);
}

TEST(CardThrough, NotesOfSeveralLanguagesStayApart) {
  const std::string two = "NOTE;LANGUAGE=en:hello\nNOTE;LANGUAGE=de:hallo\n";
  const std::string plain = "NOTE;LANGUAGE=en:a\nNOTE:b\n";
  expectThrough({
      {"3.0", two, two, two},
      {"4.0", plain, plain, plain},
      {"3.0", "NOTE;LANGUAGE=en:a\nNOTE;LANGUAGE=en:b\n", "NOTE;LANGUAGE=en:a\\nb\n",
       "NOTE;LANGUAGE=en:a\\nb\n"},
  });
}

TEST(CardThrough, NotesStayApartWhoseParametersCannotBeSaid) {
  const auto text =
      linesOf(propertiesOf("3.0", "N:Ray;Al;;;\nNOTE;LANGUAGE=e\x02n:a\nNOTE:b\n"), {});
  EXPECT_EQ(text,
            "N:Ray;Al;;;\nFN:Al Ray\nNOTE:a\nX-OX-LINE:NOTE%3Ab\n"
            "X-OX-LINE:%3B15%230%3BLANGUAGE%3De%02n\n");
  EXPECT_EQ(linesOf(propertiesOf("3.0", text), {}), text);
}

TEST(CardThrough, AccountsKeepEveryType) {
  const std::string types = "IMPP;TYPE=home;TYPE=VOICE;TYPE=INTERNET;TYPE=MOBILE;TYPE=personal:";
  expectThrough({
      {"4.0", types + "sip:a@x\n",
       "IMPP;TYPE=HOME;TYPE=VOICE;TYPE=INTERNET;TYPE=MOBILE;TYPE=personal:sip:a@x\n",
       types + "sip:a@x\n"},
  });
}

TEST(CardThrough, ListsStayLists) {
  const auto same = [](const std::string& line) { return ThroughRow{"3.0", line, line, line}; };
  expectThrough({
      same("NICKNAME:Jim,Jimmie\n"),
      same("NICKNAME:Jim\\,Jimmie\n"),
      same("NICKNAME;X-A=b:Jim\\,x,Jimmie\\;y\n"),
      same("ORG:X;North\\; South;M\n"),
      same("ORG:X\\;Y;M\n"),
      same("ADR;X-A=1:,a;;1 Way,Flat\\, 2;Town;;;Land,Country\\;\n"),
      {"3.0", "ORG:X, Y;North, South\n", "ORG:X\\, Y;North\\, South\n",
       "ORG:X\\, Y;North\\, South\n"},
      {"2.1", "ADR:;;1 Way,2;Town;;;Land\n", "ADR:;;1 Way\\,2;Town;;;Land\n",
       "ADR:;;1 Way\\,2;Town;;;Land\n"},
  });
  const auto lists = propertiesOf("3.0", "N:Ray;Al;Q.,R.;;Jr.,M.D.\nFN:Al Q. R. Ray Jr., M.D.\n");
  const std::string written = "N:Ray;Al;Q.,R.;;Jr.,M.D.\nFN:Al Q. R. Ray Jr.\\, M.D.\n";
  EXPECT_EQ(linesOf(lists, {}), written);
  EXPECT_EQ(linesOf(lists, {.version = CardVersion::V40}), written);
}

TEST(CardThrough, ReadingsOfTheNameComeBackInTheirParameter) {
  auto bag = propertiesOf("4.0", "N;SORT-AS=\"Mo,Al\":Mohn;Albert;;;\nFN:Albert Mohn\n");
  const std::string readings = "X-PHONETIC-FIRST-NAME:Al\nX-PHONETIC-LAST-NAME:Mo\n";
  const auto in30 = linesOf(bag, {});
  const auto in40 = linesOf(bag, {.version = CardVersion::V40});
  EXPECT_EQ(in30, "N:Mohn;Albert;;;\nFN:Albert Mohn\n" + readings +
                      "X-OX-LINE:%3B14%230%3BSORT-AS%3D%22Mo%2CAl%22\n");
  EXPECT_EQ(in40, "N;SORT-AS=\"Mo,Al\":Mohn;Albert;;;\nFN:Albert Mohn\n" + readings);
  EXPECT_EQ(linesOf(propertiesOf("3.0", in30), {.version = CardVersion::V40}), in40);
  EXPECT_EQ(linesOf(propertiesOf("4.0", in40), {}), in30);
  bag.set(property_id::kLastPhonetic, Object("Mu"));
  EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}),
            "N:Mohn;Albert;;;\nFN:Albert Mohn\nX-PHONETIC-FIRST-NAME:Al\n"
            "X-PHONETIC-LAST-NAME:Mu\n");
}

TEST(CardThrough, RanksOfPreferenceComeBack) {
  expectThrough({
      {"4.0", "TEL;PREF=2:1\n", "TEL;TYPE=pref:1\nX-OX-LINE:%3B16%231%3BPREF%3D2\n",
       "TEL;PREF=2:1\n"},
      {"4.0", "EMAIL;PREF=1:a@b\nEMAIL;TYPE=work;PREF=3;X-A=b:c@d\nEMAIL;PREF=2:e@f\nEMAIL:g@h\n",
       "EMAIL;TYPE=pref:a@b\nEMAIL;TYPE=WORK;X-A=b:c@d\nEMAIL:e@f\nEMAIL:g@h\n"
       "X-OX-LINE:%3B17%232%3BPREF%3D3\nX-OX-LINE:%3B17%233%3BPREF%3D2\n",
       "EMAIL;PREF=1:a@b\nEMAIL;TYPE=work;PREF=3;X-A=b:c@d\nEMAIL;PREF=2:e@f\nEMAIL:g@h\n"},
      {"3.0", "TEL;TYPE=pref:1\nTEL;TYPE=pref:2\n", "TEL;TYPE=pref:1\nTEL;TYPE=pref:2\n",
       "TEL;PREF=1:1\nTEL;PREF=1:2\n"},
      {"4.0", "TITLE;PREF=1:Boss\nNOTE;PREF=5:x\n",
       "TITLE;TYPE=pref:Boss\nNOTE:x\nX-OX-LINE:%3B15%230%3BPREF%3D5\n",
       "TITLE;PREF=1:Boss\nNOTE;PREF=5:x\n"},
  });
  // Another entry is the primary one now: the ranks do not hold.
  auto bag = propertiesOf("4.0", "N:a;;;;\nTEL;PREF=2:1\nTEL;PREF=3:2\n");
  auto values = *std::get<MultiValuePtr>(*bag.find(property_id::kPhone));
  values.primary = 2;
  bag.set(property_id::kPhone, std::make_shared<const MultiValue>(values));
  EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), "N:a;;;;\nFN:a\nTEL:1\nTEL;PREF=1:2\n");
}

TEST(CardThrough, UnmodelledLinesStayInTheGroupOfTheirEntry) {
  const auto same = [](const std::string& line) { return ThroughRow{"3.0", line, line, line}; };
  expectThrough({
      same("item1.TEL:1\nwork.EMAIL:a@b\nitem1.X-CUSTOM:x\nwork.X-NOTE:y\n"),
      same("item7.TEL:1\nitem7.X-ABLabel:Boat\nitem8.TEL:2\nitem8.X-ABLabel:Car\n"
           "item7.X-CUSTOM:x\n"),
      same("item2.ADR:;;a;;;;\nitem2.X-ABADR:de\nitem2.X-APPLE-SUBLOCALITY:b\n"),
      // One label for two entries of a group.
      same("g.TEL:1\ng.X-ABLabel:Boat\ng.EMAIL:a@b\ng.X-CUSTOM:x\n"),
      {"3.0", "item3.TEL:1\n", "TEL:1\n", "TEL:1\n"},
      {"3.0", "item1.TEL;TYPE=WORK;X-A=b:1\nitem1.X-ABLabel:Boat\n",
       "item1.TEL;TYPE=WORK;X-A=b:1\nitem1.X-ABLabel:Boat\n",
       "item1.TEL;TYPE=WORK;X-A=b:1\nitem1.X-ABLabel:Boat\n"},
  });
  // An entry whose label is another now leaves the group of the first.
  auto bag = propertiesOf("3.0", "N:a\ng.TEL:1\ng.TEL:2\ng.X-CUSTOM:x\n");
  auto values = *std::get<MultiValuePtr>(*bag.find(property_id::kPhone));
  values.entries[1].label = "Boat";
  bag.set(property_id::kPhone, std::make_shared<const MultiValue>(values));
  EXPECT_EQ(linesOf(bag, {}),
            "N:a;;;;\nFN:a\ng.TEL:1\nitem1.TEL:2\nitem1.X-ABLabel:Boat\ng.X-CUSTOM:x\n");
}

TEST(CardThrough, PersonsStayPersonsWhateverIsPreserved) {
  const auto wrapped = [](const std::string& line) { return ThroughRow{"3.0", line, line, line}; };
  expectThrough({
      wrapped("X-OX-LINE:KIND%3Agroup\n"),
      wrapped("X-OX-LINE:item1.Kind%3BX-A%3Db%3A%20Group\n"),
      wrapped("X-OX-LINE:X-ADDRESSBOOKSERVER-KIND%3Agroup\n"),
      wrapped("KIND:individual\n"),
  });
  for (const auto* kind : {"KIND:\r\n group\r\n", "X-ADDRESSBOOKSERVER-KIND\r\n\t:gro\r\n up\r\n",
                           "KIND;VALUE=text:group\r\n"}) {
    EXPECT_TRUE(textOfCard("4.0", std::string(kind) + "FN:a\n").starts_with("group\n")) << kind;
  }
  EXPECT_FALSE(textOfCard("4.0", "FN:a\nX-A:\n KIND:group\n").starts_with("group\n"));
}

TEST(CardThrough, GroupsKeepTheParametersOfTheirName) {
  const auto bag = propertiesOf("3.0",
                                "X-ADDRESSBOOKSERVER-KIND:group\nN;X-FOO=1:Chor\n"
                                "FN;LANGUAGE=de:Chor\nFN;LANGUAGE=en:Choir\n");
  const auto written = [](const PropertyBag& properties, CardVersion version) {
    std::string card;
    appendGroup(properties, {}, {.version = version}, card);
    return card;
  };
  const auto in30 = written(bag, CardVersion::V30);
  const auto in40 = written(bag, CardVersion::V40);
  EXPECT_EQ(in30,
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN;X-FOO=1:Chor;;;;\r\nFN;LANGUAGE=de:Chor\r\n"
            "X-ADDRESSBOOKSERVER-KIND:group\r\nFN;LANGUAGE=en:Choir\r\nEND:VCARD\r\n");
  EXPECT_EQ(in40,
            "BEGIN:VCARD\r\nVERSION:4.0\r\nFN;LANGUAGE=de:Chor\r\nKIND:group\r\n"
            "FN;LANGUAGE=en:Choir\r\nX-OX-LINE:%3B3%230%3BX-FOO%3D1\r\nEND:VCARD\r\n");
  for (const auto& text : {in30, in40}) {
    const auto again = std::get<Card>(readAll(text).at(0)).properties;
    EXPECT_EQ(written(again, CardVersion::V30), in30);
    EXPECT_EQ(written(again, CardVersion::V40), in40);
  }
}

TEST(CardThrough, RevisionIsWrittenOnlyOfWhatItWasTrueFor) {
  const std::string lines = "N:a;;;;\nFN:a\nREV:20200203T040506Z\n";
  const auto bag = propertiesOf("3.0", lines);
  EXPECT_EQ(linesOf(bag, {}), lines);
  EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), lines);
  auto edited = bag;
  edited.set(property_id::kNote, Object("b"));
  EXPECT_EQ(linesOf(edited, {}), "N:a;;;;\nFN:a\nNOTE:b\n");
  // Another picture is a change, one that is not asked for is none.
  const auto photo = makeData("\xFF\xD8\xFF");
  EXPECT_EQ(linesOf(bag, {}, photo).find("REV"), std::string::npos);
  const auto pictured = propertiesOf("3.0", lines + "PHOTO;ENCODING=b:/9j/\n");
  EXPECT_NE(linesOf(pictured, {}, photo).find("REV"), std::string::npos);
  EXPECT_EQ(linesOf(pictured, {}).find("REV"), std::string::npos);
  EXPECT_EQ(linesOf(pictured, {.nestedCards = false}), lines);
  // A line that an older store kept alone.
  PropertyBag old;
  old.set(property_id::kLast, Object("a"));
  old.set(property_id::kUnmodelledLines, Object(Array{"REV:20200203T040506Z"}));
  EXPECT_EQ(linesOf(old, {}), lines);
}

TEST(CardThrough, RevisionOfAGroupIsTrueForItsMembers) {
  const auto group = propertiesOf("4.0",
                                  "KIND:group\nFN:g\nMEMBER:urn:uuid:1\nMEMBER:urn:uuid:2\n"
                                  "MEMBER:1\n"
                                  "REV:20200203T040506Z\n");
  const auto hasRevision = [&](const std::vector<std::string>& members) {
    std::string card;
    appendGroup(group, members, {}, card);
    return card.find("\r\nREV:") != card.npos;
  };
  EXPECT_TRUE(hasRevision({"2", "urn:uuid:1"}));
  EXPECT_FALSE(hasRevision({"1"}));
}

}  // namespace
}  // namespace ox::vcard
