#include <algorithm>
#include <array>
#include <gtest/gtest.h>

#include "card_text.hpp"

using namespace std::string_literals;

namespace ox::vcard {
namespace {

TEST(CardFraming, VersionsLineEndsAndBlanksMayBeMixed) {
  EXPECT_EQ(textOfAll("BEGIN:VCARD\r\nVERSION:2.1\rTITLE;QUOTED-PRINTABLE:=41\nEND:VCARD\r\r\n"
                      "\n\nbegin:vcard \nversion:3.0\n\ntitle:b\r\rend:vcard \t\n"
                      "\xEF\xBB\xBF"
                      "BEGIN: VCARD\r\r\nVERSION:4.0\r\r\nTITLE:c\r\r\n d\r\r\nEND:VCARD"),
            "JobTitle=A\n--\nJobTitle=b\n--\nJobTitle=cd\n");
}

// Gives what it holds in pieces of that size.
class PiecewiseSource : public ByteSource {
 public:
  PiecewiseSource(std::string_view bytes, std::size_t piece) : bytes_(bytes), piece_(piece) {}

  std::size_t read(char* buffer, std::size_t size) override {
    const auto count = bytes_.copy(buffer, std::min(size, piece_));
    bytes_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view bytes_;
  std::size_t piece_;
};

std::string textInPieces(std::string_view bytes, std::size_t piece) {
  PiecewiseSource source(bytes, piece);
  Reader reader(source);
  const auto result = reader.next();
  return result ? textOf(*result) : "";
}

TEST(CardFraming, LinesEndAtEveryPlaceWhateverTheirBreakAndThePiecesReadAtOnce) {
  for (const auto* lineBreak : {"\n", "\r", "\r\n", "\r\r\n"}) {
    for (std::size_t length = 1; length <= 40; ++length) {
      const std::string name(length, 'x');
      const auto job = "\xC3\xA9" + name;
      std::string card = "BEGIN:VCARD";
      for (const auto& line : {"VERSION:3.0"s, "NICKNAME:" + name, "TITLE:" + job, "END:VCARD"s}) {
        (card += lineBreak) += line;
      }
      card += lineBreak;
      const auto expected = "Nickname=" + name + "\nJobTitle=" + job + "\n";
      for (const auto piece : std::array<std::size_t, 5>{1, 15, 16, 17, 1000}) {
        ASSERT_EQ(textInPieces(card, piece), expected) << length << " in pieces of " << piece;
      }
    }
  }
}

// Bytes of a line tell whether it is UTF-8, wherever in it they stand.
TEST(CardFraming, EveryByteBeyondAsciiIsSeenInALine) {
  for (std::size_t place = 0; place < 40; ++place) {
    std::string name(40, 'x');
    name[place] = '\xE9';
    const auto text = textOfCard("3.0", "TITLE:" + name + "\nNICKNAME:y\n");
    auto expected = std::string(name).replace(place, 1, "\xC3\xA9");
    EXPECT_NE(text.find("JobTitle=" + expected + "\n"), std::string::npos) << text;
    EXPECT_NE(text.find("repair 3: text is not UTF-8, read as "), std::string::npos) << text;
  }
}

TEST(CardFraming, MissingVersionIsGuessedAndNamed) {
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nNOTE:a\\nb\nEND:VCARD\n"
                      "BEGIN:VCARD\nTEL;CELL:1\nNOTE:a\\nb\nEND:VCARD\n"),
            "Note=a\nb\nrepair 1: VERSION is missing\n--\n"
            "Note=a\nb\nPhone[_$!<Mobile>!$_]=1\nrepair 4: VERSION is missing\n");
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nN:a;b,c\nVERSION:2.1\nEND:VCARD\n"), "First=b,c\nLast=a\n");
}

TEST(CardFraming, MissingEndsNeverTouchTheNextCard) {
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nVERSION:3.0\nTITLE:a\nBEGIN:VCARD\nVERSION:3.0\nTITLE:b\n"
                      "END:VCARD\nBEGIN:VCARD\nVERSION:3.0\nTITLE:c\n"),
            "JobTitle=a\nrepair 4: END:VCARD is missing before the next card\n--\n"
            "JobTitle=b\n--\n"
            "JobTitle=c\nrepair 10: END:VCARD is missing at the end of the file\n");
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nVERSION:3.0\nTITLE:a\nEND:VCA"),
            "JobTitle=a\nrepair 4: END:VCARD is cut off\n");
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nEND:VCARD\nBEGIN:VCARD\nVERSION:3.0\nTITLE:a\nEND:VCARD\n"),
            "refused 1: the card holds no property\n--\nJobTitle=a\n");
}

