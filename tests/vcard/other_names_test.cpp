#include <gtest/gtest.h>

#include "card_text.hpp"
#include "ox/records/property_keys.hpp"
#include "written_card.hpp"

// Properties that many programs write under names of their own, and those of newer standards.

namespace ox::vcard {
namespace {

const std::string kNames = "N:Ray;Al;;;\nFN:Al Ray\n";

struct NameRow {
  std::string line;
  std::string value;  // of the record
  std::string in40;
};

std::string account(const std::string& user, const std::string& service) {
  return "InstantMessage[-]={InstantMessageUsername=" + user +
         (service.empty() ? "" : ",InstantMessageService=" + service) + "}\n";
}

// Each goes out as it came, and in 4.0 as what 4.0 has for it.
TEST(CardOfAnotherProgram, GivesValuesAndGoesOutAsItCame) {
  const std::string spouse = "RelatedNames[_$!<Spouse>!$_]=Ann\n";
  const std::string inSpouse = "RELATED;VALUE=text;TYPE=spouse:Ann\n";
  const std::string anniversary = "OtherDates[_$!<Anniversary>!$_]=1990-05-17\n";
  const std::string inAnniversary = "ANNIVERSARY:19900517\n";
  const auto labelled = [](const std::string& line, const std::string& label) {
    return "item1." + line + "item1.X-ABLabel:" + label + "\n";
  };
  const std::string android = "X-ANDROID-CUSTOM:vnd.android.cursor.item/";
  const std::string end = ";;;;;;;;;;;;;\n";
  const std::vector<NameRow> rows = {
      {"X-SIP:alice@x\n", account("alice@x", "SIP"), "IMPP;X-SERVICE-TYPE=SIP:sip:alice@x\n"},
      {"X-SIP:sip:alice@x\n", account("alice@x", "SIP"), "IMPP;X-SERVICE-TYPE=SIP:sip:alice@x\n"},
      {"X-GTALK:a\n", account("a", "GoogleTalk"), "IMPP;X-SERVICE-TYPE=GoogleTalk:xmpp:a\n"},
      {"X-GOOGLE-TALK:a\n", account("a", "GoogleTalk"), "IMPP;X-SERVICE-TYPE=GoogleTalk:xmpp:a\n"},
      {"X-AIM;TYPE=HOME;X-A=b:a\\,b\n",
       "InstantMessage[_$!<Home>!$_]={InstantMessageUsername=a,b,InstantMessageService=AIM}\n",
       "IMPP;TYPE=home;X-A=b;X-SERVICE-TYPE=AIM:aim:a%2Cb\n"},
      {"X-GROUPWISE:a\n", account("a", "GroupWise"), "IMPP;X-SERVICE-TYPE=GroupWise:x-apple:a\n"},
      {"X-TWITTER:a\n", account("a", "Twitter"), "IMPP;X-SERVICE-TYPE=Twitter:x-apple:a\n"},
      {"X-MS-IMADDRESS:a@x\n", account("a@x", ""), "IMPP:x-apple:a@x\n"},
      {"X-KADDRESSBOOK-X-IMAddress:a@x\n", account("a@x", ""), "IMPP:x-apple:a@x\n"},
      {"X-SPOUSE:Ann\n", spouse, inSpouse},
      {"X-EVOLUTION-SPOUSE:Ann\n", spouse, inSpouse},
      {"X-MS-SPOUSE;TYPE=N:Ann\n", spouse,
       labelled("RELATED;VALUE=text;TYPE=N:Ann\n", "_$!<Spouse>!$_")},
      {"X-KADDRESSBOOK-X-SpousesName:Ann\n", spouse, inSpouse},
      {"X-KADDRESSBOOK-X-ManagersName:Ann\n", "RelatedNames[_$!<Manager>!$_]=Ann\n",
       labelled("RELATED;VALUE=text:Ann\n", "_$!<Manager>!$_")},
      {"X-KADDRESSBOOK-X-AssistantsName:Ann\n", "RelatedNames[_$!<Assistant>!$_]=Ann\n",
       labelled("RELATED;VALUE=text:Ann\n", "_$!<Assistant>!$_")},
      {"X-ANNIVERSARY:1990-05-17\n", anniversary, inAnniversary},
      {"X-EVOLUTION-ANNIVERSARY:1990-05-17\n", anniversary, inAnniversary},
      {"X-MS-ANNIVERSARY:19900517\n", anniversary, inAnniversary},
      {"X-KADDRESSBOOK-X-Anniversary:1990-05-17\n", anniversary, inAnniversary},
      {"ANNIVERSARY:1990-05-17\n", anniversary, inAnniversary},
      {android + "nickname;Allie;1;" + end, "Nickname=Allie\n", "NICKNAME:Allie\n"},
      {android + "relation;Ann;14;" + end, spouse, inSpouse},
      {android + "relation;Ann;0;Aunt" + end, "RelatedNames[Aunt]=Ann\n",
       labelled("RELATED;VALUE=text:Ann\n", "Aunt")},
      {android + "contact_event;1990-05-17;1;" + end, anniversary, inAnniversary},
      {android + "contact_event;--05-17;0;Met\\, once" + end, "OtherDates[Met, once]=--05-17\n",
       labelled("X-ABDATE:--0517\n", "Met\\, once")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    const auto read = textOfCard("3.0", row.line);
    EXPECT_EQ(read.substr(0, read.find("kept=")), row.value);
    const auto bag = propertiesOf("3.0", kNames + row.line);
    const auto in30 = linesOf(bag, {});
    EXPECT_EQ(in30, kNames + row.line);
    EXPECT_EQ(linesOf(propertiesOf("3.0", in30), {}), in30);
    const auto in40 = linesOf(bag, {.version = CardVersion::V40});
    EXPECT_EQ(in40, kNames + row.in40);
    EXPECT_EQ(linesOf(propertiesOf("4.0", in40), {.version = CardVersion::V40}), in40);
  }
}

TEST(CardOfAnotherProgram, ExtensionsOf40GoOutAsTheyCame) {
  for (const std::string line :
       {"X-AIM:a\n", "X-SPOUSE:Ann\n", "X-EVOLUTION-ANNIVERSARY:19900517\n"}) {
    const auto bag = propertiesOf("4.0", kNames + line);
    EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), kNames + line);
    EXPECT_EQ(linesOf(bag, {.version = CardVersion::V30}), kNames + line);
  }
}

TEST(CardOfAnotherProgram, TheNameWithABlankIsReadAndNotWritten) {
  expectRows(
      {{"3.0", "X-GOOGLE TALK:a\n", account("a", "GoogleTalk") + "kept=;19#1=3=X-GOOGLE TALK:a\n"},
       {"2.1", "X-GOOGLE TALK;HOME:a\n",
        "InstantMessage[_$!<Home>!$_]={InstantMessageUsername=a,"
        "InstantMessageService=GoogleTalk}\nkept=;19#1=3=X-GOOGLE TALK;TYPE=HOME:a\n"}});
  EXPECT_EQ(linesOf(propertiesOf("3.0", kNames + "X-GOOGLE TALK:a\n"), {}),
            kNames + "IMPP;X-SERVICE-TYPE=GoogleTalk:xmpp:a\n");
}

TEST(CardOfAnotherProgram, LabelsOfGroupsStayWithTheLine) {
  for (const std::string lines :
       {"item1.X-AIM:a\nitem1.X-ABLabel:Boat\n",
        "item1.IMPP;X-SERVICE-TYPE=AIM:aim:a\nitem1.X-ABLabel:Boat\nitem1.X-AIM:a\n"}) {
    EXPECT_EQ(linesOf(propertiesOf("3.0", kNames + lines), {}), kNames + lines);
    const auto read = textOfCard("3.0", lines);
    EXPECT_EQ(read.substr(0, read.find("kept=")),
              "InstantMessage[Boat]={InstantMessageUsername=a,InstantMessageService=AIM}\n");
  }
}

TEST(CardOfAnotherProgram, DatesInAnUnusualSpellingGoOutAsOurs) {
  for (const std::string name : {"ANNIVERSARY", "X-ANNIVERSARY"}) {
    EXPECT_EQ(linesOf(propertiesOf("3.0", kNames + name + ":June 12, 1999\n"), {}),
              kNames + "item1.X-ABDATE:1999-06-12\nitem1.X-ABLabel:_$!<Anniversary>!$_\n");
  }
}

TEST(CardOfAnotherProgram, WhatIsEditedIsWrittenAsOurs) {
  auto bag = propertiesOf("3.0", kNames + "X-SPOUSE:Ann\nX-SPOUSE:Bo\n");
  auto held = *std::get<MultiValuePtr>(*bag.find(property_id::kRelatedNames));
  held.entries[0].value = Object("Anna");
  bag.set(property_id::kRelatedNames, std::make_shared<const MultiValue>(held));
  EXPECT_EQ(linesOf(bag, {}), kNames +
                                  "item1.X-ABRELATEDNAMES:Anna\nitem1.X-ABLabel:_$!<Spouse>!$_\n"
                                  "X-SPOUSE:Bo\n");
  auto named =
      propertiesOf("3.0", kNames + "X-ANDROID-CUSTOM:vnd.android.cursor.item/nickname;Allie;1;;\n");
  named.set(property_id::kNickname, Object("Bo"));
  EXPECT_EQ(linesOf(named, {}), kNames + "NICKNAME:Bo\n");
}

// A program that writes a property of the standard and one of its own says one thing.
TEST(CardOfAnotherProgram, WhatTwoLinesSayIsOneEntry) {
  const std::string day = "OtherDates[_$!<Anniversary>!$_]=1990-05-17\n";
  const auto valuesOf = [](const std::string& version, const std::string& lines) {
    const auto read = textOfCard(version, lines);
    return read.substr(0, read.find("kept="));
  };
  const std::string two = "ANNIVERSARY:19900517\nX-ANNIVERSARY:1990-05-17\n";
  EXPECT_EQ(valuesOf("4.0", two), day);
  EXPECT_EQ(valuesOf("3.0", "X-ANNIVERSARY:1990-05-17\nX-EVOLUTION-ANNIVERSARY:19900517\n"), day);
  EXPECT_EQ(valuesOf("3.0", "X-ABDATE:2001-02-03\n" + two), "OtherDates[-]=2001-02-03\n" + day);
  EXPECT_EQ(valuesOf("3.0",
                     "X-SPOUSE:Ann\nitem1.X-ABRELATEDNAMES:Ann\n"
                     "item1.X-ABLabel:_$!<Spouse>!$_\nX-SPOUSE:Bo\n"),
            "RelatedNames[_$!<Spouse>!$_]=Ann\nRelatedNames[_$!<Spouse>!$_]=Bo\n");
  EXPECT_EQ(valuesOf("3.0", "X-JABBER:a@x\nIMPP:xmpp:a@x\n"), account("a@x", "Jabber"));
  EXPECT_EQ(valuesOf("3.0", "X-ANNIVERSARY:1990-05-17\nX-ANNIVERSARY:1991-05-17\n"),
            day + "OtherDates[_$!<Anniversary>!$_]=1991-05-17\n");
  auto bag = propertiesOf("4.0", kNames + two);
  EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), kNames + two);
  auto held = *std::get<MultiValuePtr>(*bag.find(property_id::kOtherDates));
  held.entries[0].value = *Date::fromText("1991-05-17");
  bag.set(property_id::kOtherDates, std::make_shared<const MultiValue>(held));
  EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), kNames + "ANNIVERSARY:19910517\n");
  // What a card says twice in the same way stays twice.
  const std::string twice =
      "IMPP;X-SERVICE-TYPE=AIM:aim:a\nX-AIM:a\nIMPP;X-SERVICE-TYPE=AIM:aim:a\n";
  EXPECT_EQ(valuesOf("3.0", twice), account("a", "AIM") + account("a", "AIM"));
  EXPECT_EQ(linesOf(propertiesOf("3.0", kNames + twice), {}),
            kNames + "IMPP;X-SERVICE-TYPE=AIM:aim:a\nIMPP;X-SERVICE-TYPE=AIM:aim:a\nX-AIM:a\n");
  // Two values that only look alike in a line.
  const auto alike = linesOf(propertiesOf("3.0", kNames + "X-SPOUSE:An\x01n\nX-SPOUSE:Ann\n"), {});
  EXPECT_EQ(valuesOf("3.0", alike),
            "First=Al\nLast=Ray\nRelatedNames[_$!<Spouse>!$_]=An\x01n\n"
            "RelatedNames[_$!<Spouse>!$_]=Ann\n");
  const std::string nicknames =
      "NICKNAME:Allie\nX-ANDROID-CUSTOM:vnd.android.cursor.item/nickname;Allie;1;;\n";
  EXPECT_EQ(valuesOf("3.0", nicknames), "Nickname=Allie\n");
  EXPECT_EQ(linesOf(propertiesOf("3.0", kNames + nicknames), {}), kNames + nicknames);
}

