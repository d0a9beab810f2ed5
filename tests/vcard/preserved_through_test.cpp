#include <gtest/gtest.h>

#include "card_text.hpp"
#include "ox/records/property_keys.hpp"
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

TEST(CardThrough, UnmodelledLinesTakeTheFormOfTheVersion) {
  const auto same = [](const std::string& line) { return ThroughRow{"3.0", line, line, line}; };
  expectThrough({
      {"4.0", "REV:20200203T040506+0200\n", "REV:20200203T040506+0200\n",
       "REV:20200203T040506+0200\n"},
      {"3.0", "REV:2020-02-03\n", "REV:2020-02-03\n", "X-OX-LINE:REV%3A2020-02-03\n"},
      {"3.0", "REV:20200203T040506Z\nREV:20210203T040506Z\n",
       "REV:20200203T040506Z\nX-OX-LINE:REV%3A20210203T040506Z\n",
       "REV:20200203T040506Z\nX-OX-LINE:REV%3A20210203T040506Z\n"},
      {"4.0", "KIND:individual\nKIND:org\n", "KIND:individual\nX-OX-LINE:KIND%3Aorg\n",
       "KIND:individual\nX-OX-LINE:KIND%3Aorg\n"},
      {"4.0", "GEO:geo:37.3,-122;u=3\n", "X-OX-LINE:GEO%3Ageo%3A37.3%2C-122%3Bu%3D3\n",
       "GEO:geo:37.3,-122;u=3\n"},
      {"3.0", "MAILER:b\nCLASS:PUBLIC\nSORT-STRING:c\n", "MAILER:b\nCLASS:PUBLIC\nSORT-STRING:c\n",
       "X-OX-LINE:MAILER%3Ab\nX-OX-LINE:CLASS%3APUBLIC\nX-OX-LINE:SORT-STRING%3Ac\n"},
      {"3.0", "PHOTO:no picture\n", "X-OX-LINE:PHOTO%3Ano%20picture\n",
       "X-OX-LINE:PHOTO%3Ano%20picture\n"},
      same("PHOTO;VALUE=uri:http://x/p.jpg\n"),
      {"3.0", "LOGO;TYPE=UID;TYPE=JPEG;VALUE=uri:x:y\n", "LOGO;TYPE=UID;TYPE=JPEG;VALUE=uri:x:y\n",
       "LOGO;TYPE=JPEG;MEDIATYPE=image/uid;VALUE=uri:x:y\n"},
      same("KEY;VALUE=uri:http://x/k\nSOURCE:http://x/s\n"),
      {"4.0", "BDAY;VALUE=text:circa 1800\n", "X-OX-LINE:BDAY%3BVALUE%3Dtext%3Acirca%201800\n",
       "BDAY;VALUE=text:circa 1800\n"},
      {"4.0", "BDAY:19900517\nBDAY;VALUE=text:soon\n",
       "BDAY:1990-05-17\nX-OX-LINE:BDAY%3BVALUE%3Dtext%3Asoon\n",
       "BDAY:19900517\nX-OX-LINE:BDAY%3BVALUE%3Dtext%3Asoon\n"},
  });
}