TEST(CardFraming, CardWithoutItsEndIsReadAsFarAsTheFileGoes) {
  const std::string missing = "END:VCARD is missing at the end of the file\n";
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nVERSION:3.0\nTITLE:a\nTEL:12"),
            "JobTitle=a\nPhone[-]=12\nrepair 4: " + missing);
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nVERSION:3.0\nTITLE:a\n\n"), "JobTitle=a\nrepair 4: " + missing);
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nTITLE:a\nAGENT:\nBEGIN:VCARD\nTITLE:in\n"),
            "JobTitle=a\nkept=AGENT:BEGIN:VCARD\nTITLE:in\nrepair 1: VERSION is missing\n"
            "repair 5: " +
                missing);
  EXPECT_EQ(textOfAll("BEGIN:VCARD\nVERSION:3.0\n"), "refused 1: the card holds no property\n");
}

TEST(CardFraming, CardWithoutItsBeginIsReadFromItsFirstProperty) {
  const std::string good = "BEGIN:VCARD\nVERSION:3.0\nTITLE:good\nEND:VCARD\n";
  EXPECT_EQ(textOfAll("VERSION:3.0\nTITLE:a\nEND:VCARD\n" + good),
            "JobTitle=a\nrepair 1: BEGIN:VCARD is missing\n--\nJobTitle=good\n");
  EXPECT_EQ(textOfAll(good + "N:b\nTEL;HOME:1\nEND:VCARD\n" + good),
            "JobTitle=good\n--\nLast=b\nPhone[_$!<Home>!$_]=1\n"
            "repair 5: BEGIN:VCARD is missing\nrepair 5: VERSION is missing\n--\nJobTitle=good\n");
  MemorySource source("IN:VCARD\nVERSION:3.0\nTITLE:a\nno line\nEND:VCARD\nEND:VCARD\n");
  Reader reader(source);
  EXPECT_EQ(textOf(*reader.next()),
            "JobTitle=a\nno line\nrepair 2: BEGIN:VCARD is missing\n"
            "repair 4: line without a name, joined to the line before it\n");
  EXPECT_FALSE(reader.next());
  const std::vector<Problem> stray = {{1, "text outside of any card: IN:VCARD"},
                                      {6, "text outside of any card: END:VCARD"}};
  EXPECT_EQ(reader.strayLines(), stray);
}

TEST(CardFraming, TextWithoutBeginAndEndIsNoCard) {
  std::string text = "BEGIN:VCALENDAR\n";
  for (int i = 0; i < 20000; ++i) text += "VERSION:2.0\nNOTE:x\n";
  for (const std::string& end :
       {std::string(), "BEGIN:VCARD\nVERSION:3.0\nTITLE:a\nEND:VCARD\n"s}) {
    const auto bytes = text + end;
    MemorySource source(bytes);
    Reader reader(source);
    EXPECT_EQ(reader.next().has_value(), !end.empty());
    EXPECT_EQ(reader.strayCount(), 40001U);
  }
}

TEST(CardFraming, ParametersOfNothingAreNoProperty) {
  EXPECT_EQ(textOfCard("3.0", "N;LANGUAGE=de:\n"), "refused 1: the card holds no property\n");
  EXPECT_EQ(textOfCard("3.0", "N;LANGUAGE=de:\nTITLE:a\n"), "JobTitle=a\nkept=;3#0;LANGUAGE=de\n");
}

TEST(CardFraming, LongNameBehindAPictureIsNoPartOfIt) {
  const std::string name = "X" + std::string(80, 'h');
  const auto folded = name.substr(0, 75) + "\n " + name.substr(75);
  EXPECT_EQ(textOfCard("3.0", "PHOTO;ENCODING=b:AQID\n" + folded + ":1\n"),
            "kept=" + name + ":1\nphoto=3 bytes\n");
}

TEST(CardFraming, NestedCardsBelongToTheOuterOne) {
  const std::string inner = "BEGIN:VCARD\nVERSION:2.1\nTITLE:in\nEND:VCARD\n";
  EXPECT_EQ(textOfCard("2.1", "AGENT:\n" + inner + "TITLE:out\n"),
            "JobTitle=out\nkept=AGENT:BEGIN:VCARD\nVERSION:2.1\nTITLE:in\nEND:VCARD\n");
  EXPECT_EQ(textOfCard("2.1", "AGENT: \t\n" + inner + "TITLE:out\n"),
            "JobTitle=out\nkept=AGENT:BEGIN:VCARD\nVERSION:2.1\nTITLE:in\nEND:VCARD\n");
  EXPECT_EQ(textOfCard("3.0", "AGENT:" + inner + "TITLE:out\n"),
            "JobTitle=out\nkept=AGENT:BEGIN:VCARD\nVERSION:2.1\nTITLE:in\nEND:VCARD\n");
  EXPECT_EQ(textOfCard("3.0", "AGENT:someone\nTITLE:out\n"), "JobTitle=out\nkept=AGENT:someone\n");
}