TEST(CardOfAnotherProgram, WordsOfItsOwnAreLabels) {
  const auto same = [](const std::string& line) { return ThroughRow{"3.0", line, line, line}; };
  expectRows({
      {"2.1", "TEL;X-Home:1\n", "Phone[Home]=1\nkept=;16#1;TYPE=X-Home\n"},
      {"3.0", "TEL;TYPE=X-Work:1\nEMAIL;TYPE=INTERNET,X-Boat:a@b\nADR;TYPE=X-Boat:;;a\n",
       "Phone[Work]=1\nEmail[Boat]=a@b\nAddress[Boat]={Street=a}\nkept=;16#1;TYPE=X-Work\n"
       "kept=;17#1;TYPE=X-Boat\nkept=;21#1;TYPE=X-Boat\n"},
      {"3.0", "TEL;TYPE=X-Boat,CELL:1\n", "Phone[_$!<Mobile>!$_]=1\nkept=;16#1;TYPE=X-Boat\n"},
      {"3.0", "TEL;TYPE=X-EVOLUTION-CALLBACK:1\n",
       "Phone[-]=1\nkept=;16#1;TYPE=X-EVOLUTION-CALLBACK\n"},
      {"3.0", "item1.TEL;TYPE=X-A:1\nitem1.X-ABLabel:Boat\n",
       "Phone[Boat]=1\nkept=;16#1;TYPE=X-A\n"},
  });
  expectThrough({same("TEL;TYPE=X-Home:1\n"), same("EMAIL;TYPE=X-Boat;X-A=b:a@b\n"),
                 same("ADR;TYPE=X-Boat:;;a;;;;\n"), same("URL;TYPE=X-Boat:http://x\n"),
                 same("item1.TEL;TYPE=X-A:1\nitem1.X-ABLabel:Boat\n")});
  auto bag = propertiesOf("3.0", kNames + "TEL;TYPE=X-Boat:1\n");
  auto held = *std::get<MultiValuePtr>(*bag.find(property_id::kPhone));
  held.entries[0].label = kABWorkLabel;
  bag.set(property_id::kPhone, std::make_shared<const MultiValue>(held));
  EXPECT_EQ(textOfCard("3.0", linesOf(bag, {})),
            "First=Al\nLast=Ray\nPhone[_$!<Work>!$_]=1\nkept=;16#1;TYPE=X-Boat\n");
}