// These come back in the other version's spelling.
TEST(CardThrough, UnmodelledLinesTakeTheFormOfTheOtherVersion) {
  struct Row {
    std::string line;
    std::string in30;
    std::string in40;
  };
  const std::vector<Row> rows = {
      {"REV:2020-02-03T04:05:06Z", "REV:2020-02-03T04:05:06Z", "REV:20200203T040506Z"},
      {"REV:2020-02-03T04:05:06.7+02:00", "REV:2020-02-03T04:05:06.7+02:00",
       "REV:20200203T040506+0200"},
      {"item1.GEO;X-A=b:37.38;-122.08", "item1.GEO;X-A=b:37.38;-122.08",
       "item1.GEO;X-A=b:geo:37.38,-122.08"},
      {"GEO:37.24,-17.87", "GEO:37.24;-17.87", "GEO:geo:37.24,-17.87"},
      {"GEO:geo:1,2", "GEO:1;2", "GEO:geo:1,2"},
      {"GEO:here;there", "X-OX-LINE:GEO%3Ahere%3Bthere", "X-OX-LINE:GEO%3Ahere%3Bthere"},
      {"PHOTO:http://x/p.jpg", "PHOTO;VALUE=uri:http://x/p.jpg", "PHOTO;VALUE=uri:http://x/p.jpg"},
      {"LOGO:data:image/gif;base64,AQID", "LOGO;TYPE=GIF;ENCODING=b:AQID",
       "LOGO:data:image/gif;base64,AQID"},
      {"LOGO:data:image/gif;base64,A", "LOGO;VALUE=uri:data:image/gif;base64,A",
       "LOGO;VALUE=uri:data:image/gif;base64,A"},
      {"SOUND:data:text/plain;charset=x;base64,AQID",
       "SOUND;VALUE=uri:data:text/plain;charset=x;base64,AQID",
       "SOUND;VALUE=uri:data:text/plain;charset=x;base64,AQID"},
      {"KEY;TYPE=PGP:http://x/k", "KEY;TYPE=PGP;VALUE=uri:http://x/k",
       "KEY;MEDIATYPE=application/pgp-keys;VALUE=uri:http://x/k"},
      {"LOGO;MEDIATYPE=image/svg+xml:http://x/l", "LOGO;TYPE=SVG+XML;VALUE=uri:http://x/l",
       "LOGO;MEDIATYPE=image/svg+xml;VALUE=uri:http://x/l"},
      {"LOGO;MEDIATYPE=image/a;MEDIATYPE=image/b:http://x/l", "LOGO;TYPE=A;VALUE=uri:http://x/l",
       "LOGO;MEDIATYPE=image/a;VALUE=uri:http://x/l"},
      {"SOUND;X-A=b;VALUE=URL:http://x/s", "SOUND;X-A=b;VALUE=uri:http://x/s",
       "SOUND;X-A=b;VALUE=uri:http://x/s"},
      {"SOURCE;VALUE=URL;X-A=b:http://x/s", "SOURCE;VALUE=uri;X-A=b:http://x/s",
       "SOURCE;VALUE=uri;X-A=b:http://x/s"},
      {"KEY;TYPE=PGP:a key", "KEY;TYPE=PGP;VALUE=text:a key", "KEY;TYPE=PGP;VALUE=text:a key"},
      {"ROLE:Sales, all", "ROLE:Sales\\, all", "ROLE:Sales\\, all"},
  };
  for (const auto& row : rows) {
    PropertyBag bag;
    bag.set(property_id::kUnmodelledLines, Object(Array{row.line}));
    const auto in30 = linesOf(bag, {.version = CardVersion::V30});
    EXPECT_EQ(in30, "N:;;;;\nFN;X-DERIVED=TRUE:?\n" + row.in30 + "\n");
    const auto in40 = linesOf(bag, {.version = CardVersion::V40});
    EXPECT_EQ(in40, "FN;DERIVED=TRUE:?\n" + row.in40 + "\n");
    EXPECT_EQ(linesOf(propertiesOf("3.0", in30), {.version = CardVersion::V40}), in40);
  }
}

