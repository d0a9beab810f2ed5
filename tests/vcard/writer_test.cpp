#include "ox/vcard/write/writer.hpp"

#include <gtest/gtest.h>

#include "card_text.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/property_keys.hpp"
#include "written_card.hpp"

using namespace std::string_literals;

namespace ox::vcard {
namespace {

PropertyBag multi(PropertyId property, std::vector<MultiEntry> entries, std::uint64_t primary = 0) {
  PropertyBag bag;
  for (std::size_t i = 0; i < entries.size(); ++i) entries[i].identifier = i + 1;
  bag.set(property, std::make_shared<const MultiValue>(MultiValue{std::move(entries), primary}));
  return bag;
}

TEST(CardWriter, WholeCardIsWrittenByteForByte) {
  auto bag =
      propertiesOf("3.0",
                   "N:Ray;Al;;;\nORG:ACME\\, Inc.;Lab;5\nBDAY:1990-05-17\nTEL;TYPE=CELL,pref:1\n"
                   "NOTE:a\\nb;c\nX-OWN;P=q:kept\nUID:u-1\n");
  const auto photo = makeData("\xFF\xD8\xFF\x01");
  EXPECT_EQ(writeCard(bag, photo, {}),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Ray;Al;;;\r\nFN:Al Ray\r\nORG:ACME\\, Inc.;Lab;5\r\n"
            "BDAY:1990-05-17\r\nTEL;TYPE=CELL;TYPE=pref:1\r\nNOTE:a\\nb\\;c\r\n"
            "PHOTO;ENCODING=b;TYPE=JPEG:/9j/AQ==\r\nUID:u-1\r\nX-OWN;P=q:kept\r\nEND:VCARD\r\n");
  EXPECT_EQ(writeCard(bag, photo, {.version = CardVersion::V40}),
            "BEGIN:VCARD\r\nVERSION:4.0\r\nN:Ray;Al;;;\r\nFN:Al Ray\r\nORG:ACME\\, Inc.;Lab;5\r\n"
            "BDAY:19900517\r\nTEL;TYPE=cell;PREF=1:1\r\nNOTE:a\\nb\\;c\r\n"
            "PHOTO:data:image/jpeg;base64,/9j/AQ==\r\nUID;VALUE=text:u-1\r\nX-OWN;P=q:kept\r\n"
            "END:VCARD\r\n");
  EXPECT_EQ(writeCard(bag, photo, {}), writeCard(bag, photo, {}));
}

TEST(CardWriter, FoldsAtSeventyFiveOctetsBetweenCharactersAndEscapes) {
  const auto note = [](const std::string& text) {
    PropertyBag bag;
    bag.set(property_id::kNote, Object(text));
    const auto card = writeCard(bag, nullptr, {});
    const auto from = card.find("NOTE:");
    return card.substr(from, card.find("END:VCARD") - from);
  };
  const std::string a70(70, 'a');
  const std::string b74(74, 'b');
  const std::string front = "NOTE:" + a70.substr(1);
  EXPECT_EQ(note(a70), "NOTE:" + a70 + "\r\n");
  EXPECT_EQ(note(a70 + "b"), "NOTE:" + a70 + "\r\n b\r\n");
  EXPECT_EQ(note(a70 + b74 + "c"), "NOTE:" + a70 + "\r\n " + b74 + "\r\n c\r\n");
  EXPECT_EQ(note(a70.substr(1) + "é"), front + "\r\n é\r\n");
  EXPECT_EQ(note(a70.substr(3) + "😀"), "NOTE:" + a70.substr(3) + "\r\n 😀\r\n");
  EXPECT_EQ(note(a70.substr(1) + ","), front + "\r\n \\,\r\n");
  EXPECT_EQ(note(a70.substr(2) + "\\\\"), "NOTE:" + a70.substr(2) + "\\\\\r\n \\\\\r\n");
}

TEST(CardWriter, FullNameIsNeverMissing) {
  const std::string derived30 = "N:;;;;\nFN;X-DERIVED=TRUE:";
  expectWritten({
      {{}, derived30 + "?\n", "FN;DERIVED=TRUE:?\n"},
      {propertiesOf("3.0", "ORG:ACME\nNICKNAME:Al\n"), "N:;;;;\nFN:ACME\nNICKNAME:Al\nORG:ACME\n",
       "FN:ACME\nNICKNAME:Al\nORG:ACME\n"},
      {propertiesOf("3.0", "NICKNAME:Al\nEMAIL:a@b\n"), derived30 + "Al\nNICKNAME:Al\nEMAIL:a@b\n",
       "FN;DERIVED=TRUE:Al\nNICKNAME:Al\nEMAIL:a@b\n"},
      {propertiesOf("3.0", "TEL:1\nEMAIL:a@b\n"), derived30 + "a@b\nTEL:1\nEMAIL:a@b\n",
       "FN;DERIVED=TRUE:a@b\nTEL:1\nEMAIL:a@b\n"},
      {propertiesOf("3.0", "N:山田;太郎;;;\n"), "N:山田;太郎;;;\nFN:山田太郎\n",
       "N:山田;太郎;;;\nFN:山田太郎\n"},
      {propertiesOf("4.0", "FN:Annie\nFN;LANGUAGE=de:Anna\nN:Lee;Ann;;;\n"),
       "N:Lee;Ann;;;\nFN:Annie\nFN;LANGUAGE=de:Anna\n",
       "N:Lee;Ann;;;\nFN:Annie\nFN;LANGUAGE=de:Anna\n"},
  });
}

TEST(CardWriter, LabelsAreTypesWhereTheVersionHasAWord) {
  const std::string n30 = "N:;;;;\nFN;X-DERIVED=TRUE:";
  const std::string n40 = "FN;DERIVED=TRUE:";
  expectWritten({
      {multi(property_id::kPhone,
             {{0, Text(kABPhoneMobileLabel), "1"},
              {0, Text("_$!<OtherFAX>!$_"), "2"},
              {0, Text(kABPhoneiPhoneLabel), "3"},
              {0, Text("Boat, my"), "4"},
              {0, std::nullopt, "5"}},
             4),
       n30 + "1\nTEL;TYPE=CELL:1\nTEL;TYPE=FAX:2\nTEL;TYPE=IPHONE;TYPE=CELL:3\n"
             "item1.TEL;TYPE=pref:4\nitem1.X-ABLabel:Boat\\, my\nTEL:5\n",
       n40 + "1\nTEL;TYPE=cell:1\nTEL;TYPE=fax:2\nitem1.TEL:3\n"
             "item1.X-ABLabel:_$!<iPhone>!$_\nitem2.TEL;PREF=1:4\nitem2.X-ABLabel:Boat\\, "
             "my\nTEL:5\n"},
      {multi(property_id::kURLs, {{0, Text(kABHomePageLabel), "http://x/a,b;c"}}),
       n30 + "?\nitem1.URL:http://x/a,b;c\nitem1.X-ABLabel:_$!<HomePage>!$_\n",
       n40 + "?\nitem1.URL:http://x/a,b;c\nitem1.X-ABLabel:_$!<HomePage>!$_\n"},
      {multi(property_id::kRelatedNames,
             {{0, Text(kABSpouseLabel), "Ann"}, {0, Text(kABFatherLabel), "Bo"}}),
       n30 + "?\nitem1.X-ABRELATEDNAMES:Ann\nitem1.X-ABLabel:_$!<Spouse>!$_\n"
             "item2.X-ABRELATEDNAMES:Bo\nitem2.X-ABLabel:_$!<Father>!$_\n",
       n40 + "?\nRELATED;VALUE=text;TYPE=spouse:Ann\n"
             "item1.RELATED;VALUE=text:Bo\nitem1.X-ABLabel:_$!<Father>!$_\n"},
      // A group that a kept line uses is not taken for another.
      {propertiesOf("3.0", "item3.X-OWN:1\nitem1.TEL;TYPE=WORK:1\nitem1.X-ABLabel:Boat\n"),
       n30 + "1\nitem4.TEL;TYPE=WORK:1\nitem4.X-ABLabel:Boat\nitem3.X-OWN:1\n",
       n40 + "1\nitem4.TEL;TYPE=WORK:1\nitem4.X-ABLabel:Boat\nitem3.X-OWN:1\n"},
  });
}

TEST(CardWriter, EntriesOfDictionaries) {
  const std::string n30 = "N:;;;;\nFN;X-DERIVED=TRUE:?\n";
  const std::string n40 = "FN;DERIVED=TRUE:?\n";
  const std::string address =
      "item1.ADR;TYPE=HOME:Box 9;Rear;1 Way\\nFlat\\; 2;Town;;9;\n"
      "item1.X-ABADR:de\n";
  const std::string profile =
      "X-SOCIALPROFILE;TYPE=twitter;X-USER=\"a^'b:\";X-USERID=7:http://t/u,v\n"
      "X-SOCIALPROFILE;X-USER=me:x-apple:me\n";
  expectWritten({
      {propertiesOf("3.0", address), n30 + address,
       n40 + "item1.ADR;TYPE=home" + address.substr(19)},
      {propertiesOf("3.0", profile), n30 + profile, n40 + profile},
      {propertiesOf("3.0",
                    "X-SKYPE:s, t\nIMPP;X-SERVICE-TYPE=Own One:x-apple:a%40b\nIMPP:x-apple:c\n"),
       n30 + "X-SKYPE:s\\, t\nIMPP;X-SERVICE-TYPE=Own One:x-apple:a%40b\n"
             "IMPP:x-apple:c\n",
       n40 + "IMPP;X-SERVICE-TYPE=Skype:skype:s%2C%20t\nIMPP;X-SERVICE-TYPE=Own One:x-apple:a%40b\n"
             "IMPP:x-apple:c\n"},
  });
}

TEST(CardWriter, DatesWithoutYearHaveTheFormOfTheVersion) {
  const auto exact = [](const std::string& lines) {
    return lines.substr(0, lines.find("X-OX-PROPERTY:"));
  };
  struct DateRow {
    std::string date;
    std::string in30;
    std::string in40;
  };
  const std::vector<DateRow> rows = {
      {"1990-05-17", "BDAY:1990-05-17\n", "BDAY:19900517\n"},
      {"--02-29", "BDAY;X-APPLE-OMIT-YEAR=1604:1604-02-29\n", "BDAY:--0229\n"},
      {"---17", "", "BDAY:---17\n"},
      {"1990-05", "", "BDAY:1990-05\n"},
      {"1990", "", "BDAY:1990\n"},
      {"--05", "", "BDAY:--05\n"},
      {"1990-05-17T10:15:00+02:00", "BDAY:1990-05-17T10:15:00+02:00\n",
       "BDAY:19900517T101500+0200\n"},
      {"1990-05-17T23:59:60Z", "BDAY:1990-05-17T23:59:60Z\n", "BDAY:19900517T235960Z\n"},
  };
  for (const auto& row : rows) {
    PropertyBag bag;
    bag.set(property_id::kBirthday, Object(*Date::fromText(row.date)));
    const auto in30 = linesOf(bag, {});
    EXPECT_EQ(exact(in30), "N:;;;;\nFN;X-DERIVED=TRUE:?\n" + row.in30);
    EXPECT_EQ(in30.find("X-OX-PROPERTY:") != in30.npos, row.in30.empty()) << row.date;
    EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), "FN;DERIVED=TRUE:?\n" + row.in40);
  }
  const auto dates = propertiesOf("4.0", "ANNIVERSARY:20010203\nANNIVERSARY:--0405\n");
  EXPECT_EQ(linesOf(dates, {.version = CardVersion::V40}),
            "FN;DERIVED=TRUE:?\nANNIVERSARY:20010203\n"
            "item1.X-ABDATE:--0405\nitem1.X-ABLabel:_$!<Anniversary>!$_\n");
}

