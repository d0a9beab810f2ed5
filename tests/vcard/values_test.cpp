#include <gtest/gtest.h>

#include "card_text.hpp"

using namespace std::string_literals;

namespace ox::vcard {
namespace {

TEST(CardValues, EscapesDependOnTheVersion) {
  expectRows({
      {"3.0", "NOTE:a\\nb\\Nc\\, d\\; e\\\\f\\:g\\\"h\\qi\\\n",
       "Note=a\nb\nc, d; e\\f:g\"h\\qi\\\n"},
      {"4.0", "NOTE:a\\nb\\, c\n", "Note=a\nb, c\n"},
      {"2.1", "NOTE:a\\nb\\Nc\\\\n\\; x\n", "Note=a\nb\nc\\n; x\n"},
      {"3.0", "N:O\\;Hara;Ann\\,Bea;;;\n", "First=Ann,Bea\nLast=O;Hara\n"},
      {"3.0", "N:Ray;Al;Bo,Cy;Dr,Prof;Jr.,M.D.\nFN:Dr Prof Al Bo Cy Ray Jr., M.D.\n",
       "First=Al\nMiddle=Bo Cy\nLast=Ray\nTitle=Dr Prof\nSuffix=Jr., M.D.\n"
       "kept=;3#0:Ray;Al;Bo,Cy;Dr,Prof;Jr.,M.D.\n"},
      {"2.1", "N:Ray;Al;Bo,Cy\n", "First=Al\nMiddle=Bo,Cy\nLast=Ray\n"},
      {"3.0", "N:A;B;;;;x;y\n", "First=B\nLast=A\nkept=;3#0:A;B;;;;x;y\n"},
      {"3.0", "N:A;B;;;;x;y;z\n",
       "First=B\nLast=A\nkept=N:A;B;;;;x;y;z\nkept=;3#0:A;B;;;;x;y\n"
       "repair 3: N has more than seven components, kept as text beside them\n"},
  });
}

TEST(CardValues, FullNameIsReadWithoutNAndKeptWhenItSaysMore) {
  expectRows({
      {"3.0", "FN:Ann Lee\n", "First=Ann\nLast=Lee\n"},
      {"3.0", "FN:Ann Mary Lee\nN:;;;;\n", "First=Ann Mary\nLast=Lee\n"},
      {"3.0", "FN:Cher\n", "First=Cher\n"},
      {"3.0", "FN:山田 太郎\n",
       "First=太郎\nLast=山田\nkept=FN:山田 太郎\n"
       "kept=;3#0:山田;太郎;;;\n"},
      {"3.0", "FN:山田太郎\nN:山田;太郎;;;\n", "First=太郎\nLast=山田\n"},
      {"3.0", "FN:ACME\nORG:ACME;\n", "Organization=ACME\n"},
      {"3.0", "N:Lee;Ann;;;\nFN:Ann Lee\n", "First=Ann\nLast=Lee\n"},
      {"3.0", "N:Lee;Ann;;;\nFN;X-A=1:Annie\n",
       "First=Ann\nLast=Lee\nkept=FN;X-A=1:Annie\n"
       "kept=;3#0:Lee;Ann;;;\n"},
  });
}

TEST(CardValues, ADerivedNameGivesWayToAnother) {
  EXPECT_EQ(textOfCard("4.0", "FN;DERIVED=TRUE:?\nFN:Ann Lee\n"),
            textOfCard("4.0", "FN:Ann Lee\n"));
  EXPECT_EQ(textOfCard("4.0", "FN:Ann Lee\nFN;DERIVED=TRUE:?\n"),
            "First=Ann\nLast=Lee\nkept=FN:Ann Lee\nkept=FN;DERIVED=TRUE:?\n"
            "kept=;3#0:Lee;Ann;;;\n");
}

TEST(CardValues, ANameOfControlCharactersAloneIsNone) {
  EXPECT_EQ(textOfCard("4.0", "N:\x01;\x02\x7F;;;\nFN:Ann Lee\n"),
            textOfCard("4.0", "FN:Ann Lee\n"));
  EXPECT_EQ(textOfCard("3.0", "N:\x01;Ann;;;\nFN:Ann Lee\n"),
            textOfCard("3.0", "N:;Ann;;;\nFN:Ann Lee\n"));
}

TEST(CardValues, SingleValuesAndTheirReadings) {
  expectRows({
      {"3.0", "ORG:ACME\\, Inc.;Lab;Room 5\nTITLE:Boss\nNICKNAME:Al\\,Bo\nX-MAIDENNAME:Fox\n",
       "MaidenName=Fox\nNickname=Al,Bo\nOrganization=ACME, Inc.\nDepartment=Lab;Room 5\n"
       "JobTitle=Boss\n"},
      {"3.0", "X-PHONETIC-FIRST-NAME:f\nX-PHONETIC-MIDDLE-NAME:m\nX-PHONETIC-LAST-NAME:l\n",
       "FirstPhonetic=f\nMiddlePhonetic=m\nLastPhonetic=l\n"},
      {"4.0", "N;SORT-AS=\"Mo,Al\":Mohn;Albert;;;\n",
       "First=Albert\nLast=Mohn\nFirstPhonetic=Al\nLastPhonetic=Mo\n"
       "kept=;14#0;SORT-AS=\"Mo,Al\"\n"},
      {"2.1", "N:Mohn;Albert\nSOUND;X-IRMC-N:mo;al;;;\n",
       "First=Albert\nLast=Mohn\nFirstPhonetic=al\nLastPhonetic=mo\n"},
      {"3.0", "NOTE:one\nNOTE:two\n", "Note=one\ntwo\n"},
      {"4.0", "NOTE;PREF=2:one\nNOTE;PREF=1:two\n",
       "Note=one\ntwo\nkept=;15#0;PREF=2\n"
       "repair 4: preference of one note among several left out\n"},
      {"3.0", "TITLE:a\nTITLE:b\nORG:c\nORG:d\n",
       "Organization=c\nJobTitle=a\nkept=TITLE:b\nkept=ORG:d\n"},
      {"3.0", "UID: urn:uuid:1-2\nTITLE:a\n", "JobTitle=a\nUID=urn:uuid:1-2\n"},
      {"3.0", "BDAY:19900517\n", "Birthday=1990-05-17\n"},
      {"3.0", "BDAY;X-APPLE-OMIT-YEAR=1604:1604-05-17\n", "Birthday=--05-17\n"},
      {"3.0", "BDAY:soon\n", "kept=BDAY:soon\nrepair 3: BDAY is no readable date, kept as text\n"},
      {"4.0", "BDAY;VALUE=text:circa 1800\n", "kept=BDAY;VALUE=text:circa 1800\n"},
      {"3.0", "BDAY:17.05.1990\n",
       "Birthday=1990-05-17\nrepair 3: BDAY in an unusual spelling, read as 1990-05-17\n"},
  });
}

TEST(CardValues, EntriesOfEveryMultiValue) {
  expectRows({
      {"4.0", "TEL;VALUE=uri:tel:+1-2;ext=3\nEMAIL: mailto:a@b \nURL:http\\://x\n",
       "Phone[-]=+1-2;ext=3\nEmail[-]=a@b\nURLs[-]=http://x\n"},
      {"3.0", "ADR:;;1 Way\\nFlat 2;Town;State;123;Land\n",
       "Address[-]={Street=1 Way\nFlat 2,City=Town,State=State,ZIP=123,Country=Land}\n"},
      {"3.0", "ADR:Box 9;Rear;1 Way\nTITLE:x\n",
       "JobTitle=x\nAddress[-]={Street=Box 9\nRear\n1 Way,POBox=Box 9,Extended=Rear}\n"},
      {"3.0", "ADR:;;;;;;\nTEL:\nTITLE:x\n", "JobTitle=x\n"},
      {"3.0", "item1.ADR:;;a\nITEM1.X-ABADR:de\nitem2.ADR:;;b\nitem2.X-ABADR:Elsewhere\n",
       "Address[-]={Street=a,CountryCode=de}\nAddress[-]={Street=b}\n"
       "kept=item2.X-ABADR:Elsewhere\nkept=;21#2.item2\n"},
      {"3.0", "X-ANNIVERSARY:2001-02-03\nitem1.X-ABDATE:2004-05-06\nitem1.X-ABLabel:Died\n",
       "OtherDates[_$!<Anniversary>!$_]=2001-02-03\nOtherDates[Died]=2004-05-06\n"
       "kept=;23#1=3=X-ANNIVERSARY:2001-02-03\n"},
      {"3.0", "X-SPOUSE:Ann\nX-ABRELATEDNAMES;TYPE=pref:Bo\n",
       "RelatedNames[_$!<Spouse>!$_]=Ann\nRelatedNames*[-]=Bo\n"
       "kept=;22#1=3=X-SPOUSE:Ann\n"},
      {"4.0", "RELATED;TYPE=child;VALUE=text:Cy\nRELATED;TYPE=friend:urn:uuid:5\n",
       "RelatedNames[_$!<Child>!$_]=Cy\nkept=RELATED;TYPE=friend:urn:uuid:5\n"},
  });
}

TEST(CardValues, AccountsNameTheirService) {
  const auto account = [](const std::string& user, const std::string& service) {
    return "InstantMessage[-]={InstantMessageUsername=" + user +
           (service.empty() ? "" : ",InstantMessageService=" + service) + "}\n";
  };
  expectRows({
      {"3.0", "X-AIM:a\nX-SKYPE-USERNAME:b\nX-GTALK:c\nX-QQ:5\n",
       account("a", "AIM") + account("b", "Skype") + account("c", "GoogleTalk") +
           account("5", "QQ") +
           "kept=;19#1=3=X-AIM:a\nkept=;19#2=3=X-SKYPE-USERNAME:b\nkept=;19#3=3=X-GTALK:c\n"
           "kept=;19#4=3=X-QQ:5\n"},
      {"3.0", "X-JABBER;X-SERVICE-TYPE=GTalk:a\nX-AIM;X-SERVICE-TYPE=Own:b\n",
       account("a", "GoogleTalk") + account("b", "Own") +
           "kept=;19#1=3=X-JABBER;X-SERVICE-TYPE=GTalk:a\n"
           "kept=;19#2=3=X-AIM;X-SERVICE-TYPE=Own:b\n"},
      {"3.0", "IMPP;X-SERVICE-TYPE=GoogleTalk:xmpp:g%40h\n",
       account("g@h", "GoogleTalk") + "kept=;19#1:xmpp:g%40h\n"},
      {"4.0", "IMPP:xmpp:j\nIMPP:ymsgr:y\n", account("j", "Jabber") + account("y", "Yahoo")},
      {"3.0", "IMPP;X-SERVICE-TYPE=Own:x-apple:me\n", account("me", "Own")},
      {"4.0", "IMPP:other:me\n", account("other:me", "")},
      {"4.0", "IMPP:xmpp:%FF\nX-SOCIALPROFILE:x-apple:%FF\n",
       account("\xEF\xBF\xBD", "Jabber") +
           "SocialProfile[-]={username=\xEF\xBF\xBD}\nkept=;19#1:xmpp:%FF\n"},
      {"3.0", "X-SOCIALPROFILE;type=twitter;x-user=u;x-userid=7:http://t/u\n",
       "SocialProfile[-]={serviceName=twitter,username=u,url=http://t/u,identifier=7}\n"},
  });
}

TEST(CardValues, PhotosKeepTheirOwnBytes) {
  expectRows({
      {"3.0", "PHOTO;ENCODING=b;TYPE=JPEG:AQID\n", "kept=;0#0:image/jpeg\nphoto=3 bytes\n"},
      {"2.1", "PHOTO;JPEG;BASE64:AQIDBA==\n", "kept=;0#0:image/jpeg\nphoto=4 bytes\n"},
      {"4.0", "PHOTO:data:image/png;base64,AQI=\n", "kept=;0#0:image/png\nphoto=2 bytes\n"},
      {"4.0", "PHOTO:data:,a%20b\n", "photo=3 bytes\n"},
      {"3.0", "PHOTO;VALUE=URI:http://x/p.jpg\n", "kept=PHOTO;VALUE=URI:http://x/p.jpg\n"},
      {"3.0", "PHOTO;ENCODING=b:AQ.D\n",
       "kept=PHOTO;ENCODING=b:AQ.D\nrepair 3: PHOTO is no base64, kept as text\n"},
      {"3.0", "PHOTO;ENCODING=b:AQID\nPHOTO;ENCODING=b:BAUG\n",
       "kept=PHOTO;ENCODING=b:BAUG\nphoto=3 bytes\n"},
  });
  const auto cards =
      readAll("BEGIN:VCARD\nVERSION:3.0\nPHOTO;ENCODING=b:AAECAwQF/v8=\nEND:VCARD\n");
  ASSERT_EQ(cards.size(), 1U);
  EXPECT_EQ(*std::get<Card>(cards[0]).photo, "\0\1\2\3\4\5\xFE\xFF"s);
}

TEST(CardValues, GroupsHaveANameMembersAndNothingElse) {
  expectRows({
      {"4.0", "KIND:group\nFN:Choir\nUID:urn:uuid:9\nMEMBER:urn:uuid:1\nMEMBER:2\nNOTE:n\n",
       "group\nGroupName=Choir\nUID=urn:uuid:9\nkept=NOTE:n\nmember=1\nmember=2\n"},
      {"3.0",
       "N:Choir;;;;\nX-ADDRESSBOOKSERVER-KIND:Group\nX-ADDRESSBOOKSERVER-MEMBER:URN:UUID:a\n",
       "group\nGroupName=Choir\nmember=a\n"},
      {"4.0", "KIND:individual\nMEMBER:x\n", "kept=KIND:individual\nkept=MEMBER:x\n"},
  });
}

TEST(CardValues, EqualCardsGiveEqualProperties) {
  const std::string card = "BEGIN:VCARD\nVERSION:3.0\nTEL:1\nTEL:2\nX-A:b\nEND:VCARD\n";
  const auto cards = readAll(card + card);
  ASSERT_EQ(cards.size(), 2U);
  const auto& first = std::get<Card>(cards[0]).properties.entries();
  const auto& second = std::get<Card>(cards[1]).properties.entries();
  ASSERT_EQ(first.size(), second.size());
  for (std::size_t i = 0; i < first.size(); ++i) {
    EXPECT_TRUE(sameValue(first[i].second, second[i].second)) << i;
  }
}

}  // namespace
}  // namespace ox::vcard
