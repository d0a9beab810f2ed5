#include "ox/sync/cards/card_content.hpp"

#include <gtest/gtest.h>

#include "cards.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/vcard/properties/categories.hpp"
#include "ox/vcard/read/reader.hpp"

namespace ox::sync {
namespace {

using namespace property_id;
using Words = std::vector<std::string>;

std::string reasonOf(std::string_view text) {
  const auto read = readCard(text);
  const auto* reason = std::get_if<std::string>(&read);
  return reason != nullptr ? *reason : "a card";
}

// What an import makes of the only card of a text.
PropertyBag importedFrom(std::string_view text) {
  vcard::MemorySource source(text);
  vcard::Reader reader(source);
  auto card = std::get<vcard::Card>(*reader.next());
  vcard::noteCategoriesAreTags(card.properties);
  return card.properties;
}

TEST(ReadCard, TakesOneCardAndTellsWhyNotAnother) {
  EXPECT_EQ(reasonOf(""), "no card in it");
  EXPECT_EQ(reasonOf("<html>not found</html>"), "no card in it");
  EXPECT_EQ(reasonOf(cardText("FN:A\n") + cardText("FN:B\n")), "more than one card in it");
  EXPECT_EQ(reasonOf(cardText("")), "the card holds no property");
  EXPECT_EQ(reasonOf(cardText("FN:A\n")), "a card");
}

TEST(ReadCard, TakesNoHalfOfACardForTheWhole) {
  const auto whole = cardText("N:Lee;Ann;;;\nFN:Ann Lee\nUID:a\nTEL:1\n");
  EXPECT_TRUE(std::holds_alternative<ReadCard>(readWholeCard(whole)));
  EXPECT_TRUE(std::holds_alternative<ReadCard>(readWholeCard(whole + "\r\n \r\n")));
  const auto end = whole.find("END:VCARD") + 9;
  for (auto size = whole.find("TEL"); size < end; ++size) {
    const auto read = readWholeCard(whole.substr(0, size));
    ASSERT_TRUE(std::holds_alternative<std::string>(read)) << size;
    EXPECT_EQ(std::get<std::string>(read), "it is cut short: END:VCARD is missing");
  }
}

TEST(ReadCard, TellsUidAndVersion) {
  const auto read30 = std::get<ReadCard>(readCard(cardText("FN:A\nUID:urn:uuid:X\n")));
  EXPECT_EQ(read30.uid, "urn:uuid:X");
  EXPECT_EQ(read30.version, vcard::CardVersion::V30);
  const auto read40 = std::get<ReadCard>(readCard(cardText("FN:A\n", "4.0")));
  EXPECT_EQ(read40.uid, "");
  EXPECT_EQ(read40.version, vcard::CardVersion::V40);
}

TEST(ReadCard, HasCategoriesOnlyAsSuch) {
  const auto content = contentOf(cardText("FN:A\nX-A:1\nCATEGORIES:b,c\nX-B:2\ncategories:d\n"));
  EXPECT_EQ(content.categories, (Words{"b", "c", "d"}));
  EXPECT_EQ(vcard::categoriesOf(content.properties), Words());
}

TEST(PropertiesOfRecord, AreThoseThatAnImportMakes) {
  for (const std::string lines :
       {"FN:Ann "
        "Lee\nX-A:1\nCATEGORIES;LANGUAGE=de:b,c\nX-B:2\nCATEGORIES:d\nREV:20200101T000000Z\n",
        "FN:Ann\nTEL;TYPE=MODEM;X-S=1:5\nUID:u\n", "FN:Ann\nCATEGORIES:a\n",
        "FN:Ann\nX-A:1\nCATEGORIES:\n"}) {
    const auto text = cardText(lines);
    EXPECT_EQ(encodeProperties(propertiesOfRecord(contentOf(text))),
              encodeProperties(importedFrom(text)))
        << lines;
  }
}

TEST(PropertiesOfRecord, SayTheCategoriesThatTheirLinesDoNot) {
  auto content = contentOf(cardText("FN:Ann\nX-A:1\nCATEGORIES:a,b\nX-B:2\n"));
  content.categories = {"b", "x, y"};
  const auto properties = propertiesOfRecord(content);
  EXPECT_EQ(vcard::categoriesOf(properties), (Words{"b", "x, y"}));
  EXPECT_TRUE(vcard::areCategoriesTags(properties));
  content.categories.clear();
  EXPECT_FALSE(vcard::areCategoriesTags(propertiesOfRecord(content)));
  EXPECT_EQ(vcard::categoriesOf(propertiesOfRecord(content)), Words());
}

TEST(ContentOfRecord, TakesTagsAsCategoriesOnceTheyAreTags) {
  auto bag = importedFrom(cardText("FN:Ann\nCATEGORIES:a,b\n"));
  EXPECT_EQ(contentOfRecord(false, bag, nullptr, {"b", "c"}, {}).categories, (Words{"b", "c"}));
  // A record of an older store has the lines alone.
  const auto text = cardText("FN:Ann\nCATEGORIES:a,b\n");
  vcard::MemorySource source(text);
  vcard::Reader reader(source);
  bag = std::get<vcard::Card>(*reader.next()).properties;
  EXPECT_EQ(contentOfRecord(false, bag, nullptr, {"b", "c"}, {}).categories,
            (Words{"a", "b", "c"}));
}

TEST(ContentOfRecord, IsWhatItsCardSays) {
  const auto text = cardText("FN:Ann\nX-A:1\nCATEGORIES:a,b\nTEL:1\nREV:20200101T000000Z\n");
  const auto read = contentOf(text);
  const auto record = contentOfRecord(false, propertiesOfRecord(read), read.photo, {"a", "b"}, {});
  EXPECT_TRUE(sameContent(read, record));
  EXPECT_EQ(encodeProperties(record.properties), encodeProperties(read.properties));
}

TEST(SameContent, LooksAtNoOrderIdentifiersUidOrRevision) {
  const auto a = contentOf(cardText(
      "N:Lee;Ann;;;\nFN:Ann Lee\nTEL;TYPE=HOME:1\nTEL;TYPE=WORK:2\nUID:a\nREV:20200101T000000Z\n"
      "PRODID:x\nX-A:1\nX-B:2\nCATEGORIES:a,b\n"));
  const auto b = contentOf(
      cardText("X-B:2\nX-A:1\nCATEGORIES:b\nCATEGORIES:a\nTEL;TYPE=work:2\nTEL;TYPE=home;X-P=1:1\n"
               "FN:Ann Lee\nN:Lee;Ann\nUID:b\n"));
  EXPECT_EQ(differingProperties(a, b), Words());
  EXPECT_TRUE(sameContent(a, b));
}

TEST(SameContent, TakesUnmodelledLinesAsServersRespellThem) {
  const auto a = contentOf(cardText("FN:A\nitem1.x-foo;type=a;TYPE=b;x-p=\"c d\":1\n"));
  EXPECT_TRUE(sameContent(a, contentOf(cardText("FN:A\nX-FOO;X-P=c d;TYPE=\"B,A\":1\n"))));
  EXPECT_FALSE(sameContent(a, contentOf(cardText("FN:A\nX-FOO;X-P=c e;TYPE=B,A:1\n"))));
  EXPECT_FALSE(sameContent(a, contentOf(cardText("FN:A\nX-FOO;X-P=c d;TYPE=B,A:2\n"))));
}

TEST(DifferingProperties, AreNamedForPeople) {
  const auto a = contentOf(
      cardText("N:Lee;Ann;;;\nTEL;TYPE=HOME:1\nEMAIL:a@example.org\nNOTE:x\nROLE:r\nX-FOO:1\n"
               "CATEGORIES:a\nORG:O;D\nPHOTO;ENCODING=b:AAAA\n"));
  const auto b = contentOf(cardText(
      "N:Lee;Anna;;;\nTEL;TYPE=WORK:1\nEMAIL;TYPE=pref:a@example.org\nNOTE:y\nROLE:s\nX-FOO:1\n"
      "CATEGORIES:b\nORG:O\n"));
  EXPECT_EQ(differingProperties(a, b),
            (Words{"first name", "department", "note", "phone", "email", "photo", "tags", "role"}));
}

}  // namespace
}  // namespace ox::sync