TEST(CardWriter, PicturesAreNamedByTheirFirstBytes) {
  struct Picture {
    std::string bytes;
    std::string in30;
    std::string in40;
  };
  const std::vector<Picture> rows = {
      {"\x89PNG", ";ENCODING=b;TYPE=PNG:iVBORw==", ":data:image/png;base64,iVBORw=="},
      {"II*\0"s, ";ENCODING=b;TYPE=TIFF:SUkqAA==", ":data:image/tiff;base64,SUkqAA=="},
      {"GIF89a", ";ENCODING=b;TYPE=GIF:R0lGODlh", ":data:image/gif;base64,R0lGODlh"},
      {"RIFF\1\0\0\0WEBP"s, ";ENCODING=b;TYPE=WEBP:UklGRgEAAABXRUJQ",
       ":data:image/webp;base64,UklGRgEAAABXRUJQ"},
      {"\0\0\0\x18"
       "ftypheic"s,
       ";ENCODING=b;TYPE=HEIC:AAAAGGZ0eXBoZWlj", ":data:image/heic;base64,AAAAGGZ0eXBoZWlj"},
      {"BM\1\2\3\4\0\0\0\0"s,
       ";ENCODING=b;TYPE=BMP:Qk0BAgMEAAAAAA==", ":data:image/bmp;base64,Qk0BAgMEAAAAAA=="},
      {"<?xml?><svg/>", ";ENCODING=b;TYPE=SVG+XML:PD94bWw/PjxzdmcvPg==",
       ":data:image/svg+xml;base64,PD94bWw/PjxzdmcvPg=="},
      {"BMW", ";ENCODING=b:Qk1X", ":data:application/octet-stream;base64,Qk1X"},
      {"abc", ";ENCODING=b:YWJj", ":data:application/octet-stream;base64,YWJj"},
  };
  for (const auto& row : rows) {
    const auto photo = makeData(row.bytes);
    EXPECT_EQ(linesOf({}, {}, photo), "N:;;;;\nFN;X-DERIVED=TRUE:?\nPHOTO" + row.in30 + "\n");
    EXPECT_EQ(linesOf({}, {.version = CardVersion::V40}, photo),
              "FN;DERIVED=TRUE:?\nPHOTO" + row.in40 + "\n");
  }
}

