#include "ox/transfer/importer.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <utility>

#include "ox/base/store_location.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/records/property_keys.hpp"
#include "tests/support/no_more_threads.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/switched_source.hpp"
#include "tests/transfer/imported_cards.hpp"

namespace ox::vcard {
namespace {

using support::StoreBuilder;
using support::SwitchedSource;
using support::temporaryFile;

TEST(Importer, CountsEveryCardOnceWhereverTheFileIsCut) {
  SwitchedSource::install();
  const auto text = cardOf("a", "Ann") + cardOf("b", "Ben");
  const auto firstCard = cardOf("a", "Ann").size();
  for (std::size_t length = 0; length <= text.size(); ++length) {
    const auto container = "c" + std::to_string(length) + ":ABAccount";
    StoreBuilder().container(container, "cut", 3);
    const auto report =
        importFiles({temporaryFile("cut.vcf", text.substr(0, length))}, container, {});
    const auto stored = support::realSource().recordsIn(container, RecordKind::Person).size();
    ASSERT_EQ(report.failure, "") << length;
    ASSERT_EQ(report.cards, report.added + report.refused) << length;
    ASSERT_EQ(report.added, stored) << length;
    // A card counts once it says something, its UID say: what is missing then is told.
    const std::size_t begin = sizeof("BEGIN:VCARD") - 1;
    const std::size_t uid = sizeof("BEGIN:VCARD\r\nVERSION:3.0\r\nUID:a") - 1;
    const auto behind = [&](std::size_t place) { return length >= place ? 1U : 0U; };
    ASSERT_EQ(report.cards, behind(begin) + behind(firstCard + begin)) << length;
    ASSERT_EQ(stored, behind(uid) + behind(firstCard + uid)) << length;
    const bool isTorn = (length >= uid && length + 2 < firstCard) ||
                        (length >= firstCard + uid && length + 2 < text.size());
    ASSERT_EQ(report.repaired, isTorn ? 1U : 0U) << length;
  }
}

TEST(Importer, WritesFiveThousandCardsAtATimeAndAsksTheEmptyStoreNothing) {
  auto& source = SwitchedSource::install();
  std::uint64_t lastDone = 0;
  ImportOptions options;
  options.progress = [&](std::uint64_t done, std::uint64_t total) {
    EXPECT_GE(done, lastDone);
    EXPECT_LE(done, total);
    lastDone = done;
  };
  const auto text = manyCards(12500);
  const auto file = temporaryFile("many.vcf", text);
  EXPECT_EQ(countsOf(importFiles({file}, "_local", options)), "12500 = 12500 + 0 + 0 + 0 + 0");
  const auto counts = source.counts();
  EXPECT_EQ(counts.execute, 3U);
  EXPECT_EQ(counts.matches, 0U);
  EXPECT_EQ(counts.checkpoint, 1U);
  EXPECT_EQ(lastDone, text.size());
  EXPECT_EQ(countsOf(importFiles({file}, "_local", {})), "12500 = 0 + 0 + 12500 + 0 + 0");
}

TEST(Importer, WritesMoreCardsAtATimeIntoALargeBook) {
  auto& source = SwitchedSource::install();
  const auto file = temporaryFile("many.vcf", manyCards(12500));
  source.claimRecords(120'000);
  EXPECT_EQ(countsOf(importFiles({file}, "_local", {})), "12500 = 12500 + 0 + 0 + 0 + 0");
  EXPECT_EQ(source.counts().execute, 2U);  // 6,000 and the rest
  source.claimRecords(5'000'000);
  StoreBuilder().container("other:ABAccount", "other", 3);
  source.resetCounts();
  EXPECT_EQ(countsOf(importFiles({file}, "other", {})), "12500 = 12500 + 0 + 0 + 0 + 0");
  EXPECT_EQ(source.counts().execute, 1U);
}

TEST(Importer, TakesCardsOfOneContentForOneWithinABatchWhateverTheOrderOfTheirFields) {
  const auto card = [](const std::string& first, const std::string& second) {
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;Ann;;;\r\nFN:Ann\r\n" + first + "\r\n" + second +
           "\r\nEND:VCARD\r\n";
  };
  const auto cards = card("TEL:1", "NOTE:a") + card("NOTE:a", "TEL:1") + card("TEL:1", "NOTE:b");
  EXPECT_EQ(countsOf(importFiles({temporaryFile("same.vcf", cards)}, "_local", {})),
            "3 = 2 + 0 + 1 + 0 + 0");
}

TEST(Importer, TakesAnAccountForEmptyThatHoldsNoPerson) {
  StoreBuilder().container("other:ABAccount", "other", 3);
  const auto isEmpty = [](const std::string& account) {
    return std::pair(contactSource().isEmpty(account, RecordKind::Person),
                     contactSource().isEmpty(account, RecordKind::Group));
  };
  const auto group = temporaryFile("group.vcf",
                                   "BEGIN:VCARD\r\nVERSION:3.0\r\nN:G\r\nFN:G\r\n"
                                   "X-ADDRESSBOOKSERVER-KIND:group\r\nEND:VCARD\r\n");
  EXPECT_EQ(countsOf(importFiles({group}, "other", {})), "1 = 0 + 0 + 0 + 0 + 1");
  EXPECT_EQ(isEmpty("other"), std::pair(true, false));
  EXPECT_EQ(isEmpty("_local"), std::pair(true, true));
  importFiles({temporaryFile("ann.vcf", cardOf("a", "Ann"))}, "other", {});
  EXPECT_EQ(isEmpty("other"), std::pair(false, false));
  EXPECT_EQ(isEmpty("_local"), std::pair(true, true));
}

TEST(Importer, AsksAboutAThousandCardsAtATime) {
  auto& source = SwitchedSource::install();
  const auto file = temporaryFile("many.vcf", manyCards(2500));
  importFiles({file}, "_local", {});
  source.resetCounts();
  EXPECT_EQ(countsOf(importFiles({file}, "_local", {})), "2500 = 0 + 0 + 2500 + 0 + 0");
  const auto known = source.counts();
  EXPECT_EQ(known.matches, 3U);
  EXPECT_EQ(known.committedContents + known.committedValues + known.committedImage, 0U);
  // Other content: it is read, for an export may differ from what it was made of.
  auto changed = manyCards(500);
  for (std::size_t at = 0; (at = changed.find(";P", at)) != std::string::npos;) changed[++at] = 'Q';
  source.resetCounts();
  ImportOptions options;
  options.update = true;
  const auto report = importFiles({temporaryFile("changed.vcf", changed)}, "_local", options);
  EXPECT_EQ(countsOf(report), "500 = 0 + 500 + 0 + 0 + 0");
  EXPECT_EQ(source.counts().matches, 1U);
  EXPECT_EQ(source.counts().committedContents, 1U);
}

// Cards that match one another, and the same stored person, within what the store is asked at once.
TEST(Importer, ComparesCardsOfOneBatchWithEachOther) {
  const auto importing = [](const std::string& cards, bool update) {
    ImportOptions options;
    options.update = update;
    return countsOf(importFiles({temporaryFile("batch.vcf", cards)}, "_local", options));
  };
  const auto names = [] {
    std::string text;
    for (const auto& key : contactSource().recordsIn("_local", RecordKind::Person)) {
      text += *contactSource().committedValues(key)->text(property_id::kFirst) + " ";
    }
    return text;
  };
  EXPECT_EQ(importing(cardOf("a", "Ann"), false), "1 = 1 + 0 + 0 + 0 + 0");
  const auto cards = cardOf("a", "Ann") + cardOf("a", "Bea") + cardOf("a", "Bea") +
                     cardOf("a", "Cyd") + cardOf("b", "Ben") + cardOf("urn:uuid:b", "Ben") +
                     cardOf("b", "Bob");
  EXPECT_EQ(importing(cards, false), "7 = 1 + 0 + 6 + 0 + 0");
  EXPECT_EQ(names(), "Ann Ben ");
  // Each time the card of Ann comes first and changes nothing, those behind it do.
  EXPECT_EQ(importing(cards, true), "7 = 0 + 3 + 4 + 0 + 0");
  EXPECT_EQ(names(), "Cyd Bob ");
  EXPECT_EQ(importing(cards, true), "7 = 0 + 5 + 2 + 0 + 0");
  EXPECT_EQ(names(), "Cyd Bob ");
}

TEST(Importer, DoesWithoutThreads) {
  const support::NoMoreThreads none;
  const auto file = temporaryFile("many.vcf", manyCards(11000));
  EXPECT_EQ(countsOf(importFiles({file}, "_local", {})), "11000 = 11000 + 0 + 0 + 0 + 0");
  EXPECT_EQ(contactSource().recordsIn("_local", RecordKind::Person).size(), 11000U);
}

TEST(Importer, WritesLargeCardsAsSoonAsTheyTakeMuchRoom) {
  auto& source = SwitchedSource::install();
  std::string text;
  for (int i = 0; i < 5; ++i) {
    std::string kept = "X-LARGE:";
    kept.resize(20'000'000, 'x');
    kept += "\r\n";
    text += cardOf("u" + std::to_string(i), "P").insert(sizeof("BEGIN:VCARD\r\n") - 1, kept);
  }
  const auto report = importFiles({temporaryFile("large.vcf", text)}, "_local", {});
  EXPECT_EQ(countsOf(report), "5 = 5 + 0 + 0 + 0 + 0");
  EXPECT_EQ(source.counts().execute, 2U) << "four of them reach 64 MiB";
}

// Cards are read ahead on another thread.
TEST(Importer, KeepsOrderAndLinesOfFilesAcrossThreads) {
  const std::string empty = "BEGIN:VCARD\r\nVERSION:3.0\r\nEND:VCARD\r\n";
  const auto lines = [](std::uint64_t cards) { return cards * 6; };
  std::string first;
  for (int i = 0; i < 11000; ++i) {
    if (i == 499 || i == 501 || i == 10999) first += empty;
    first += cardOf("u" + std::to_string(i), "P" + std::to_string(i));
  }
  const auto one = temporaryFile("one.vcf", first).string();
  const auto two = temporaryFile("two.vcf", empty + manyCards(3)).string();
  const auto report = importFiles({one, two}, "_local", {});
  const std::string reason = "the card holds no property";
  const std::vector<ImportProblem> expected = {{one, lines(499) + 1, reason},
                                               {one, lines(501) + 4, reason},
                                               {one, lines(10999) + 7, reason},
                                               {two, 1, reason}};
  EXPECT_EQ(report.problems, expected);
  EXPECT_EQ(countsOf(report), "11007 = 11000 + 0 + 3 + 4 + 0");
  const auto persons = contactSource().recordsIn("_local", RecordKind::Person);
  ASSERT_EQ(persons.size(), 11000U);
  for (std::size_t i = 0; i < persons.size(); ++i) {
    const auto values = contactSource().committedValues(persons[i]);
    ASSERT_EQ(*values->text(property_id::kFirst), "P" + std::to_string(i));
  }
}

TEST(Importer, KeepsWhatItCommittedWhenStopped) {
  SwitchedSource::install();
  std::atomic<bool> stop = false;
  ImportOptions options;
  options.stop = &stop;
  options.progress = [&](std::uint64_t, std::uint64_t) { stop = true; };
  const auto report = importFiles({temporaryFile("many.vcf", manyCards(12500))}, "_local", options);
  EXPECT_TRUE(report.interrupted);
  EXPECT_EQ(countsOf(report), "5000 = 5000 + 0 + 0 + 0 + 0");
  EXPECT_EQ(support::realSource().recordsIn("_local", RecordKind::Person).size(), 5000U);
}

const support::SecondProcess looksAtTheStore("looksAtTheStore", [](const auto&) {
  const auto source = openStoreSource(contactStorePath());  // closed at the end
  return source->recordsIn("_local", RecordKind::Person).size() == 1 ? 0 : 1;
});

// Had the import opened and closed it, the locks of this process would be gone, and the other one
// would take the log away under it.
TEST(Importer, LeavesTheFilesOfTheStoreToTheStore) {
  StoreBuilder().person("p1", {.first = "Ann"});
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  for (const auto& name : {store, store + "-wal", store + "-shm"}) {
    const auto report = importFiles({name}, "_local", {});
    EXPECT_EQ(report.uselessFiles,
              std::vector<std::string>{name + ": is a file of the store itself"});
    EXPECT_EQ(looksAtTheStore.run().exitCode, 0);
    EXPECT_TRUE(std::filesystem::exists(store + "-wal")) << name;
  }
}

std::string skippedOf(const ImportReport& report) {
  std::string text;
  for (const auto& card : report.skippedCards) {
    text += std::to_string(card.file) + ":" + std::to_string(card.line) +
            (card.differs ? " differs\n" : " same\n");
  }
  return text;
}

TEST(Importer, NamesEveryCardThatItSkips) {
  const auto one = temporaryFile("one.vcf", cardOf("a", "Ann") + cardOf("a", "Ann")).string();
  const auto two = temporaryFile("two.vcf", cardOf("b", "Ben") + cardOf("a", "Bea")).string();
  const auto report = importFiles({one, two}, "_local", {});
  EXPECT_EQ(countsOf(report), "4 = 2 + 0 + 2 + 0 + 0");
  EXPECT_EQ(skippedOf(report), "0:7 same\n1:7 differs\n");
  const auto many = temporaryFile("many.vcf", manyCards(6000)).string();
  importFiles({many}, "_local", {});
  const auto again = importFiles({two, many}, "_local", {});
  EXPECT_EQ(again.skipped, 6002U);
  ASSERT_EQ(again.skippedCards.size(), 6002U);
  EXPECT_EQ(again.skippedCards.back().file, 1U);
  EXPECT_EQ(again.skippedCards.back().line, 5999U * 6 + 1);
}

TEST(Importer, GoesOnBesideAFileThatHoldsNoCard) {
  const auto none = temporaryFile("none.vcf", "").string();
  const auto good = temporaryFile("good.vcf", cardOf("a", "Ann")).string();
  const auto report = importFiles({none, good}, "_local", {});
  EXPECT_EQ(countsOf(report), "1 = 1 + 0 + 0 + 0 + 0");
  EXPECT_EQ(report.filesRead, 1U);
  EXPECT_EQ(report.problems, (std::vector<ImportProblem>{{none, 0, "holds no vCard"}}));
  EXPECT_EQ(importFiles({none}, "_local", {}).filesRead, 0U);
}

TEST(Importer, ShowsWhatItWouldReadAndWritesNothing) {
  const auto file = temporaryFile("mixed.vcf", cardOf("a", "Ann") + cardOf("b", "J\xFCrgen") +
                                                   "BEGIN:VCARD\nVERSION:3.0\nEND:VCARD\n")
                        .string();
  std::string shown;
  ImportOptions options;
  options.preview = [&](const PreviewedCard& card) {
    shown += std::to_string(card.line) + " " + card.name + " [" + card.charset + "]\n";
  };
  const auto report = importFiles({file}, "", options);
  EXPECT_EQ(shown, "1 Ann []\n7 Jürgen [windows-1252]\n");
  EXPECT_EQ(countsOf(report), "3 = 2 + 0 + 0 + 1 + 0");
  EXPECT_EQ(report.repaired, 1U);
  EXPECT_TRUE(contactSource().recordsIn("_local", RecordKind::Person).empty());
}

// \xDF alone could be a letter of any charset; the others are Russian.
TEST(Importer, FilesOfABatchTellTheCharsetOfEachOther) {
  const auto first = temporaryFile("first.vcf", cardOf("a", "\xDF")).string();
  const auto second =
      temporaryFile("second.vcf", cardOf("b", "\xC8\xE2\xE0\xED\xEE\xE2\xE0 \xCE\xEB\xFC\xE3\xE0"))
          .string();
  const auto third = temporaryFile("third.vcf", cardOf("c", "\xCF\xE0\xE2\xEB\xEE\xE2")).string();
  const auto namesOf = [](const std::vector<std::string>& files) {
    std::string names;
    ImportOptions options;
    options.preview = [&](const PreviewedCard& card) { names += card.name + ","; };
    importFiles(files, "", options);
    return names;
  };
  EXPECT_EQ(namesOf({first}), "ß,");
  EXPECT_EQ(namesOf({first, second, third}), "Я,Иванова Ольга,Павлов,");
}

TEST(Importer, ACharsetThatIsGivenDecides) {
  // The bytes are UTF-8 too, by chance.
  const auto file = temporaryFile("gbk.vcf", cardOf("a", "\xC4\xA7")).string();
  const auto nameIn = [&](const std::string& charset) {
    std::string name;
    ImportOptions options;
    options.charset = charset;
    options.preview = [&](const PreviewedCard& card) {
      name = card.name + "[" + card.charset + "]";
    };
    const auto report = importFiles({file}, "", options);
    return name + std::to_string(report.repaired);
  };
  EXPECT_EQ(nameIn("GBK"), "魔[]0");
  EXPECT_EQ(nameIn("UTF-8"), "ħ[]0");
  EXPECT_TRUE(isCharsetOfCards("gb18030"));
  EXPECT_TRUE(isCharsetOfCards("ISO-2022-JP"));
  EXPECT_FALSE(isCharsetOfCards("UTF-16"));
  EXPECT_FALSE(isCharsetOfCards("no such"));
}

TEST(Importer, SaysWhyTheStoreFailed) {
  auto& source = SwitchedSource::install();
  source.denyContainerAccess();
  const auto report = importFiles({temporaryFile("one.vcf", manyCards(1))}, "_local", {});
  EXPECT_EQ(report.failureKind, StoreError::Kind::Denied);
  EXPECT_NE(report.failure, "");
  EXPECT_EQ(countsOf(report), "0 = 0 + 0 + 0 + 0 + 0");
}

}  // namespace
}  // namespace ox::vcard