TEST(CardThrough, BytesTakeTheFormOfTheVersion) {
  const auto row = [](const std::string& in30, const std::string& in40) {
    return std::vector{ThroughRow{"3.0", in30, in30, in40}, ThroughRow{"4.0", in40, in30, in40}};
  };
  for (const auto& rows :
       {row("LOGO;TYPE=GIF;ENCODING=b:AQID\n", "LOGO:data:image/gif;base64,AQID\n"),
        row("LOGO;TYPE=PNG;TYPE=WORK;ENCODING=b:AQID\n",
            "LOGO;TYPE=WORK:data:image/png;base64,AQID\n"),
        row("item1.SOUND;TYPE=WAVE;X-A=\"b:c\";ENCODING=b:AQID\n",
            "item1.SOUND;X-A=\"b:c\":data:audio/wav;base64,AQID\n"),
        row("LOGO;TYPE=GIF;MEDIATYPE=none;ENCODING=b:AQID\n",
            "LOGO;MEDIATYPE=none:data:image/gif;base64,AQID\n"),
        row("SOUND;TYPE=BASIC;ENCODING=b:AQID\n", "SOUND:data:audio/basic;base64,AQID\n"),
        row("KEY;TYPE=PGP;ENCODING=b:AQID\n", "KEY:data:application/pgp-keys;base64,AQID\n"),
        row("LOGO;TYPE=UID;TYPE=JPEG;ENCODING=b:AQID\n",
            "LOGO;TYPE=JPEG:data:image/uid;base64,AQID\n"),
        row("KEY;TYPE=X509;ENCODING=b:AQID\n", "KEY:data:application/pkix-cert;base64,AQID\n"),
        row("KEY;TYPE=text/plain;ENCODING=b:AQID\n", "KEY:data:text/plain;base64,AQID\n"),
        row("KEY;ENCODING=b:AQID\n", "KEY:data:application/octet-stream;base64,AQID\n")}) {
    expectThrough(rows);
  }
}

// A line of vCard 2.1 knows neither \n nor lists.
TEST(CardThrough, TextsTakeTheEscapesOfTheVersion) {
  const auto from21 = [](const std::string& line, const std::string& written) {
    return ThroughRow{"2.1", line, written, written};
  };
  const auto from30 = [](const std::string& line, const std::string& written) {
    return ThroughRow{"3.0", line, written, written};
  };
  expectThrough({
      // In a text \n is a line break, in a value that nobody knows a backslash and an n.
      from21("ROLE:D:\\docs\\new, a\\;b;c\n", "ROLE:D:\\\\docs\\new\\, a\\;b\\;c\n"),
      from21("ROLE;ENCODING=QUOTED-PRINTABLE:a,=0D=0Ab\\n\n", "ROLE:a\\,\\nb\\n\n"),
      from21("X-PATH:C:\\new,x;a\\;b\n", "X-PATH:C:\\\\new\\,x;a\\;b\n"),
      from21("X-LINK:http://x/a,b;c\n", "X-LINK:http://x/a,b;c\n"),
      from21("CATEGORIES:a,b\\c\n", "CATEGORIES:a,b\\\\c\n"),
      from21("TZ:-05:00\n", "TZ:-05:00\n"),
      from21("TITLE:a\nTITLE:b,c\n", "TITLE:a\nTITLE:b\\,c\n"),
      from30("ROLE:a, b\\,c;d\\ne\n", "ROLE:a\\, b\\,c\\;d\\ne\n"),
      from30("X-OWN:a, b\\,c;d\n", "X-OWN:a, b\\,c;d\n"),
      from30("CATEGORIES:a,b\\,c;d\n", "CATEGORIES:a,b\\,c\\;d\n"),
      from30("NICKNAME:a\nNICKNAME:b,c;d\n", "NICKNAME:a\nNICKNAME:b,c\\;d\n"),
      from30("ORG:a\nORG:b,c;d\n", "ORG:a\nORG:b\\,c;d\n"),
  });
  const auto in = [](const std::string& version, CardVersion asVersion) {
    return linesOf(propertiesOf(version, "N:Mustermann;Heiko\nFN:Mustermann, Heiko\n"),
                   {.version = asVersion});
  };
  for (const std::string version : {"2.1", "3.0", "4.0"}) {
    for (const auto asVersion : {CardVersion::V30, CardVersion::V40}) {
      EXPECT_EQ(in(version, asVersion), "N:Mustermann;Heiko;;;\nFN:Mustermann\\, Heiko\n");
    }
  }
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

TEST(CardThrough, FormattedNameGoesWithTheNameThatItCameWith) {
  for (const std::string names :
       {"N:Doe;Jane\nFN:Janey the Great\nFN;LANGUAGE=de:Hannchen\n", "FN:田 中\n"}) {
    auto bag = propertiesOf("3.0", names);
    const auto before = linesOf(bag, {});
    EXPECT_EQ(linesOf(propertiesOf("3.0", before), {}), before);
    EXPECT_NE(before.find(names.substr(names.find("FN:"))), before.npos) << before;
    bag.set(property_id::kLast, Object("Roe"));
    bag.set(property_id::kFirst, Object("Bob"));
    EXPECT_EQ(linesOf(bag, {}), "N:Roe;Bob;;;\nFN:Bob Roe\n");
    EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), "N:Roe;Bob;;;\nFN:Bob Roe\n");
  }
  // A line that an older store kept, without the name that it came with.
  PropertyBag old;
  old.set(property_id::kFirst, Object("Jane"));
  old.set(property_id::kUnmodelledLines, Object(Array{"FN:Janey"}));
  EXPECT_EQ(linesOf(old, {}), "N:;Jane;;;\nFN:Janey\n");
}

