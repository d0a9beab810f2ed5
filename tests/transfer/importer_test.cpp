#include "ox/transfer/importer.hpp"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <utility>

#include "ox/base/store_location.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/records/property_keys.hpp"
#include "tests/support/no_more_threads.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/switched_source.hpp"

namespace ox::vcard {
namespace {

using support::PersonValues;
using support::StoreBuilder;
using support::SwitchedSource;
using support::temporaryFile;

std::string cardOf(const std::string& uid, const std::string& name) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nN:;" + name + ";;;\r\nFN:" + name +
         "\r\nEND:VCARD\r\n";
}

std::string manyCards(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += cardOf("u" + std::to_string(i), "P" + std::to_string(i));
  return text;
}

std::string countsOf(const ImportReport& report) {
  return std::to_string(report.cards) + " = " + std::to_string(report.added) + " + " +
         std::to_string(report.updated) + " + " + std::to_string(report.skipped) + " + " +
         std::to_string(report.refused) + " + " + std::to_string(report.groups);
}

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
    // A card whose lines are whole counts once its last one says END, be it mended.
    const std::size_t left = sizeof(":VCARD\r\n") - 1;
    const auto complete = static_cast<std::size_t>(length + left >= firstCard) +
                          static_cast<std::size_t>(length + left >= text.size());
    ASSERT_EQ(stored, complete) << length;
    const bool endIsTorn = (length + left >= firstCard && length + 2 < firstCard) ||
                           (length + left >= text.size() && length + 2 < text.size());
    ASSERT_EQ(report.repaired, endIsTorn ? 1U : 0U) << length;
  }
}

TEST(Importer, WritesFiveThousandCardsAtATimeAndAsksTheEmptyStoreNextToNothing) {
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
  // One import of this size in thirty mistakes a card for one that was added, and asks.
  EXPECT_LE(counts.matches, 2U);
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

// A source in whose way another process gets: what is to be done just before a request is written.
class InterruptedSource : public SwitchedSource {
 public:
  using Interruption = std::function<void(ContactSource& elsewhere)>;

  static InterruptedSource& install() {
    auto source = std::make_shared<InterruptedSource>();
    installContactSource(source);
    return *source;
  }
  InterruptedSource() : SwitchedSource(openStoreSource(contactStorePath())) {}

  // Once, before so many more requests.
  void beforeRequest(int passing, Interruption interruption) {
    passing_ = passing;
    interruption_ = std::move(interruption);
  }
  ContactSource& elsewhere() { return *elsewhere_; }

  bool execute(SaveRequest& request) override {
    if (interruption_ && passing_-- == 0) std::exchange(interruption_, nullptr)(*elsewhere_);
    return SwitchedSource::execute(request);
  }

 private:
  std::shared_ptr<ContactSource> elsewhere_ = openStoreSource(contactStorePath());
  int passing_ = 0;
  Interruption interruption_;
};

std::string withoutUid(const std::string& name) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;" + name + ";;;\r\nFN:" + name + "\r\nEND:VCARD\r\n";
}

// Four cards, two of them with other content, come in elsewhere: those of the batch that is being
// written, and of batches to come.
TEST(Importer, AddsNothingThatOthersAddMeanwhile) {
  struct Row {
    int requests;  // before that of the others
    bool update;
    std::string counts;
  };
  const std::vector<Row> rows = {
      {0, false, "12501 = 12497 + 0 + 4 + 0 + 0"},
      {0, true, "12501 = 12497 + 2 + 2 + 0 + 0"},
      {1, false, "12501 = 12498 + 0 + 3 + 0 + 0"},
      {2, false, "12501 = 12500 + 0 + 1 + 0 + 0"},
  };
  auto& source = InterruptedSource::install();
  const auto file = temporaryFile("many.vcf", manyCards(12500) + withoutUid("Zoe")).string();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto container = "c" + std::to_string(i) + ":ABAccount";
    StoreBuilder(source.elsewhere()).container(container, "account", 3);
    std::vector<std::string> known = {"u10", "urn:uuid:u6000", "u12000"};
    if (rows[i].requests > 0) known[0] = "elsewhere";
    if (rows[i].requests > 1) known[1] = "elsewhere too";
    if (rows[i].requests > 1) known[2] = "and there";
    source.beforeRequest(rows[i].requests, [&](ContactSource& elsewhere) {
      auto account = StoreBuilder(elsewhere).in(container);
      const auto add = [&](const PersonValues& values) {
        account.person(RecordKey::make(RecordKind::Person).text(), values);
      };
      add({.first = "P10", .more = {{property_id::kCardUid, Object(known[0])}}});
      add({.first = "Other", .more = {{property_id::kCardUid, Object(known[1])}}});
      add({.first = "Other", .more = {{property_id::kCardUid, Object(known[2])}}});
      // The same as the last card, which has no UID.
      add({.first = "Zoe"});
    });
    ImportOptions options;
    options.update = rows[i].update;
    const auto report = importFiles({file}, container, options);
    EXPECT_EQ(report.failure, "") << i;
    EXPECT_EQ(countsOf(report), rows[i].counts) << i;
    const auto differ = rows[i].update || rows[i].requests > 1 ? 0U : 2U;
    EXPECT_EQ(report.problems.size(), differ) << i;
    const auto others = rows[i].requests + (rows[i].requests > 1 ? 1 : 0);
    EXPECT_EQ(source.recordsIn(container, RecordKind::Person).size(),
              12501U + static_cast<std::size_t>(others))
        << i;
  }
}