TEST(CardWriter, WhatTheVersionDoesNotAdmitIsWrapped) {
  const auto bag = propertiesOf("2.1",
                                "TITLE:x\nX_A;W:1\nBDAY:soon\nKEY;BASE64:AQID\nTEL;X-A=5\":1\n"
                                "LOGO;BASE64:AQ.D\nAGENT:\nBEGIN:VCARD\nN:a;b\nEND:VCARD\n");
  EXPECT_EQ(linesOf(bag, {}),
            "N:;;;;\nFN;X-DERIVED=TRUE:1\nTITLE:x\nTEL:1\nX-OX-LINE:X_A%3BTYPE%3DW%3A1\n"
            "X-OX-LINE:BDAY%3Asoon\nKEY;ENCODING=b:AQID\n"
            "X-OX-LINE:LOGO%3BENCODING%3Db%3AAQ.D\n"
            "AGENT:BEGIN:VCARD\\nN:a\\;b\\nEND:VCARD\nX-OX-LINE:%3B16%231%3BX-A%3D5%22\n");
  const auto in40 = linesOf(bag, {.version = CardVersion::V40});
  EXPECT_NE(in40.find("KEY:data:application/octet-stream;base64,AQID\n"
                      "X-OX-LINE:LOGO%3BENCODING%3Db%3AAQ.D\nX-OX-LINE:AGENT%3ABEGIN%3AVCARD"),
            std::string::npos)
      << in40;
  EXPECT_EQ(linesOf(bag, {.nestedCards = false}).find("AGENT"), std::string::npos);
}