TEST(CardThrough, FormattedNameThatCannotBeSaidStaysInItsPlace) {
  const std::string second = "N:Both;;;;\nFN:Both\nX-A:1\nX-OX-LINE:FN%3AAni%04\n";
  const auto bag = propertiesOf("3.0", "N:Both\nFN:Both\nX-A:1\nFN:Ani\x04\n");
  EXPECT_EQ(linesOf(bag, {}), second);
  EXPECT_EQ(linesOf(propertiesOf("3.0", second), {}), second);
  // The first one stays, since it is not the only one.
  const std::string first = "N:Lee;Ann\\;Jo;;;\nFN:Ann\\;Jo Lee\nX-OX-LINE:FN%3AAni%04\n";
  EXPECT_EQ(linesOf(propertiesOf("3.0", first), {}), first);
  const auto text =
      linesOf(propertiesOf("3.0", "N:Lee;Ann;;;\nFN:Ann\x1d\nFN:Both\nUID:a-1\nX-A:1\n"), {});
  EXPECT_EQ(text, "N:Lee;Ann;;;\nFN:Ann\nUID:a-1\nX-OX-LINE:FN%3AAnn%1D\nFN:Both\nX-A:1\n");
  EXPECT_EQ(linesOf(propertiesOf("3.0", text), {}), text);
}

// Whatever stands around the name of a line, a writer has to take it for the same property as the
// reader did.
TEST(CardThrough, TheFormattedNameThatCountsIsWrittenFirst) {
  const auto expectWrittenAs = [](const std::string& lines, const std::string& expected,
                                  CardVersion version) {
    for (const auto& each : {lines, expected}) {
      EXPECT_EQ(linesOf(propertiesOf("4.0", each), {.version = version}), expected) << each;
    }
  };
  const auto expectBoth = [&](const std::string& lines, const std::string& in30,
                              const std::string& in40) {
    expectWrittenAs(lines, in30, CardVersion::V30);
    expectWrittenAs(lines, in40, CardVersion::V40);
  };
  const std::string none = "N:;;;;\n";
  const std::string dot = "FN:Firm\nORG:Firm\nX-OX-LINE:.FN%3AFirm\nFN:Firm\\;Unit\n";
  expectBoth(".FN:Firm\nORG:Firm\nFN:Firm\\;Unit\n", none + dot, dot);
  const std::string dots = "FN:Annie\nX-OX-LINE:a.b.FN%3AAnnie\nFN:Ann\n";
  expectBoth("N:Lee;Ann;;;\na.b.FN:Annie\nFN:Ann\n", "N:Lee;Ann;;;\n" + dots,
             "N:Lee;Ann;;;\n" + dots);
  const std::string made = "FN;DERIVED=TRUE:x\nFN;DERIVED=TRUE:y\n";
  expectBoth(made, none + made, made);
  expectBoth("FN;DERIVED=TRUE:x\nFN;DERIVED=TRUE:y\nFN: \n", none + made, made);
  expectBoth("FN;DERIVED=TRUE;A=\x02:x\nFN;DERIVED=TRUE:y\n",
             none +
                 "FN;X-DERIVED=TRUE:x\nX-OX-LINE:FN%3BDERIVED%3DTRUE%3BA%3D%02%3Ax\n"
                 "FN;DERIVED=TRUE:y\n",
             "FN;DERIVED=TRUE:x\nX-OX-LINE:FN%3BDERIVED%3DTRUE%3BA%3D%02%3Ax\n"
             "FN;DERIVED=TRUE:y\n");
}

