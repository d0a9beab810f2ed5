#include <gtest/gtest.h>

#include "written_card.hpp"

// What a card says in the form of one version, written in that of the other.

namespace ox::vcard {
namespace {

TEST(FormsThrough, UnmodelledLinesTakeTheFormOfTheVersion) {
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
TEST(FormsThrough, UnmodelledLinesTakeTheFormOfTheOtherVersion) {
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

TEST(FormsThrough, BytesTakeTheFormOfTheVersion) {
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
TEST(FormsThrough, TextsTakeTheEscapesOfTheVersion) {
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

TEST(FormsThrough, KindOfAnUnknownPictureIsWhatTheCardSaid) {
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

TEST(FormsThrough, RelationsAreSaidInTheWordsOfTheVersion) {
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
