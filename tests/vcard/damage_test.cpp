#include <array>
#include <gtest/gtest.h>

#include "card_text.hpp"

using namespace std::string_literals;

namespace ox::vcard {
namespace {

// One card of each kind of quirk, so that damage meets every path of the reader.
const std::array<std::string, 6> kCards = {
    "BEGIN:VCARD\r\nVERSION:2.1\r\nN;CHARSET=SHIFT_JIS:\x8E\x52;\x83\x5C\r\n"
    "SOUND;X-IRMC-N;CHARSET=SHIFT_JIS:\xD4\xCF;\xBF\r\nTEL;HOME;FAX;PREF:1\r\n"
    "NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:a=3D=\r\n=C3=BC=0D=0A\r\n"
    "PHOTO;JPEG;ENCODING=BASE64:\r\n AQID\r\n BAUG\r\n\r\nBDAY:17.05.1990\r\nEND:VCARD\r\n",
    "BEGIN:VCARD\nVERSION:3.0\nFN:Dr. J\xC3\xBCrg\n  Lee\nN:Lee;J\xC3\xBCrg;A,B;Dr.;\n"
    "item1.TEL;TYPE=\"x,y\";X-A=\"b:c\":1\\,2\nitem1.X-ABLabel:_$!<Main>!$_\n"
    "item2.ADR;TYPE=HOME,pref:Box;Ext;1 Way\\nB;T;S;9;L\nitem2.X-ABADR:de\n"
    "ORG:A\\;B;C\nX-AIM:me\nPHOTO;ENCODING=b:AQID\n BAUG\nX-OWN;CHARSET=ISO-8859-1:q\nEND:VCARD\n",
    "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:G\nMEMBER:urn:uuid:1\nUID:urn:uuid:2\nEND:VCARD\n",
    "BEGIN:VCARD\nVERSION:4.0\nN;SORT-AS=\"a^n,b\":x;y;;;\nIMPP;X-SERVICE-TYPE=Q:xmpp:a%40b\n"
    "X-SOCIALPROFILE;TYPE=t;X-USER=u:x-apple:v\nPHOTO:data:image/png;base64,AQI=\n"
    "RELATED;TYPE=spouse;VALUE=text:Z\nBDAY;X-APPLE-OMIT-YEAR=1604:1604-02-29\nEND:VCARD\n",
    "BEGIN:VCARD\nTEL;CELL:1\nAGENT:\nBEGIN:VCARD\nN:In\nEND:VCARD\n# "
    "no\nNOTE:J\xFCrg\nEND:VCARD\n",
    "\xFF\xFE"
    "B\0E\0G\0I\0N\0:\0V\0C\0A\0R\0D\0\n\0N\0:\0\x3D\xD8\x00\xDE\n\0"
    "E\0N\0D\0:\0V\0C\0A\0R\0D\0\n\0"s,
};

const std::string kGood = "BEGIN:VCARD\nVERSION:3.0\nTITLE:good\nEND:VCARD\n";

// What the reader makes of the bytes does not matter here, only that it comes to an end and
// accounts for each card once.
std::size_t resultsOf(const std::string& bytes) {
  std::size_t texts = 0;
  for (const auto& result : readAll(bytes)) texts += textOf(result).empty() ? 0 : 1;
  return texts;
}

TEST(CardDamage, EveryPrefixIsReadOrRefused) {
  for (const auto& card : kCards) {
    for (std::size_t length = 0; length <= card.size(); ++length) {
      EXPECT_LE(resultsOf(card.substr(0, length)), 1U) << length;
    }
  }
}

TEST(CardDamage, EveryChangedByteIsReadOrRefused) {
  for (const auto& card : kCards) {
    for (std::size_t at = 0; at < card.size(); ++at) {
      for (const int mask : {0x01, 0x20, 0x80, 0xFF}) {
        std::string damaged = card;
        damaged[at] = static_cast<char>(damaged[at] ^ mask);
        EXPECT_LE(resultsOf(damaged), 2U) << at;
      }
      for (const char c : {'\0', '\n', '=', '"', ';', ':', '\\'}) {
        std::string damaged = card;
        damaged[at] = c;
        EXPECT_LE(resultsOf(damaged), 2U) << at;
      }
    }
  }
}

TEST(CardDamage, CardsCutAnywhereLeaveTheNextOneWhole) {
  for (std::size_t i = 0; i + 1 < kCards.size(); ++i) {
    for (std::size_t length = 0; length < kCards[i].size(); ++length) {
      const auto results = readAll(kCards[i].substr(0, length) + "\n" + kGood);
      ASSERT_FALSE(results.empty());
      // A card that stops right before its AGENT's BEGIN takes the next one for the agent.
      const bool agent = kCards[i].substr(0, length).ends_with("AGENT:") ||
                         kCards[i].substr(0, length).ends_with("AGENT:\n");
      if (!agent) {
        EXPECT_EQ(textOf(results.back()), "JobTitle=good\n") << i << " " << length;
      }
    }
  }
}

}  // namespace
}  // namespace ox::vcard