TEST(CardThrough, AFormattedNameOfBlanksIsNone) {
  EXPECT_EQ(linesOf(propertiesOf("4.0", "FN: \nFN:Ann Lee\nFN:\x01\n"), {}),
            "N:Lee;Ann;;;\nFN:Ann Lee\n");
}

// A name is text: what says that it is base64 was not decoded, and may hold blanks.
TEST(CardThrough, AFormattedNameInBase64IsPreservedAsText) {
  const std::string text = "N:Lee;Ann;;;\nFN;TYPE=JPEG: Ann Lee\n";
  for (const std::string line :
       {"FN;JPEG;BASE64: Ann Lee\n\n", "FN;TYPE=JPEG;ENCODING=b: Ann Lee\n"}) {
    EXPECT_EQ(linesOf(propertiesOf("2.1", line), {}), text) << line;
  }
  EXPECT_EQ(linesOf(propertiesOf("3.0", text), {}), text);
}

TEST(CardThrough, AFormerNameOfTheCompanyIsNobodysName) {
  auto bag = propertiesOf("3.0", "FN:Firm\nFN:The Firm\nORG:Firm\n");
  EXPECT_EQ(linesOf(bag, {}), "N:;;;;\nFN:Firm\nORG:Firm\nFN:The Firm\n");
  bag.set(property_id::kOrganization, Object("Works"));
  EXPECT_EQ(linesOf(bag, {}), "N:;;;;\nFN:Works\nORG:Works\n");
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

TEST(CardThrough, KindOfAnUnknownPictureIsWhatTheCardSaid) {
  const auto photo = makeData("abc");
  for (const auto& [version, line] : {std::pair("3.0", "PHOTO;ENCODING=b;TYPE=X-OWN:YWJj\n"),
                                      std::pair("2.1", "PHOTO;X-OWN;ENCODING=BASE64:YWJj\n"),
                                      std::pair("4.0", "PHOTO:data:Image/X-Own;base64,YWJj\n")}) {
    const auto bag = propertiesOf(version, line);
    EXPECT_EQ(linesOf(bag, {}, photo),
              "N:;;;;\nFN;X-DERIVED=TRUE:?\nPHOTO;ENCODING=b;TYPE=X-OWN:YWJj\n");
    EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}, photo),
              "FN;DERIVED=TRUE:?\nPHOTO:data:image/x-own;base64,YWJj\n");
    EXPECT_NE(linesOf(bag, {}, makeData("\xFF\xD8\xFF")).find("TYPE=JPEG"), std::string::npos);
  }
}

TEST(CardThrough, RelationsAreSaidInTheWordsOfTheVersion) {
  expectThrough({
      {"4.0", "RELATED;TYPE=colleague;VALUE=text:Di\n", "X-ABRELATEDNAMES;TYPE=colleague:Di\n",
       "RELATED;VALUE=text;TYPE=colleague:Di\n"},
      {"4.0", "RELATED;TYPE=colleague,friend;VALUE=text:Di\n",
       "item1.X-ABRELATEDNAMES;TYPE=colleague;TYPE=friend:Di\nitem1.X-ABLabel:_$!<Friend>!$_\n",
       "RELATED;VALUE=text;TYPE=colleague;TYPE=friend:Di\n"},
      {"4.0", "RELATED;VALUE=text:http://x\n", "X-ABRELATEDNAMES:http://x\n",
       "RELATED;VALUE=text:http://x\n"},
      {"4.0", "RELATED;TYPE=friend;VALUE=uri:mailto:x@y\n",
       "RELATED;TYPE=friend;VALUE=uri:mailto:x@y\n", "RELATED;TYPE=friend;VALUE=uri:mailto:x@y\n"},
      {"3.0", "X-ABRELATEDNAMES;TYPE=friend:Di\n", "X-ABRELATEDNAMES;TYPE=friend:Di\n",
       "X-ABRELATEDNAMES;TYPE=friend:Di\n"},
  });
}

}  // namespace
}  // namespace ox::vcard