TEST(CardOfANewerStandard, KeepsWhatRfc9554Adds) {
  const std::string lines =
      "TITLE;AUTHOR=\"mailto:a@b\";CREATED=20220705T092100Z:Boss\n"
      "SOCIALPROFILE;SERVICE-TYPE=Mastodon:https://x.example/@al\n"
      "SOCIALPROFILE;VALUE=text;SERVICE-TYPE=Some Site:al94\n"
      "CREATED:20220705T093412Z\nGRAMGENDER:animate\nLANGUAGE:de\nPRONOUNS;LANGUAGE=en:they/them\n";
  EXPECT_EQ(linesOf(propertiesOf("4.0", kNames + lines), {.version = CardVersion::V40}),
            kNames + lines);
  const auto in30 = linesOf(propertiesOf("4.0", kNames + lines), {});
  EXPECT_NE(in30.find("X-SOCIALPROFILE;TYPE=Mastodon:https://x.example/@al\n"
                      "X-SOCIALPROFILE;TYPE=\"Some Site\";X-USER=al94:x-apple:al94\n"),
            in30.npos)
      << in30;
  expectRows({{"4.0", "SOCIALPROFILE;SERVICE-TYPE=Mastodon;USERNAME=al:https://x.example/@al\n",
               "SocialProfile[-]={serviceName=Mastodon,username=al,url=https://x.example/@al}\n"
               "kept=;20#1=4=SOCIALPROFILE;SERVICE-TYPE=Mastodon;USERNAME=al:https://x.example/"
               "@al\n"}});
  // No word of TYPE is its service.
  const std::string typed = "SOCIALPROFILE;TYPE=own:https://x.example/@al\n";
  const auto bag = propertiesOf("4.0", kNames + typed);
  EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), kNames + typed);
  EXPECT_EQ(linesOf(bag, {}), kNames + "X-SOCIALPROFILE:https://x.example/@al\n");
  const std::string service = "IMPP;SERVICE-TYPE=Jabber:xmpp:a@x\n";
  EXPECT_EQ(linesOf(propertiesOf("4.0", kNames + service), {.version = CardVersion::V40}),
            kNames + service);
}