TEST(CardWriter, ATypeThatStoodInQuotesMakesNoOtherParameter) {
  const auto lines = [](const char* phone) { return linesOf(propertiesOf("3.0", phone), {}); };
  EXPECT_EQ(lines("TEL;TYPE=\"a;X-B=c,d:e\":1\n"),
            "N:;;;;\nFN;X-DERIVED=TRUE:1\nTEL;TYPE=\"a;X-B=c\";TYPE=\"d:e\":1\n");
  EXPECT_EQ(lines("TEL;TYPE=\"a,b\"c,d\":1\n"),
            "N:;;;;\nFN;X-DERIVED=TRUE:1\nTEL;TYPE=a;TYPE=b;TYPE=c;TYPE=d:1\n");
}

// The value of the card cannot be said exactly, and what is said instead stands in a line of
// another program as well.
TEST(CardWriter, ALineThatSaysTheSameOfAReadingIsWrapped) {
  PropertyBag bag;
  bag.set(property_id::kFirstPhonetic, Object("a\vn"s));
  bag.set(property_id::kUnmodelledLines,
          Object(Array{Object("X-PHONETIC-FIRST-NAME:an"s), Object("X-PHONETIC-FIRST-NAME:en"s)}));
  EXPECT_NE(linesOf(bag, {}).find("X-PHONETIC-FIRST-NAME:an\n"
                                  "X-OX-LINE:X-PHONETIC-FIRST-NAME%3Aan\n"
                                  "X-PHONETIC-FIRST-NAME:en\n"),
            std::string::npos)
      << linesOf(bag, {});
}

