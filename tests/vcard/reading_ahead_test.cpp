#include <cstring>
#include <gtest/gtest.h>

#include "card_text.hpp"
#include "ox/base/base64.hpp"
#include "ox/base/checksum.hpp"
#include "ox/records/property_codec.hpp"
#include "random_card.hpp"
#include "tests/support/no_more_threads.hpp"
#include "written_card.hpp"

// Reading on all processors gives what reading on one thread does, in the same order.

namespace ox::vcard {
namespace {

using Threads = Reader::Threads;

// Everything that a reader tells, call by call.
std::string told(ByteSource& source, Threads threads) {
  Reader reader(source, threads);
  std::string out;
  const auto tellProgress = [&] {
    out += " " + std::to_string(reader.cardsSeen()) + " " + std::to_string(reader.bytesRead()) +
           " " + std::to_string(reader.strayCount()) + "\n";
  };
  try {
    while (const auto result = reader.next()) {
      out += textOf(*result);
      tellProgress();
    }
  } catch (const SourceError& error) {
    out += error.what();
  }
  tellProgress();
  for (const auto& [line, reason] : reader.strayLines()) {
    out += std::to_string(line) + " " + reason + "\n";
  }
  return out;
}

std::string told(std::string_view bytes, Threads threads) {
  MemorySource source(bytes);
  return told(source, threads);
}

// Cards of every sort, with what goes wrong between them.
std::string strangeFile(std::size_t cards) {
  RandomCards random(7);
  std::string file;
  for (std::size_t i = 0; i < cards; ++i) {
    const auto card = random.next();
    appendCard(card.properties, card.photo, {.version = CardVersion::V30}, file);
    if (i % 7 == 0) file += "stray " + std::to_string(i) + "\n\n";
    if (i % 11 == 0) file += "BEGIN:VCARD\nTITLE;QUOTED-PRINTABLE:=41\nno line\nTEL:1\n";  // no END
    if (i % 13 == 0)
      file +=
          "BEGIN:VCARD\nVERSION:3.0\nTITLE:Stra\xDF"
          "e\nEND:VCARD\n";
    if (i % 17 == 0) file += "BEGIN:VCARD\nVERSION:3.0\nEND:VCARD\n";
    if (i % 19 == 0) file += "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:g\nMEMBER:a\nEND:VCARD\n";
  }
  return file + "BEGIN:VCARD\nVERSION:3.0\nTITLE:cut";
}

TEST(ReadingAhead, GivesWhatReadingOnOneThreadGives) {
  const auto file = strangeFile(500);
  ASSERT_GT(file.size(), 900U << 10U);
  const auto expected = told(file, Threads::One);
  EXPECT_NE(expected.find("END:VCARD is missing at the end of the file"), expected.npos);
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(told(file, Threads::AllProcessors) == expected) << i;
  EXPECT_EQ(told("", Threads::AllProcessors), told("", Threads::One));
  EXPECT_EQ(told("x\n", Threads::AllProcessors), told("x\n", Threads::One));
}

TEST(ReadingAhead, NeedsNoThread) {
  const auto file = strangeFile(300);
  const auto expected = told(file, Threads::One);
  const support::NoMoreThreads none;
  EXPECT_TRUE(told(file, Threads::AllProcessors) == expected);
}

TEST(ReadingAhead, MayEndAnywhere) {
  const auto file = strangeFile(500);
  for (const int calls : {0, 1, 300, 500}) {
    MemorySource source(file);
    Reader reader(source, Threads::AllProcessors);
    for (int i = 0; i < calls; ++i) ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.cardsSeen(), static_cast<std::size_t>(calls));
  }
}

// Fails after so many bytes.
class FailingSource : public ByteSource {
 public:
  FailingSource(std::string_view bytes, std::size_t whole) : bytes_(bytes.substr(0, whole)) {}

  std::size_t read(char* buffer, std::size_t size) override {
    const auto count = bytes_.copy(buffer, size);
    if (count == 0) throw SourceError("torn out");
    bytes_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view bytes_;
};

TEST(ReadingAhead, AFailureComesBehindTheCardsBeforeIt) {
  const auto file = strangeFile(500);
  for (const std::size_t whole : {0U, 1000U, 300'000U, 700'001U}) {
    FailingSource alone(file, whole);
    FailingSource ahead(file, whole);
    const auto expected = told(alone, Threads::One);
    EXPECT_NE(expected.find("torn out"), expected.npos);
    EXPECT_TRUE(told(ahead, Threads::AllProcessors) == expected) << whole;
  }
}

// The stored form of a value of a custom property that no process has met yet.
std::string unmetProperty(const std::string& name) {
  const std::string known = "Met" + std::string(name.size() - 3, '_');
  PropertyBag bag;
  bag.set(property_table::add(known, kABStringProperty), Object("x"));
  auto bytes = encodeProperties(bag);
  bytes.replace(bytes.find(known), known.size(), name);
  bytes.resize(bytes.size() - 8);
  const auto sum = checksum64(bytes);
  bytes.append(reinterpret_cast<const char*>(&sum), sizeof sum);
  return base64(bytes);
}

// They are numbered as the process meets them, and all later cards show that order.
TEST(ReadingAhead, CustomPropertiesAreMetInTheOrderOfTheCards) {
  std::string file;
  std::vector<std::string> names;
  for (int i = 0; i < 100; ++i) {
    names.push_back("Later" + std::to_string(1000 + i));
    file += strangeFile(10) +
            "\nBEGIN:VCARD\nVERSION:3.0\nitem1.X-OX-PROPERTY:" + unmetProperty(names.back()) +
            "\nEND:VCARD\n";
  }
  MemorySource source(file);
  Reader reader(source, Threads::AllProcessors);
  while (reader.next()) {
  }
  const auto first = property_table::idOf(RecordKind::Person, names.front());
  ASSERT_NE(first, 0U);
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(property_table::idOf(RecordKind::Person, names[i]),
              first + static_cast<PropertyId>(i))
        << names[i];
  }
}

}  // namespace
}  // namespace ox::vcard