TEST(CardOfANewerStandard, NamesHaveTwoMoreComponents) {
  const std::string name = "N:Ray,Sol;Al;;;Jr.;Sol;Jr.\nFN:Al Ray Sol Jr.\n";
  expectRows(
      {{"4.0", name, "First=Al\nLast=Ray Sol\nSuffix=Jr.\nkept=;3#0:Ray,Sol;Al;;;Jr.;Sol;Jr.\n"}});
  const auto bag = propertiesOf("4.0", name);
  EXPECT_EQ(linesOf(bag, {.version = CardVersion::V40}), name);
  const auto in30 = linesOf(bag, {});
  EXPECT_EQ(in30,
            "N:Ray,Sol;Al;;;Jr.\nFN:Al Ray Sol Jr.\n"
            "X-OX-LINE:%3B3%230%3ARay%2CSol%3BAl%3B%3B%3BJr.%3BSol%3BJr.\n");
  EXPECT_EQ(linesOf(propertiesOf("3.0", in30), {.version = CardVersion::V40}), name);
}

TEST(CardOfANewerStandard, ComponentsOfControlCharactersAreNone) {
  EXPECT_EQ(linesOf(propertiesOf("4.0", "N:Ray;Al;;;;\x0C\nFN:Al Ray\nADR:;;a;;;;;\x0C\n"),
                    {.version = CardVersion::V40}),
            "N:Ray;Al;;;\nFN:Al Ray\nADR:;;a;;;;\n");
}

