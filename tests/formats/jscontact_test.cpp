#include "ox/formats/json/jscontact.hpp"

#include <gtest/gtest.h>

#include "tests/formats/card_lines.hpp"

namespace ox::formats_tests {
namespace {

// The members of that card after "@type" and "version", as JSON text.
std::string membersOf(std::initializer_list<std::string> lines) {
  JsonWriter out;
  formats::writeJsContact(formats::WrittenCard(cardOf(lines)), out);
  const std::string front = R"({"@type":"Card","version":"1.0")";
  const std::string text(out.text());
  EXPECT_TRUE(text.starts_with(front) && text.ends_with("}")) << text;
  return text.substr(std::min(text.size() - 1, front.size() + 1),
                     text.size() - std::min(text.size(), front.size() + 2));
}

struct Row {
  std::initializer_list<std::string> lines;
  std::string members;
};

void expectRows(std::initializer_list<Row> rows) {
  for (const auto& [lines, members] : rows) EXPECT_EQ(membersOf(lines), members);
}

TEST(JsContact, TellsWhoTheCardIsAbout) {
  expectRows({
      {{"UID:urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1"},
       R"("uid":"urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1")"},
      {{"UID;VALUE=text:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1"},
       R"("uid":"urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1")"},
      {{"UID;VALUE=text:a1", "KIND:org"}, R"("uid":"a1","kind":"org")"},
      {{"UID:x-ox-uid:a%20b"}, R"("uid":"a b")"},
      {{"REV:20200203T040506Z", "PRODID:p", "CREATED:20190203T040506Z", "LANGUAGE:de"},
       R"("prodId":"p","created":"2019-02-03T04:05:06Z","updated":"2020-02-03T04:05:06Z",)"
       R"("language":"de")"},
      {{"REV:20200203"}, R"("vCardProps":[["rev",{},"timestamp","2020-02-03"]])"},
  });
}

TEST(JsContact, PartsTheName) {
  expectRows({
      {{"N;SORT-AS=\"Lee,Ann\":Lee;Ann;Mary,Jane;Dr.;MD", "FN:Dr. Ann Lee"},
       R"("name":{"components":[{"kind":"surname","value":"Lee"},{"kind":"given","value":"Ann"},)"
       R"({"kind":"given2","value":"Mary"},{"kind":"given2","value":"Jane"},)"
       R"({"kind":"title","value":"Dr."},{"kind":"credential","value":"MD"}],"isOrdered":false,)"
       R"("sortAs":{"surname":"Lee","given":"Ann"},"full":"Dr. Ann Lee"})"},
      {{"N:Lee,Doe;Ann;;;;Doe;Jr.", "FN:Ann"},
       R"("name":{"components":[{"kind":"surname","value":"Lee"},{"kind":"given","value":"Ann"},)"
       R"({"kind":"surname2","value":"Doe"},{"kind":"generation","value":"Jr."}],)"
       R"("isOrdered":false,"full":"Ann"})"},
      {{"N:山田;;;;", "X-PHONETIC-LAST-NAME:やまだ"},
       R"("name":{"components":[{"kind":"surname","value":"山田","phonetic":"やまだ"}],)"
       R"("isOrdered":false,"phoneticScript":"Hira"})"},
      {{"X-PHONETIC-LAST-NAME:Li"}, R"("vCardProps":[["x-phonetic-last-name",{},"unknown","Li"]])"},
      {{"FN;DERIVED=TRUE:ann@x.org", "EMAIL:ann@x.org"},
       R"("emails":{"e1":{"address":"ann@x.org"}})"},
      {{"NICKNAME;PREF=1:Annie,Nan"},
       R"("nicknames":{"n1":{"name":"Annie","pref":1},"n2":{"name":"Nan","pref":1}})"},
  });
}

TEST(JsContact, TellsHowToReachThePerson) {
  expectRows({
      {{"EMAIL;TYPE=home;PREF=1:a@x.org", "item1.EMAIL:b@x.org", "item1.X-ABLabel:Boat"},
       R"("emails":{"e1":{"address":"a@x.org","contexts":{"private":true},"pref":1},)"
       R"("e2":{"address":"b@x.org","label":"Boat"}})"},
      {{"TEL;TYPE=work;TYPE=cell,voice,x-odd;X-P=1:+1 55"},
       R"("phones":{"p1":{"number":"+1 55","features":{"voice":true,"mobile":true},)"
       R"("contexts":{"work":true},"vCardParams":{"type":"x-odd","x-p":"1"}}})"},
      {{"IMPP;X-SERVICE-TYPE=Jabber;PREF=200:xmpp:a@x.org"},
       R"("onlineServices":{"o1":{"service":"Jabber","uri":"xmpp:a@x.org","vCardName":"impp",)"
       R"("vCardParams":{"pref":"200"}}})"},
      {{"X-SOCIALPROFILE;TYPE=home;TYPE=chirp;X-USER=ann:http://c.org/ann"},
       R"("onlineServices":{"o1":{"service":"chirp","uri":"http://c.org/ann","user":"ann",)"
       R"("vCardName":"x-socialprofile","contexts":{"private":true}}})"},
      {{"X-SOCIALPROFILE;TYPE=chirp:x-apple:an%20n"},
       R"("onlineServices":{"o1":{"service":"chirp","user":"an n",)"
       R"("vCardName":"x-socialprofile"}})"},
      {{"item1.ADR;TYPE=home;LABEL=there:Box;;1 Main St;Town;CA;123;USA", "item1.X-ABADR:us"},
       R"("addresses":{"a1":{"components":[{"kind":"postOfficeBox","value":"Box"},)"
       R"({"kind":"name","value":"1 Main St"},{"kind":"locality","value":"Town"},)"
       R"({"kind":"region","value":"CA"},{"kind":"postcode","value":"123"},)"
       R"({"kind":"country","value":"USA"}],"isOrdered":false,"countryCode":"US",)"
       R"("full":"there","contexts":{"private":true}}})"},
      {{"GEO:geo:1,2", "TZ:Europe/Paris", "TZ;VALUE=utc-offset:+0100"},
       R"("addresses":{"a1":{"coordinates":"geo:1,2"},"a2":{"timeZone":"Europe/Paris"}},)"
       R"("vCardProps":[["tz",{},"utc-offset","+01:00"]])"},
      {{"LANG;PREF=2:de"}, R"("preferredLanguages":{"p1":{"language":"de","pref":2}})"},
      {{"URL;TYPE=work:http://x.org/a,b", "CONTACT-URI:http://c.org"},
       R"("links":{"l1":{"uri":"http://x.org/a,b","contexts":{"work":true}},)"
       R"("l2":{"kind":"contact","uri":"http://c.org"}})"},
  });
}

TEST(JsContact, TellsWorkAndLife) {
  expectRows({
      {{"ORG;SORT-AS=acme:ACME;Sales;East", "TITLE:Boss", "ROLE:Chief"},
       R"("organizations":{"o1":{"name":"ACME","sortAs":"acme",)"
       R"("units":[{"name":"Sales"},{"name":"East"}]}},)"
       R"("titles":{"t1":{"name":"Boss"},"t2":{"name":"Chief","kind":"role"}})"},
      {{"BDAY:--0517", "BIRTHPLACE:Town", "ANNIVERSARY:20000102", "DEATHDATE:19960415T120000Z"},
       R"("anniversaries":{"a1":{"kind":"birth","date":{"@type":"PartialDate","month":5,)"
       R"("day":17},"place":{"full":"Town"}},"a2":{"kind":"wedding","date":)"
       R"({"@type":"PartialDate","year":2000,"month":1,"day":2}},"a3":{"kind":"death","date":)"
       R"({"@type":"Timestamp","utc":"1996-04-15T12:00:00Z"}}})"},
      {{"BDAY:---17", "BIRTHPLACE:Town"},
       R"("vCardProps":[["bday",{},"date-and-or-time","---17"],["birthplace",{},"text","Town"]])"},
      {{"BDAY;VALUE=text:long ago"}, R"("vCardProps":[["bday",{},"text","long ago"]])"},
      {{"PHOTO:data:image/png;base64,AAAA", "LOGO;MEDIATYPE=image/png:http://x.org/l"},
       R"("media":{"m1":{"kind":"photo","uri":"data:image/png;base64,AAAA"},)"
       R"("m2":{"kind":"logo","uri":"http://x.org/l","mediaType":"image/png"}})"},
      {{"NOTE;AUTHOR-NAME=Bob;CREATED=20200102T030405Z:a\\nb"},
       R"("notes":{"n1":{"note":"a\nb","created":"2020-01-02T03:04:05Z",)"
       R"("author":{"name":"Bob"}}})"},
      {{"HOBBY;LEVEL=high;INDEX=2:chess", "EXPERTISE;LEVEL=expert:tea"},
       R"("personalInfo":{"p1":{"kind":"hobby","value":"chess","level":"high","listAs":2},)"
       R"("p2":{"kind":"expertise","value":"tea","level":"high"}})"},
      {{"CATEGORIES:one,two", "CATEGORIES:two"}, R"("keywords":{"one":true,"two":true})"},
      {{"GRAMGENDER:NEUTER", "PRONOUNS;PREF=1:they/them"},
       R"("speakToAs":{"grammaticalGender":"neuter",)"
       R"("pronouns":{"p1":{"pronouns":"they/them","pref":1}}})"},
  });
}

TEST(JsContact, NamesOthersAsTheirCardsDo) {
  expectRows({
      {{"UID:urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1", "KIND:group", "FN:Friends",
        "MEMBER:urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b2", "MEMBER:urn:uuid:a1",
        "MEMBER:x-ox-uid:a%20b"},
       R"("uid":"urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1","kind":"group",)"
       R"("name":{"full":"Friends"},"members":)"
       R"({"urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b2":true,"a1":true,"a b":true})"},
      {{"RELATED;VALUE=text;TYPE=friend:Bob", "RELATED;VALUE=text;TYPE=spouse:Bob",
        "RELATED:urn:uuid:1"},
       R"("relatedTo":{"Bob":{"relation":{"friend":true,"spouse":true}},"urn:uuid:1":{}})"},
  });
}

TEST(JsContact, KeepsWhatHasNoPlaceAsVCard) {
  expectRows({
      {{"X-FOO;X-BAR=1:a\\,b", "GENDER:F"},
       R"("vCardProps":[["x-foo",{"x-bar":"1"},"unknown","a\\,b"],["gender",{},"text","F"]])"},
      {{"item1.RELATED;VALUE=text:Bob", "item1.X-ABLabel:_$!<Mother>!$_"},
       R"("relatedTo":{"Bob":{}},"vCardProps":[["related",{"group":"item1"},"text","Bob"],)"
       R"(["x-ablabel",{"group":"item1"},"unknown","_$!<Mother>!$_"]])"},
      {{"item1.EMAIL:a@x.org", "item1.X-ABLabel:Boat", "item1.X-FOO:1"},
       R"("emails":{"e1":{"address":"a@x.org","vCardParams":{"group":"item1"}}},)"
       R"("vCardProps":[["x-ablabel",{"group":"item1"},"unknown","Boat"],)"
       R"(["x-foo",{"group":"item1"},"unknown","1"]])"},
      {{"KIND:individual", "FN;LANGUAGE=en:Ann"},
       R"("kind":"individual","name":{"full":"Ann"},)"
       R"("vCardProps":[["fn",{"language":"en"},"text","Ann"]])"},
  });
}

}  // namespace
}  // namespace ox::formats_tests
