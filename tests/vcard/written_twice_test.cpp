#include <gtest/gtest.h>

#include "card_text.hpp"
#include "ox/vcard/write/writer.hpp"
#include "written_card.hpp"

// Cards that no program should have written are read as something, and from then on written the
// same way every time.

namespace ox::vcard {
namespace {

// A whole card of 3.0 or 4.0 without its frame, as it is written.
std::string written(const Card& card, CardVersion version) {
  if (!card.isGroup) return linesOf(card.properties, {.version = version}, card.photo);
  std::string text;
  appendGroup(card.properties, card.members, {.version = version}, text);
  std::erase(text, '\r');
  const auto from = text.find("VERSION:") + 12;
  return text.substr(from, text.rfind("END:VCARD\n") - from);
}

Card cardOf(const std::string& version, const std::string& lines) {
  return std::get<Card>(
      readAll("BEGIN:VCARD\nVERSION:" + version + "\n" + lines + "END:VCARD\n").at(0));
}

struct Row {
  std::string version;
  std::string lines;
  std::string in30;
  std::string in40;
};

void expectTheSameTwice(const std::vector<Row>& rows) {
  for (const auto& row : rows) {
    SCOPED_TRACE(row.lines);
    const auto card = cardOf(row.version, row.lines);
    EXPECT_EQ(written(card, CardVersion::V30), row.in30);
    EXPECT_EQ(written(card, CardVersion::V40), row.in40);
    EXPECT_EQ(written(cardOf("3.0", row.in30), CardVersion::V30), row.in30);
    EXPECT_EQ(written(cardOf("4.0", row.in40), CardVersion::V40), row.in40);
  }
}

const std::string kNobody30 = "N:;;;;\nFN;X-DERIVED=TRUE:?\n";
const std::string kNobody40 = "FN;DERIVED=TRUE:?\n";

// No parameter could say a word with a quote in it.
TEST(CardsWrittenTwice, LoneQuotesPartWords) {
  const std::string lines = "TEL;TYPE=voic;TYPE=e:1\nX-SOCIALPROFILE;TYPE=a;TYPE=b:http://x/c\n";
  expectTheSameTwice({{"3.0", "TEL;voic\"e:1\nX-SOCIALPROFILE;a\"b:http://x/c\n",
                       "N:;;;;\nFN;X-DERIVED=TRUE:1\n" + lines, "FN;DERIVED=TRUE:1\n" + lines}});
}

TEST(CardsWrittenTwice, LoneQuotesOfAHeadFindNoPartnerInJoinedLines) {
  const std::string digits(71, '7');
  const std::string lines = "NOTE:n\nX-OX-LINE:X%3BA%3Db%22%3A" + digits + "%22c\n";
  expectTheSameTwice(
      {{"2.1", "X;A=b\":" + digits + "\n\"c\nNOTE:n\n", kNobody30 + lines, kNobody40 + lines}});
}

// These bytes are two letters in a charset that a guess may give, of which one takes the mark.
TEST(CardsWrittenTwice, HeadsInAnotherCharsetKeepTheirMarks) {
  const std::string letters = "\xE8\xE8\xE8\xE8\xE8\xE8\xE8\xE8\xE8";
  for (const std::string mark : {";B=c:1\n", ":1\n"}) {
    const auto card = cardOf("2.1", "X;A=" + letters + mark + "NOTE:n\n");
    for (const auto version : {CardVersion::V30, CardVersion::V40}) {
      const auto lines = written(card, version);
      const auto* number = version == CardVersion::V30 ? "3.0" : "4.0";
      EXPECT_TRUE(lines.ends_with(mark)) << lines;
      EXPECT_EQ(written(cardOf(number, lines), version), lines);
    }
  }
}

TEST(CardsWrittenTwice, ParametersOfEmptyLinesGiveWay) {
  expectTheSameTwice({
      {"4.0", "ORG;A=1:\nORG;B=2:Firm\n", "N:;;;;\nFN:Firm\nORG;B=2:Firm\n",
       "FN:Firm\nORG;B=2:Firm\n"},
      {"4.0", "N;A=1;SORT-AS=Bo:\nN;B=2;SORT-AS=Li:Lee\n",
       "N;B=2:Lee;;;;\nFN:Lee\nX-PHONETIC-LAST-NAME:Li\n"
       "X-OX-LINE:%3B14%230%3BSORT-AS%3DLi\n",
       "N;B=2;SORT-AS=Li:Lee;;;;\nFN:Lee\nX-PHONETIC-LAST-NAME:Li\n"},
      {"3.0", "N;A=1:\nitem1.TEL;TYPE=CELL,x:5\nitem1.X-ABLabel:own\nN:Lee\n",
       "N:Lee;;;;\nFN:Lee\nitem1.TEL;TYPE=CELL;TYPE=x:5\nitem1.X-ABLabel:own\n",
       "N:Lee;;;;\nFN:Lee\nitem1.TEL;TYPE=CELL;TYPE=x:5\nitem1.X-ABLabel:own\n"},
  });
}

// The preferred entry has no line: a rank of another one would make that the preferred one.
TEST(CardsWrittenTwice, RanksAreNotSaidBesideAPreferredEntryWithoutALine) {
  const std::string phones =
      "TEL:1\nX-OX-PROPERTY:ARAQAgIBAAAAAAAAAAABATECAAAAAAAAAAABAQERKt5inOEdDA==\n";
  const std::string stored = "X-OX-PROPERTY:ARYQAgIBAAAAAAAAAAABAWECAAAAAAAAAAABAiABsYGDOGIWQPI=\n";
  expectTheSameTwice({
      {"4.0", "TEL;PREF=2:1\nTEL;PREF=1:\x01\n", "N:;;;;\nFN;X-DERIVED=TRUE:1\n" + phones,
       "FN;DERIVED=TRUE:1\n" + phones},
      {"4.0", "RELATED;PREF=2:a\nRELATED;PREF=1: \x01\n",
       kNobody30 + "X-ABRELATEDNAMES:a\n" + stored, kNobody40 + "RELATED;VALUE=text:a\n" + stored},
  });
  const auto read = cardOf("4.0", "TEL;PREF=2:1\nTEL;PREF=1:\x01\n").properties;
  const auto again = cardOf("4.0", kNobody40 + phones).properties;
  EXPECT_EQ(std::get<MultiValuePtr>(again.value(property_id::kPhone))->primary, 2U);
  EXPECT_EQ(std::get<MultiValuePtr>(read.value(property_id::kPhone))->primary, 2U);
}

TEST(CardsWrittenTwice, NestedCardsOfAnyFormAreOne) {
  const std::string nested = "AGENT:BEGIN:VCARD\\nN:x\\nEND:VCARD\n";
  const std::string wrapped = "X-OX-LINE:AGENT%3ABEGIN%3AVCARD%0AN%3Ax%0AEND%3AVCARD\n";
  const std::string card = "BEGIN:VCARD\nN:x\nEND:VCARD\n";
  for (const std::string head : {"AGENT:", "AGENT:\n", "AGENT:\n\n\n", "AGENT;CHARSET=UTF-8:\n"}) {
    expectTheSameTwice({{"2.1", head + card, kNobody30 + nested, kNobody40 + wrapped}});
  }
  // One without an end would begin a nested card that takes what follows with it.
  const std::string begin = "X-OX-LINE:AGENT%3ABEGIN%3AVCARD\n";
  expectTheSameTwice({{"3.0", begin, kNobody30 + begin, kNobody40 + begin}});
}

TEST(CardsWrittenTwice, SortAsGivesNoReadingWhereThereIsOne) {
  const std::string names = "N:u;;;;\nFN:u\nX-PHONETIC-LAST-NAME;TYPE=n:V\n";
  for (const std::string reading : {"P", "V"}) {
    expectTheSameTwice(
        {{"4.0", "X-PHONETIC-LAST-NAME;n:V\nN;SORT-AS=" + reading + ":u\n", names, names}});
  }
}

TEST(CardsWrittenTwice, ParametersWithoutANameAreTypes) {
  const std::string note = "NOTE;TYPE=LANG:a\\nb\n";
  expectTheSameTwice(
      {{"3.0", "NOTE;LANG:a\nNOTE;=LANG;=:b\n", kNobody30 + note, kNobody40 + note}});
}

TEST(CardsWrittenTwice, SortAsThatAgreesWithTheReadingsStays) {
  const auto card = cardOf("4.0", "X-PHONETIC-LAST-NAME:Li\nN;SORT-AS=Li:Lee\n");
  EXPECT_EQ(written(card, CardVersion::V40),
            "N;SORT-AS=Li:Lee;;;;\nFN:Lee\nX-PHONETIC-LAST-NAME:Li\n");
  EXPECT_TRUE(card.repairs.empty());
  EXPECT_EQ(cardOf("4.0", "X-PHONETIC-LAST-NAME:Mu\nN;SORT-AS=Li:Lee\n").repairs.size(), 1U);
}

// An address of blank parts is none, and a message always has a line.
TEST(CardsWrittenTwice, RanksAreSaidBesideAnEntryOfBlanks) {
  const std::string second = "ADR;PREF=2:;;Main St;;;;\n";
  EXPECT_EQ(written(cardOf("4.0", "ADR;PREF=1:;; ;;;;\n" + second), CardVersion::V40),
            kNobody40 + second);
  const auto messages =
      written(cardOf("4.0", "IMPP;PREF=1:x-apple:\nIMPP;PREF=2:xmpp:a@b\n"), CardVersion::V40);
  EXPECT_NE(messages.find("IMPP;PREF=2;"), std::string::npos) << messages;
}

TEST(CardsWrittenTwice, AFormattedNameIsTheNameWithoutItsControlCharacters) {
  const std::string lines = "N:an;;;;\nFN:an\nX-OX-PROPERTY:AQMBA2EIbgAUKSCFFSsN\n";
  expectTheSameTwice({{"3.0", "N:a\bn\nFN;E:an\n", lines, lines}});
}

// Control characters are not written, and the blanks around a component are not read.
TEST(CardsWrittenTwice, BlanksBesideControlCharactersAreThoseAroundAComponent) {
  for (const std::string lines :
       {"ORG:Firm\t\x01;Unit\n", "ORG: \x01 Firm ;\x01 A\\;B \x01\n", "FN:Ann \x01 Lee\n",
        "N:Lee \x01;Ann\n", "N:Lee;A,B \x01\n", "ADR:;;1 Way \x01;A,B \x01;;;\n"}) {
    for (const auto version : {CardVersion::V30, CardVersion::V40}) {
      const auto text = written(cardOf("3.0", lines), version);
      const auto* spoken = version == CardVersion::V30 ? "3.0" : "4.0";
      EXPECT_EQ(written(cardOf(spoken, text), version), text) << lines;
    }
  }
}

TEST(CardsWrittenTwice, TextOfAnAgentIsNoCard) {
  const std::string agent = "AGENT:Mr. Smith\\nTel. 12\n";
  expectTheSameTwice(
      {{"2.1", "AGENT;ENCODING=QUOTED-PRINTABLE:Mr. Smith=0D=0ATel. 12\n", kNobody30 + agent,
        kNobody40 + "X-OX-LINE:AGENT%3AMr.%20Smith%5CnTel.%2012\n"}});
}

TEST(CardsWrittenTwice, WrappedTextThatIsNoLineStaysWrapped) {
  const std::string lines = "TEL:1\nX-OX-LINE:FN\n";
  expectTheSameTwice(
      {{"3.0", lines, "N:;;;;\nFN;X-DERIVED=TRUE:1\n" + lines, "FN;DERIVED=TRUE:1\n" + lines}});
}

TEST(CardsWrittenTwice, TheGroupOfAFormattedNameIsTaken) {
  expectTheSameTwice({{"3.0",
                       "item2.FN:\x01"
                       "a\nRELATED;TYPE=spouse:u\nN:b\n",
                       "N:b;;;;\nFN:a\nitem3.X-ABRELATEDNAMES:u\n"
                       "item3.X-ABLabel:_$!<Spouse>!$_\nX-OX-LINE:item2.FN%3A%01a\n",
                       "N:b;;;;\nFN:a\nRELATED;VALUE=text;TYPE=spouse:u\n"
                       "X-OX-LINE:item2.FN%3A%01a\n"}});
}

TEST(CardsWrittenTwice, AGroupCalledByBlanksKeepsThem) {
  expectTheSameTwice({{"4.0", "KIND:group\nN:\t\n",
                       "N:\t;;;;\nFN;X-DERIVED=TRUE:?\nX-ADDRESSBOOKSERVER-KIND:group\n",
                       "N:\t;;;;\nFN;DERIVED=TRUE:?\nKIND:group\n"},
                      {"4.0", "KIND:group\nN;X:\t\n",
                       "N;TYPE=X:\t;;;;\nFN;X-DERIVED=TRUE:?\nX-ADDRESSBOOKSERVER-KIND:group\n",
                       "N;TYPE=X:\t;;;;\nFN;DERIVED=TRUE:?\nKIND:group\n"}});
}

TEST(CardsWrittenTwice, AProfileWhoseUrlWouldBeReadAsNoneHasNoLine) {
  const std::string stored = "X-OX-PROPERTY:ARQQAQABAAAAAAAAAAAHAQN1cmwBCXgtAWFwcGxlOnbFkLQ7Lo0A\n";
  expectTheSameTwice({{"3.0",
                       "X-SOCIALPROFILE:x-\x01"
                       "apple:\n",
                       kNobody30 + stored, kNobody40 + stored}});
}

TEST(CardsWrittenTwice, LabelsOfAPictureAreNotItsKind) {
  const std::string detail = "X-OX-LINE:%3B0%230%3BTYPE%3DCELL%3BB%20C%3Dx\n";
  expectTheSameTwice(
      {{"3.0", "PHOTO;TYPE=CELL;B C=x:AQID\n", kNobody30 + "PHOTO;ENCODING=b:AQID\n" + detail,
        kNobody40 + "PHOTO:data:application/octet-stream;base64,AQID\n" + detail}});
}

// What is stored counts for as long as the lines say what we wrote: the details that shaped them
// and the other parts of the name belong to that.
TEST(CardsWrittenTwice, StoredValuesAreThoseOfTheLinesBesideThem) {
  for (const std::string lines :
       {"LABEL:Main St\\n1  \n", "LABEL:Boat\\nWay\t\nADR;TYPE=HOME:;;\x01\\nb;;;;\n",
        "ADR:a\x01;;b;;;;\nLABEL:c\n", "N:Lee,;Al:\x01;a;;\nFN:other\n", "ADR:a\\n\x01;a;;;;;\n",
        "N:Ray;Al;;,B\n;\nFN:other\n"}) {
    for (const auto version : {CardVersion::V30, CardVersion::V40}) {
      const auto text = written(cardOf("3.0", lines), version);
      const auto* spoken = version == CardVersion::V30 ? "3.0" : "4.0";
      EXPECT_EQ(written(cardOf(spoken, text), version), text) << lines;
    }
  }
}

TEST(CardsWrittenTwice, AListInANameMayStartWithNothing) {
  const auto text = written(cardOf("3.0", "N:Ray;Al;;,Dr.;\nFN:The Doctor\n"), CardVersion::V30);
  EXPECT_EQ(text.substr(0, text.find("X-OX-")), "N:Ray;Al;;,Dr.;\nFN:The Doctor\n");
  EXPECT_EQ(written(cardOf("3.0", text), CardVersion::V30), text);
}

// vCard 2.1 parts no lists by commas.
TEST(CardsWrittenTwice, CommasOf21AreTextInANameOfSevenComponents) {
  const std::string lines = "N:Ray;Al;;;\\,Jr\\,;Sol;x\nFN:Al Ray \\,Jr\\,\n";
  expectTheSameTwice({{"2.1", "N:Ray;Al;;;,Jr,;Sol;x\n",
                       "N:Ray;Al;;;\\,Jr\\,\nFN:Al Ray \\,Jr\\,\n"
                       "X-OX-LINE:%3B3%230%3ARay%3BAl%3B%3B%3B%5C%2CJr%5C%2C%3BSol%3Bx\n",
                       lines}});
}

TEST(CardsWrittenTwice, BlanksAfterTheLastComponentAreNone) {
  expectTheSameTwice({{"4.0", "ADR:;;a,b;;;;;;\t\n", kNobody30 + "ADR:;;a,b;;;;\n",
                       kNobody40 + "ADR:;;a,b;;;;\n"}});
}

// FN alone names a group in 4.0: an N beside it would be read as one that says the same.
TEST(CardsWrittenTwice, AnNOfAGroupThatSaysMoreIsWrapped) {
  const std::string group30 = "X-ADDRESSBOOKSERVER-KIND:group\n";
  const std::string wrapped = "X-OX-LINE:N%3BALTID%3D1%3ALee%3BAnn\n";
  expectTheSameTwice(
      {{"4.0", "KIND:group\nN:Crew\nFN:Crew\nN;ALTID=1:Lee;Ann\n",
        "N:Crew;;;;\nFN:Crew\n" + group30 + wrapped, "FN:Crew\nKIND:group\n" + wrapped}});
  const auto text =
      written(cardOf("4.0", "KIND:group\nN;ALTID=1:a;b;c;d;e;f;g;h;i\n"), CardVersion::V40);
  EXPECT_EQ(written(cardOf("4.0", text), CardVersion::V40), text);
}

TEST(CardsWrittenTwice, AnNThatCallsAGroupOtherwiseIsKept) {
  const std::string group30 = "X-ADDRESSBOOKSERVER-KIND:group\n";
  const std::string wrapped = "X-OX-LINE:N%3ATeam%2CCrew%3BThe%3B%3B%3B\n";
  expectTheSameTwice(
      {{"4.0", "KIND:group\nFN:The Team\nN:Team,Crew;The;;;\n",
        "N:The Team;;;;\nFN:The Team\n" + group30 + wrapped, "FN:The Team\nKIND:group\n" + wrapped},
       {"3.0", group30 + "N:Team;;;;\nFN:Team \n", "N:Team ;;;;\nFN:Team \n" + group30,
        "FN:Team \nKIND:group\n"}});
}

TEST(CardsWrittenTwice, AProfileOfAnyFormHasItsIdentifier) {
  const std::string profile = "SOCIALPROFILE;x-userid=1:http://x/a\n";
  expectTheSameTwice(
      {{"4.0", "SOCIALPROFILE;x-userid=1:http://x/a\n",
        kNobody30 + "X-SOCIALPROFILE;X-USERID=1:http://x/a\n", kNobody40 + profile}});
}

TEST(CardsWrittenTwice, TypeWordsOfMediaStandInQuotesWhereTheyMust) {
  const std::string key = "KEY;TYPE=\"a:b\";MEDIATYPE=application/pgp-keys;VALUE=uri:http://x/k\n";
  expectTheSameTwice(
      {{"4.0", "KEY;TYPE=\"a:b\";MEDIATYPE=application/pgp-keys:http://x/k\n",
        kNobody30 + "KEY;TYPE=PGP;TYPE=\"a:b\";VALUE=uri:http://x/k\n", kNobody40 + key}});
}

TEST(CardsWrittenTwice, AReferenceToARelatedPersonStaysAsItIs) {
  const std::string related = "RELATED:x\\.y:b\n";
  expectTheSameTwice(
      {{"2.1", related, kNobody30 + related, kNobody40 + "X-OX-LINE:RELATED%3Ax%5C.y%3Ab\n"}});
}

// A line that says what no text of an address holds stays as it is, with all that it says.
TEST(CardsWrittenTwice, AnAddressThatIsKeptAsItsLineKeepsItsLabel) {
  const std::string wrapped = "X-OX-LINE:LABEL%3Aa%01b\n";
  expectTheSameTwice({{"3.0",
                       "LABEL:a\x01"
                       "b\n",
                       kNobody30 + wrapped, kNobody40 + wrapped}});
  const std::string address = "ADR;LABEL=Main:;;;;;;;;9\n";
  expectTheSameTwice({{"4.0", address, kNobody30 + address, kNobody40 + address}});
}

}  // namespace
}  // namespace ox::vcard