TEST(CardWriter, ChangesOfAnotherProgramWinOverTheExactValue) {
  PropertyBag bag;
  bag.set(property_id::kNote, Object("a\vb"s));
  bag.set(property_id::kNickname, Object("c\vd"s));
  const auto custom = property_table::add("OxMacWriterProperty", kABStringProperty);
  bag.set(custom, Object("mine"));
  auto text = writeCard(bag, nullptr, {});
  const auto note = text.find("NOTE:ab");
  ASSERT_NE(note, std::string::npos);
  text.replace(note, 7, "NOTE:xy");
  const auto again = std::get<Card>(readAll(text).at(0)).properties;
  EXPECT_EQ(*again.text(property_id::kNote), "xy");
  EXPECT_EQ(*again.text(property_id::kNickname), "c\vd");
  EXPECT_EQ(*again.text(custom), "mine");
  // Damaged, it is kept as any other line.
  text.replace(text.find("X-OX-PROPERTY:") + 20, 1, "!");
  EXPECT_EQ(std::get<Card>(readAll(text).at(0)).properties.find(custom), nullptr);
}

TEST(CardWriter, GroupsNameTheirMembers) {
  PropertyBag bag;
  bag.set(property_id::kGroupName, Object("Choir, old"));
  const std::vector<std::string> members = {"1-2", "urn:uuid:3", "mailto:a@b"};
  std::string card;
  appendGroup(bag, members, {.uid = "urn:uuid:9"}, card);
  EXPECT_EQ(card,
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Choir\\, old;;;;\r\nFN:Choir\\, old\r\n"
            "X-ADDRESSBOOKSERVER-KIND:group\r\nUID:urn:uuid:9\r\n"
            "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:1-2\r\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:3\r\n"
            "X-ADDRESSBOOKSERVER-MEMBER:mailto:a@b\r\nEND:VCARD\r\n");
  card.clear();
  appendGroup({}, {"1-2"}, {.version = CardVersion::V40}, card);
  EXPECT_EQ(card,
            "BEGIN:VCARD\r\nVERSION:4.0\r\nFN;DERIVED=TRUE:?\r\nKIND:group\r\n"
            "MEMBER:urn:uuid:1-2\r\nEND:VCARD\r\n");
  EXPECT_EQ(textOfAll(card), "group\nmember=1-2\n");
}

TEST(CardWriter, RecordsHaveAUidOfTheirOwn) {
  const auto key = RecordKey::make(RecordKind::Group);
  const auto uid = uidOfRecord(key);
  EXPECT_TRUE(uid.starts_with("urn:uuid:")) << uid;
  EXPECT_EQ(recordOfUid(uid, RecordKind::Group), key.text());
  EXPECT_EQ(uidOfRecord(RecordKey::of("p1")), "p1");
  EXPECT_EQ(recordOfUid("p1", RecordKind::Person), "p1");
}

}  // namespace
}  // namespace ox::vcard