TEST(Importer, AddsACardOnceFromManyThreads) {
  const auto file = temporaryFile("many.vcf", manyCards(6000) + withoutUid("Zoe")).string();
  std::vector<ImportReport> reports(3);
  std::vector<std::thread> threads;
  threads.reserve(reports.size());
  for (auto& report : reports) {
    threads.emplace_back([&] { report = importFiles({file}, "_local", {}); });
  }
  for (auto& thread : threads) thread.join();
  std::uint64_t added = 0;
  for (const auto& report : reports) {
    EXPECT_EQ(report.failure, "");
    EXPECT_EQ(report.added + report.skipped, 6001U);
    added += report.added;
  }
  EXPECT_EQ(added, 6001U);
  EXPECT_EQ(contactSource().recordsIn("_local", RecordKind::Person).size(), 6001U);
}

FoundRecords withCardUid(ContactSource& source, RecordKind kind, std::string_view uid) {
  return source.matches("_local", kind, std::vector<SoughtRecord>{{uid}}).at(0);
}

void removeElsewhere(ContactSource& elsewhere, const std::string& uid) {
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    for (const auto& found : withCardUid(elsewhere, kind, uid)) {
      elsewhere.remove(found.key, kind);
    }
  }
  ASSERT_TRUE(elsewhere.save().done);
}

std::string namesOf(ContactSource& source, const RecordKeys& keys, PropertyId property) {
  std::string names;
  for (const auto& key : keys) {
    names += (names.empty() ? "" : " ") + *source.committedValues(key)->text(property);
  }
  return names;
}

TEST(Importer, AddsAnewWhatOthersRemoveWhileItIsUpdated) {
  auto& source = InterruptedSource::install();
  importFiles({temporaryFile("old.vcf", manyCards(4)).string()}, "_local", {});
  source.beforeRequest(0, [](ContactSource& elsewhere) { removeElsewhere(elsewhere, "u1"); });
  std::string cards;
  for (const auto* uid : {"u0", "u1", "u2", "new"}) cards += cardOf(uid, std::string("N") + uid);
  ImportOptions options;
  options.update = true;
  const auto report = importFiles({temporaryFile("new.vcf", cards).string()}, "_local", options);
  EXPECT_EQ(report.failure, "");
  EXPECT_EQ(countsOf(report), "4 = 2 + 2 + 0 + 0 + 0");
  EXPECT_EQ(namesOf(source, source.recordsIn("_local", RecordKind::Person), property_id::kFirst),
            "Nu0 Nu2 P3 Nnew Nu1");
}

std::string groupOf(const std::string& uid, const std::vector<std::string>& members) {
  std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nN:" + uid +
                     ";;;;\r\nFN:" + uid + "\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n";
  for (const auto& member : members) {
    text += "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:" + member + "\r\n";
  }
  return text + "END:VCARD\r\n";
}

// The groups of the local account with their members, and what the report tells.
std::string groupsAfter(ContactSource& source, const ImportReport& report) {
  std::string text = report.failure;
  for (const auto& group : source.recordsIn("_local", RecordKind::Group)) {
    text +=
        namesOf(source, {group}, property_id::kGroupName) + "(" +
        namesOf(source, *source.children(group, RecordKind::Person), property_id::kFirst) + "; " +
        namesOf(source, *source.children(group, RecordKind::Group), property_id::kGroupName) + ") ";
  }
  for (const auto& problem : report.problems) {
    text += "| " + std::to_string(problem.line) + ": " + problem.reason;
  }
  return text;
}

TEST(Importer, LinksWhatIsThereWhenOthersRemoveAndAddMeanwhile) {
  auto& source = InterruptedSource::install();
  const auto cards = temporaryFile("groups.vcf", manyCards(3) + groupOf("G", {"u0", "u1", "H"}) +
                                                     groupOf("H", {"u2"}))
                         .string();
  source.beforeRequest(1, [](ContactSource& elsewhere) {
    removeElsewhere(elsewhere, "u1");
    StoreBuilder(elsewhere).group("h", "H");
    SaveRequest request;
    const auto key = RecordKey::of("h");
    request.replacements.push_back({key, *elsewhere.committedValues(key), nullptr});
    request.replacements[0].properties.set(property_id::kCardUid, Object(std::string("H")));
    ASSERT_TRUE(elsewhere.execute(request)) << request.reason;
  });
  EXPECT_EQ(groupsAfter(source, importFiles({cards}, "_local", {})),
            "H(; ) G(P0; H) | 19: the member u1 is not there| 29: differs from the group with the "
            "same UID; not updated");
}

// As long as the import asks, so that it has to do with what it finds at last.
TEST(Importer, EndsAlsoWhenOthersNeverStopWriting) {
  auto& source = InterruptedSource::install();
  const auto cards = temporaryFile("groups.vcf", manyCards(9) + groupOf("G", {"u0", "u7", "u8"}) +
                                                     groupOf("H", {"u1", "G"}))
                         .string();
  int requests = 0;
  std::string last;
  std::function<void(ContactSource&)> again = [&](ContactSource& elsewhere) {
    const auto uid = "u" + std::to_string(++requests + 3);
    last = withCardUid(elsewhere, RecordKind::Person, uid).at(0).key.text();
    removeElsewhere(elsewhere, uid);
    source.beforeRequest(0, again);
  };
  source.beforeRequest(1, again);
  const auto found = groupsAfter(source, importFiles({cards}, "_local", {}));
  EXPECT_EQ(found, "G(P0; ) H(P1; G) | 55: the member u7 is not there| 55: the member " + last +
                       " could not be added");
  EXPECT_EQ(requests, 5);
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
