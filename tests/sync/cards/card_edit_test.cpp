#include "ox/sync/cards/card_edit.hpp"

#include <gtest/gtest.h>

#include "cards.hpp"
#include "ox/base/base64.hpp"
#include "ox/records/property_keys.hpp"

namespace ox::sync {
namespace {

using namespace property_id;

const EditOptions kNow{"20261123T060700Z"};

// The text once `change` is made of what it says, which is checked to be what it says then.
template <typename Change>
std::string editedBy(const std::string& text, Change&& change) {
  const auto said = contentOf(text);
  auto wanted = said;
  change(wanted);
  auto edited = editedCard(text, said, wanted, kNow);
  EXPECT_EQ(differingProperties(contentOf(edited), wanted), std::vector<std::string>()) << edited;
  return edited;
}

// As another program writes it: its own order, spelling, folding, item groups and parameters.
const std::string kForeign =
    "PRODID:-//Example Corp//Phone 7//EN\n"
    "N:Lee;Ann;;;\n"
    "FN:Ann Lee\n"
    "tel;type=CELL;X-SHARED=yes:+1 555 0100\n"
    "item1.EMAIL;type=INTERNET;type=pref:ann@example.org\n"
    "item1.X-ABLabel:Boat\n"
    "NOTE:A long note that this program folds where it likes\n"
    " \\, after a comma\\; and so on\n"
    "ADR;TYPE=home:;;1 Sea St;Hull;;HU1;UK\n"
    "X-CUSTOM;X-P=\"a;b\":kept as it is\n"
    "TEL;TYPE=WORK:+1 555 0200\n"
    "REV:2020-01-02T03:04:05Z\n"
    "UID:11111111-2222-3333-4444-555555555555\n";

TEST(EditedCard, ChangesTheLineOfOnePhoneAndRev) {
  const auto edited = editedBy(cardText(kForeign), [](CardContent& content) {
    changeEntry(content, kPhone, "+1 555 0200", "+1 555 0300");
  });
  EXPECT_EQ(edited, cardText("PRODID:-//Example Corp//Phone 7//EN\n"
                             "N:Lee;Ann;;;\n"
                             "FN:Ann Lee\n"
                             "tel;type=CELL;X-SHARED=yes:+1 555 0100\n"
                             "item1.EMAIL;type=INTERNET;type=pref:ann@example.org\n"
                             "item1.X-ABLabel:Boat\n"
                             "NOTE:A long note that this program folds where it likes\n"
                             " \\, after a comma\\; and so on\n"
                             "ADR;TYPE=home:;;1 Sea St;Hull;;HU1;UK\n"
                             "X-CUSTOM;X-P=\"a;b\":kept as it is\n"
                             "TEL;TYPE=WORK:+1 555 0300\n"
                             "REV:2026-11-23T06:07:00Z\n"
                             "UID:11111111-2222-3333-4444-555555555555\n"));
}

TEST(EditedCard, KeepsForeignParametersOfAChangedPhone) {
  const auto edited = editedBy(cardText(kForeign), [](CardContent& content) {
    changeEntry(content, kPhone, "+1 555 0100", "+1 555 0400");
  });
  EXPECT_NE(edited.find("\r\nTEL;TYPE=CELL;X-SHARED=yes:+1 555 0400\r\n"), std::string::npos)
      << edited;
}

TEST(EditedCard, ChangesAnEntryWithItsLabelUnderTheSameGroup) {
  const auto edited = editedBy(cardText(kForeign), [](CardContent& content) {
    changeEntry(content, kEmail, "ann@example.org", "lee@example.org");
  });
  EXPECT_NE(edited.find("\r\nitem1.EMAIL;TYPE=pref:lee@example.org\r\n"
                        "item1.X-ABLabel:Boat\r\nNOTE:"),
            std::string::npos)
      << edited;
}

TEST(EditedCard, GivesNewGroupsNumbersThatTheTextDoesNotHave) {
  const auto edited = editedBy(cardText(kForeign), [](CardContent& content) {
    addEntry(content, kPhone, "+1 555 0500", "Cabin");
  });
  EXPECT_NE(edited.find("TEL;TYPE=WORK:+1 555 0200\r\n"
                        "item2.TEL:+1 555 0500\r\nitem2.X-ABLabel:Cabin\r\n"
                        "REV:2026-11-23T06:07:00Z\r\n"),
            std::string::npos)
      << edited;
}

TEST(EditedCard, TakesAwayAnEntryWithItsLabel) {
  const auto edited = editedBy(cardText(kForeign), [](CardContent& content) {
    removeEntry(content, kEmail, "ann@example.org");
  });
  EXPECT_EQ(edited.find("item1"), std::string::npos) << edited;
  EXPECT_EQ(edited.find("Boat"), std::string::npos) << edited;
  EXPECT_NE(edited.find("+1 555 0100\r\nNOTE:A long note that this program folds where it likes\r\n"
                        " \\, after a comma\\; and so on\r\nADR"),
            std::string::npos)
      << edited;
}

TEST(EditedCard, ChangesNameAndFormattedNameTogether) {
  const auto edited = editedBy(cardText(kForeign),
                               [](CardContent& content) { setText(content, kLast, "Lee-Smith"); });
  EXPECT_NE(edited.find("\r\nN:Lee-Smith;Ann;;;\r\nFN:Ann Lee-Smith\r\ntel;"), std::string::npos)
      << edited;
}

TEST(EditedCard, DropsTheFormattedNameOfAFormerName) {
  const auto text = cardText("N:Lee;Ann;;;\nFN:Dr. Ann Lee the Elder\nUID:u\nTEL:1\n");
  const auto said = contentOf(text);
  auto properties = propertiesOfRecord(said);
  properties.set(kFirst, Object("Anna"));
  const auto record = contentOfRecord(false, std::move(properties), nullptr, {}, {});
  const auto merged = merge(&said, said, &said, record);
  EXPECT_EQ(editedCard(text, said, merged.forThem, kNow),
            cardText("N:Lee;Anna;;;\nFN:Anna Lee\nUID:u\nTEL:1\nREV:20261123T060700Z\n"));
}

TEST(EditedCard, PutsWhatIsNewBeforeTheEnd) {
  const auto edited = editedBy(cardText("N:Lee;Ann;;;\nFN:Ann Lee\nUID:u1\n"),
                               [](CardContent& content) { setText(content, kNote, "New"); });
  EXPECT_EQ(edited, cardText("N:Lee;Ann;;;\nFN:Ann Lee\nUID:u1\nNOTE:New\nREV:20261123T060700Z\n"));
}

TEST(EditedCard, WritesWhatServersWantAndTheTextLacks) {
  const auto text = cardText("FN:Ann Lee\nTEL:1\n");
  const auto said = contentOf(text);
  auto wanted = said;
  setText(wanted, kCardUid, "u7");
  EXPECT_EQ(editedCard(text, said, wanted, kNow),
            cardText("FN:Ann Lee\nTEL:1\nN:Lee;Ann;;;\nREV:20261123T060700Z\nUID:u7\n"));
}

TEST(EditedCard, NeverChangesTheUidOfATextThatHasOne) {
  const auto text = cardText("N:Lee;Ann;;;\nFN:Ann Lee\nUID:urn:uuid:theirs\n");
  const auto said = contentOf(text);
  auto wanted = said;
  setText(wanted, kCardUid, "ours");
  EXPECT_EQ(editedCard(text, said, wanted, kNow),
            cardText("N:Lee;Ann;;;\nFN:Ann Lee\nUID:urn:uuid:theirs\nREV:20261123T060700Z\n"));
}

TEST(EditedCard, WritesPicturesAsTheVersionHasThem) {
  const std::string jpeg = "\xFF\xD8\xFF\xE0 picture";
  const auto addPhoto = [&](CardContent& content) { content.photo = makeData(jpeg); };
  const auto in30 = editedBy(cardText("N:Lee;Ann;;;\nFN:Ann Lee\nUID:u\n"), addPhoto);
  EXPECT_NE(in30.find("\r\nPHOTO;ENCODING=b;TYPE=JPEG:" + base64(jpeg) + "\r\n"), std::string::npos)
      << in30;
  const auto in40 = editedBy(cardText("N:Lee;Ann;;;\nFN:Ann Lee\nUID:u\n", "4.0"), addPhoto);
  EXPECT_NE(in40.find("\r\nPHOTO:data:image/jpeg;base64," + base64(jpeg) + "\r\n"),
            std::string::npos)
      << in40;
}

TEST(EditedCard, ReplacesCategoriesAndNothingElse) {
  const auto edited =
      editedBy(cardText("N:Lee;Ann;;;\nFN:Ann Lee\nCATEGORIES;LANGUAGE=en:A,B\nx-foo:1\nUID:u\n"),
               [](CardContent& content) {
                 content.categories = {"B", "C"};
               });
  EXPECT_EQ(edited, cardText("N:Lee;Ann;;;\nFN:Ann Lee\nCATEGORIES:B,C\nx-foo:1\nUID:u\n"
                             "REV:20261123T060700Z\n"));
}

TEST(EditedCard, WritesA21TextAnewIn30) {
  const auto text = withCrlf("BEGIN:VCARD\nVERSION:2.1\nN:Lee;Ann\nTEL;HOME:1\nEND:VCARD\n");
  const auto edited = editedBy(text, [](CardContent& content) { setText(content, kNote, "x"); });
  EXPECT_NE(edited.find("VERSION:3.0\r\n"), std::string::npos);
  EXPECT_NE(edited.find("TEL;TYPE=HOME:1\r\n"), std::string::npos) << edited;
}

TEST(EditedCard, WritesATextWithoutItsFrameAnew) {
  for (const std::string text : {"BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann\r\nUID:u\r\n",
                                 "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann\r\nUID:u\r\n END:VCARD\r\n",
                                 "VERSION:3.0\r\nFN:Ann\r\nUID:u\r\nEND:VCARD\r\n"}) {
    const auto edited = editedBy(text, [](CardContent& content) { setText(content, kNote, "x"); });
    EXPECT_EQ(edited.substr(0, 26), "BEGIN:VCARD\r\nVERSION:3.0\r\n") << edited;
    EXPECT_NE(edited.find("\r\nEND:VCARD\r\n"), std::string::npos) << edited;
  }
}

TEST(EditedCard, LeavesControlCharactersOut) {
  const auto text = cardText("N:Lee;Ann;;;\nFN:Ann Lee\nNOTE:a\vb\nTEL:1\nUID:u\n");
  const auto said = contentOf(text);
  auto wanted = said;
  changeEntry(wanted, kPhone, "1", "2");
  EXPECT_EQ(editedCard(text, said, wanted, kNow),
            cardText("N:Lee;Ann;;;\nFN:Ann Lee\nNOTE:ab\nTEL:2\nUID:u\nREV:20261123T060700Z\n"));
}

TEST(NewCard, HasWhatServersWant) {
  CardContent content;
  setText(content, kFirst, "Ann");
  content.categories = {"Crew"};
  EXPECT_EQ(newCard(content, "u1", vcard::CardVersion::V30, kNow),
            cardText("N:;Ann;;;\nFN:Ann\nUID:u1\nCATEGORIES:Crew\nREV:20261123T060700Z\n"));
  EXPECT_EQ(newCard(content, "urn:uuid:u1", vcard::CardVersion::V40, kNow),
            cardText("N:;Ann;;;\nFN:Ann\nUID:urn:uuid:u1\nCATEGORIES:Crew\n"
                     "REV:20261123T060700Z\n",
                     "4.0"));
}

TEST(WithCrlf, EndsEveryLineAlike) {
  EXPECT_EQ(withCrlf("a\nb\rc\r\nd\r\r\ne"), "a\r\nb\r\nc\r\nd\r\ne\r\n");
  EXPECT_EQ(withCrlf("a\r\n"), "a\r\n");
  EXPECT_EQ(withCrlf("a\n\nb"), "a\r\n\r\nb\r\n");
  EXPECT_EQ(withCrlf(""), "");
}

TEST(FileNameFor, TakesTheUidWhereItCanBeOne) {
  EXPECT_EQ(fileNameFor("Ab-1_2.x"), "Ab-1_2.x");
  EXPECT_EQ(fileNameFor(std::string(100, 'a')), std::string(100, 'a'));
  for (const std::string uid : {"", ".a", "a/b", "a b", "urn:uuid:a", "\xC3\xA4"}) {
    EXPECT_EQ(fileNameFor(uid).size(), 36U) << uid;
  }
  EXPECT_EQ(fileNameFor(std::string(101, 'a')).size(), 36U);
}

}  // namespace
}  // namespace ox::sync