// N in another script is none of the name, but how it is read.
TEST(CardOfANewerStandard, PhoneticNamesAreReadings) {
  const std::string name = "N;ALTID=1;LANGUAGE=zh-Hant:孫;中山;;;\n";
  const std::string reading = "N;ALTID=1;PHONETIC=jyut;SCRIPT=Latn:syun1;zung1saan1;;;\n";
  const std::string values =
      "First=中山\nLast=孫\nFirstPhonetic=zung1saan1\nLastPhonetic=syun1\nkept=" + reading +
      "kept=;3#0;ALTID=1;LANGUAGE=zh-Hant\n";
  expectRows({{"4.0", name + reading, values}, {"4.0", reading + name, values}});
  auto bag = propertiesOf("4.0", name + reading);
  EXPECT_EQ(
      linesOf(bag, {.version = CardVersion::V40}),
      name + "FN:孫中山\nX-PHONETIC-FIRST-NAME:zung1saan1\nX-PHONETIC-LAST-NAME:syun1\n" + reading);
  const auto in40 = linesOf(bag, {.version = CardVersion::V40});
  EXPECT_EQ(linesOf(propertiesOf("4.0", in40), {.version = CardVersion::V40}), in40);
  bag.set(property_id::kFirstPhonetic, PropertyValue());
  bag.set(property_id::kLastPhonetic, PropertyValue());
  EXPECT_NE(linesOf(bag, {.version = CardVersion::V40}).find("X-OX-LINE:N%3BALTID"),
            std::string::npos);
}

}  // namespace
}  // namespace ox::vcard