TEST(CardFraming, NestedCardThatNothingAnnouncesEndsNoLinesOfTheOuterOne) {
  const std::string inner = "BEGIN:VCARD\nVERSION:2.1\nTITLE:in\nEND:VCARD\n";
  const std::string kept = "kept=AGENT:BEGIN:VCARD\nVERSION:2.1\nTITLE:in\nEND:VCARD\n";
  const std::string told = ": a card within the card, kept as its AGENT\n";
  EXPECT_EQ(textOfCard("2.1", inner + "TITLE:out\n"), "JobTitle=out\n" + kept + "repair 3" + told);
  EXPECT_EQ(textOfCard("3.0", "TITLE:out\n" + inner), "JobTitle=out\n" + kept + "repair 4" + told);
  EXPECT_EQ(textOfCard("3.0", "TITLE:out\n" + inner + "TEL:1\n\n" + inner + "# x\nNOTE:n\n"),
            "JobTitle=out\nNote=n\nPhone[-]=1\n" + kept + kept + "repair 4" + told + "repair 10" +
                told + "repair 14: comment passed over: # x\n");
  EXPECT_EQ(
      textOfCard("2.1", "BEGIN:VCARD\nTITLE:mid\n" + inner + "END:VCARD\nTITLE:out\n"),
      "JobTitle=out\nkept=AGENT:BEGIN:VCARD\nTITLE:mid\n" + inner + "END:VCARD\nrepair 3" + told);
}

TEST(CardFraming, NestedCardInATextIsOneInCardsOfEachVersion) {
  for (const auto* version : {"2.1", "3.0"}) {
    EXPECT_EQ(textOfCard(version, "AGENT:BEGIN:VCARD\\nN:a\\;b\\nEND:VCARD\\n\n"),
              "kept=AGENT:BEGIN:VCARD\nN:a;b\nEND:VCARD\n\n")
        << version;
  }
}

std::string nested(int depth) {
  std::string text = "BEGIN:VCARD\nVERSION:2.1\nTITLE:x\n";
  for (int i = 0; i < depth; ++i) text += "AGENT:\nBEGIN:VCARD\nTITLE:y\n";
  for (int i = 0; i <= depth; ++i) text += "END:VCARD\n";
  return text;
}

TEST(CardFraming, DeepNestingIsRefusedAndTheNextCardIsRead) {
  const std::string good = "BEGIN:VCARD\nVERSION:3.0\nTITLE:good\nEND:VCARD\n";
  EXPECT_EQ(textOfAll(nested(8)).substr(0, 11), "JobTitle=x\n");
  EXPECT_EQ(textOfAll(nested(9) + good),
            "refused 1: cards are nested more than 8 deep\n--\nJobTitle=good\n");
  EXPECT_EQ(textOfAll(nested(10000) + good),
            "refused 1: cards are nested more than 8 deep\n--\nJobTitle=good\n");
  std::string begins;
  for (int i = 0; i < 10000; ++i) begins += "BEGIN:VCARD\n";
  const auto results = readAll(begins + good);
  ASSERT_EQ(results.size(), 10001U);
  EXPECT_EQ(textOf(results.front()), "refused 1: the card holds no property\n");
  EXPECT_EQ(textOf(results.back()), "JobTitle=good\n");
}

TEST(CardFraming, TextOutsideOfCardsIsCounted) {
  MemorySource source("hello\nBEGIN:VLIST\n\nBEGIN:VCARD\nVERSION:3.0\nTITLE:a\nEND:VCARD\nbye");
  Reader reader(source);
  ASSERT_TRUE(reader.next());
  EXPECT_FALSE(reader.next());
  EXPECT_EQ(reader.cardsSeen(), 1U);
  EXPECT_EQ(reader.strayCount(), 3U);
  const std::vector<Problem> expected = {{1, "text outside of any card: hello"},
                                         {2, "text outside of any card: BEGIN:VLIST"},
                                         {8, "text outside of any card: bye"}};
  EXPECT_EQ(reader.strayLines(), expected);
}

TEST(CardFraming, WhatIsNoVcardHoldsNoCard) {
  for (const std::string& bytes : {std::string(), "\x89PNG\r\n\x1A\n\0\0\0"s,
                                   std::string(100000, '\0'), std::string("\xEF\xBB\xBF")}) {
    MemorySource source(bytes);
    Reader reader(source);
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.cardsSeen(), 0U);
    EXPECT_EQ(reader.bytesRead(), bytes.size());
  }
}

TEST(CardFraming, NulIsACharacterOfTheText) {
  const std::string card = "BEGIN:VCARD\nVERSION:3.0\nNOTE:a\0b\nEND:VCARD\n"s;
  const auto cards = readAll(card);
  ASSERT_EQ(cards.size(), 1U);
  EXPECT_EQ(*std::get<Card>(cards[0]).properties.text(property_id::kNote), "a\0b"s);
}

}  // namespace
}  // namespace ox::vcard
