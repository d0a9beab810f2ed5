#include <algorithm>
#include <gtest/gtest.h>

#include "card_text.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"
#include "ox/vcard/write/writer.hpp"
#include "random_card.hpp"

// What is written is read back as it was.

namespace ox::vcard {
namespace {

constexpr std::array kVersions = {CardVersion::V30, CardVersion::V40};

std::string written(const Card& card, CardVersion version) {
  std::string out;
  if (card.isGroup) {
    appendGroup(card.properties, card.members, {.version = version}, out);
  } else {
    appendCard(card.properties, card.photo, {.version = version}, out);
  }
  return out;
}

// 4.0 has properties of its own for what came under other names by an older version.
PropertyBag withoutOlderNames(const PropertyBag& properties) {
  const auto* held = properties.find(property_id::kUnmodelledLines);
  if (held == nullptr) return properties;
  Array left;
  for (const auto& element : *std::get<Object>(*held).array()) {
    const auto detail = decodeDetail(*element.text());
    const bool isOlderName =
        detail && detail->kind == DetailKind::Line && detail->text.starts_with('3');
    if (!isOlderName) left.push_back(element);
  }
  auto rest = properties;
  rest.set(property_id::kUnmodelledLines, left.empty() ? PropertyValue() : Object(left));
  return rest;
}

void expectSameAfter(const Card& card, CardVersion version) {
  const auto text = written(card, version);
  const auto results = readAll(text);
  ASSERT_EQ(results.size(), 1U) << text;
  ASSERT_TRUE(std::holds_alternative<Card>(results[0])) << textOf(results[0]) << text;
  const auto& again = std::get<Card>(results[0]);
  auto expected = card;
  expected.repairs.clear();
  if (version == CardVersion::V40) expected.properties = withoutOlderNames(card.properties);
  EXPECT_EQ(textOf(again), textOf(Reader::Result(expected))) << text;
  EXPECT_TRUE(sameContent(again.properties, expected.properties)) << text;
  EXPECT_TRUE(sameData(again.photo, card.photo)) << text;
  EXPECT_EQ(again.members, card.members);
  EXPECT_EQ(written(again, version), text);
}

// The octets of the longest physical line; -1 when a line does not end in CRLF.
std::ptrdiff_t longestLine(std::string_view text) {
  std::ptrdiff_t longest = 0;
  while (!text.empty()) {
    const auto feed = text.find('\n');
    if (feed == text.npos || feed == 0 || text[feed - 1] != '\r') return -1;
    longest = std::max(longest, static_cast<std::ptrdiff_t>(feed) - 1);
    text.remove_prefix(feed + 1);
  }
  return longest;
}

const std::vector<std::string>& fixtures() {
  static const auto& cards = *new std::vector<std::string>{
      "BEGIN:VCARD\nVERSION:2.1\nN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=BCller;J=C3=B6rg\n"
      "TEL;CELL;PREF:1\nTEL;HOME;FAX:2\nTEL;MODEM;X-CAR:3\nADR;HOME:Box 9;Rear;1 Way;Town;;99\n"
      "LABEL;DOM;WORK;ENCODING=QUOTED-PRINTABLE:a=0D=0Ab\nLOGO;GIF;ENCODING=BASE64:\n AQID\n\n"
      "X-UNDER_SCORE;X:1\nAGENT:\nBEGIN:VCARD\nVERSION:2.1\nN:In;Ner\nEND:VCARD\nEND:VCARD\n",

      "BEGIN:VCARD\nVERSION:3.0\nN:Ray;Al;Bo,Cy;Dr,Prof;Jr.\\,M.D.\nFN:Allie\nNICKNAME:A\\,l\n"
      "ORG:ACME\\, Inc.;Lab;Room 5\nTITLE:Boss\nTITLE:b\nX-MAIDENNAME:Fox\nBDAY:soon\n"
      "X-PHONETIC-FIRST-NAME:al\nX-PHONETIC-LAST-NAME:rei\nNOTE:one\\ntwo\\, three\\\\\n"
      "item1.TEL;TYPE=WORK:1\nitem1.X-ABLabel:Boat\nitem1.X-OWN:kept\nitem4.X-ABLabel:alone\n"
      "EMAIL;TYPE=INTERNET,HOME,pref:a@b\nEMAIL;TYPE=CELL,WORK;X-A=\"b;c:d\":c@d\n"
      "item2.ADR;TYPE=WORK:;;1 Way\\nFlat 2;Town;State;123;Land\nitem2.X-ABADR:de\n"
      "IMPP;X-SERVICE-TYPE=GoogleTalk;TYPE=HOME:xmpp:g%40h\nX-SKYPE:s\nIMPP:other:me\n"
      "X-SOCIALPROFILE;type=twitter;x-user=u;x-userid=7:http://t/u,v;w\n"
      "X-SOCIALPROFILE;type=a;type=b:x-apple:me\nX-ABRELATEDNAMES;TYPE=pref:Bo\n"
      "item3.X-ABRELATEDNAMES:Ann\nitem3.X-ABLabel:_$!<Spouse>!$_\nUID:1234-ab\n"
      "X-ABDATE;X-APPLE-OMIT-YEAR=1604:1604-02-29\nX-ANNIVERSARY:2001-02-03\nX-ANNIVERSARY:2002-02-"
      "03\n"
      "URL:http\\://x/a,b;c\nPHOTO;ENCODING=b;TYPE=JPEG;X-CROP=1:/9j/AQID\nPHOTO;ENCODING=b:BAUG\n"
      "KEY;ENCODING=b:AQ\n ID\nCATEGORIES:a,b\nAGENT:BEGIN:VCARD\\nN:x\\\\;y\\nEND:VCARD\\n\n"
      "END:VCARD\n",

      "BEGIN:VCARD\nVERSION:4.0\nFN;LANGUAGE=en:Ann Lee\nFN;LANGUAGE=de:Anna Lee\n"
      "N;SORT-AS=\"Lee,Ann\";LANGUAGE=en:Lee;Ann;;;\nKIND:individual\nGENDER:F\nBDAY:--0517\n"
      "ANNIVERSARY:20010203T101500Z\nTEL;VALUE=uri;PREF=2;TYPE=\"voice,home\":tel:+1-2;ext=3\n"
      "TEL;TYPE=main;PID=1.1:5\nRELATED;TYPE=child;VALUE=text:Cy\nRELATED;TYPE=friend:urn:uuid:5\n"
      "RELATED;TYPE=colleague,friend;VALUE=text:Di\nMEMBER:x\nLANG;PREF=1:fr\nCLIENTPIDMAP:1;urn:"
      "x\n"
      "UID:urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1\nPHOTO:data:image/png;base64,iVBORw==\n"
      "item1.X-ABDATE:2004-05\nitem1.X-ABLabel:Met\nEND:VCARD\n",

      "BEGIN:VCARD\nVERSION:3.0\nFN:ACME\nORG:ACME\nEND:VCARD\n",
      "BEGIN:VCARD\nVERSION:3.0\nFN:山田 太郎\nEND:VCARD\n",
      "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:Choir\\, old\nUID:urn:uuid:9\nMEMBER:urn:uuid:1\n"
      "MEMBER:mailto:2\nNOTE:n\nEND:VCARD\n",
  };
  return cards;
}

TEST(RoundTrip, CardsOfEveryVersionComeBackTheSame) {
  for (const auto& fixture : fixtures()) {
    for (const auto& result : readAll(fixture)) {
      for (const auto version : kVersions) expectSameAfter(std::get<Card>(result), version);
    }
  }
}

TEST(RoundTrip, AnyValuesComeBackTheSameFromWellFormedLines) {
  RandomCards cards(20260117);
  for (int i = 0; i < 1000; ++i) {
    const auto card = cards.next();
    for (const auto version : kVersions) {
      SCOPED_TRACE(i);
      expectSameAfter(card, version);
      const auto text = written(card, version);
      EXPECT_LE(longestLine(text), 75) << text;
      EXPECT_GE(longestLine(text), 0) << text;
      EXPECT_TRUE(std::none_of(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\r' && c != '\n') ||
               c == 0x7F;
      })) << text;
      if (HasFailure()) return;
    }
  }
}

}  // namespace
}  // namespace ox::vcard
