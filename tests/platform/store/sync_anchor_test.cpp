// What was committed and synced is remembered beside the store: a log that has lost its end is
// told, and nobody is told who has lost nothing.
#include "ox/platform/store/schema/sync_anchor.hpp"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/platform/store/upkeep/missed_tags.hpp"
#include "ox/platform/store/upkeep/repair.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using support::fileBytes;
using support::temporaryFile;
using Sentences = std::vector<std::string>;

constexpr std::size_t kHead = 32;
constexpr std::size_t kFrame = 24 + 4096;

std::string pathOf(const std::string& name) {
  return support::temporaryPath(name).string();
}

std::shared_ptr<ContactSource> openedStore() {
  return openStoreSource(pathOf("store.db"));
}

void add(ContactSource& source, const std::string& name) {
  SaveRequest request;
  PropertyBag values;
  values.set(property_id::kFirst, Object(name));
  request.additions.push_back({RecordKey::of(name), RecordKind::Person, "_local", values, {}});
  ASSERT_TRUE(source.execute(request));
}

void save(ContactSource& source, const std::string& name, const std::string& note) {
  source.setValue(RecordKey::of(name), RecordKind::Person, property_id::kNote, Object(note));
  ASSERT_TRUE(source.save().done);
}

// The acts 1 to 3, the last two of them synced.
void fill(ContactSource& source) {
  add(source, "ann");
  save(source, "ann", "one");
  save(source, "ann", "two");
}

std::string withoutTimes(std::string text) {
  for (auto at = text.find('('); at != text.npos; at = text.find('(', at + 1)) {
    const auto isTime = text.size() > at + 21 && text[at + 11] == 'T' && text[at + 20] == 'Z';
    if (isTime) text.erase(at + 1, 20);
  }
  return text;
}

Sentences problemsIn(const std::string& path) {
  auto problems = storeProblems(path);
  std::ranges::transform(problems, problems.begin(), withoutTimes);
  return problems;
}

const Sentences kThirdIsMissing{
    "what was committed and synced is missing: act 3 () is not there, the store has come to act 2 "
    "()"};

// The store as a program leaves it that is killed: with its log, and what is noted beside it. The
// log may be changed.
std::string leftBy(const std::function<void(ContactSource&)>& program,
                   const std::function<void(std::string& log)>& change = nullptr,
                   const std::string& name = "left.db") {
  openedStore()->containers();  // the file alone holds the tables
  {
    const auto source = openedStore();
    program(*source);
    for (const auto* ending : {"", "-wal", "-synced"}) {
      const auto from = pathOf("store.db") + ending;
      if (fs::exists(from)) temporaryFile(name + ending, fileBytes(from));
    }
  }
  if (change) {
    auto log = fileBytes(pathOf(name) + "-wal");
    change(log);
    temporaryFile(name + "-wal", log);
  }
  return pathOf(name);
}

void loseTheLastPage(std::string& log) {
  log.resize(log.size() - kFrame);
}

std::string leftWithoutItsEnd() {
  return leftBy(fill, loseTheLastPage);
}

bool isNoted(const std::string& store) {
  return fs::exists(store + "-synced");
}

TEST(SyncAnchor, TellsOfALogThatHasLostItsEnd) {
  EXPECT_EQ(problemsIn(leftWithoutItsEnd()), kThirdIsMissing);
}

TEST(SyncAnchor, TellsOfALogWhoseEndIsDamaged) {
  const auto store = leftBy(fill, [](std::string& log) { log[log.size() - 1000] ^= 1; });
  EXPECT_EQ(problemsIn(store), kThirdIsMissing);
}

TEST(SyncAnchor, TellsOfALogThatIsGone) {
  const auto store = leftBy(fill);
  fs::remove(store + "-wal");
  const auto problems = problemsIn(store);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_TRUE(problems[0].ends_with("come to act 0 ()")) << problems[0];
}

TEST(SyncAnchor, TellsBothTimes) {
  const auto problems = storeProblems(leftWithoutItsEnd());
  ASSERT_EQ(problems.size(), 1U);
  const auto second = problems[0].find("act 2 (20");
  EXPECT_NE(problems[0].find("act 3 (20"), std::string::npos) << problems[0];
  ASSERT_NE(second, std::string::npos) << problems[0];
  EXPECT_EQ(problems[0].substr(second + 26), "Z)") << problems[0];
}

TEST(SyncAnchor, SaysNothingOfASoundLog) {
  const auto store = leftBy(fill);
  EXPECT_TRUE(isNoted(store));
  EXPECT_EQ(storeProblems(store), Sentences());
}

TEST(SyncAnchor, IsForThisUserAlone) {
  const auto store = leftBy([](ContactSource& source) {
    fill(source);
    struct stat status {};
    ASSERT_EQ(::stat((pathOf("store.db") + "-synced").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
  });
  EXPECT_EQ(fs::file_size(store + "-synced"), 64U);
}

TEST(SyncAnchor, CanBeReadByWhoeverCanReadTheStore) {
  leftBy([](ContactSource& source) {
    add(source, "eve");
    fs::permissions(pathOf("store.db"), fs::perms{0664});
    fill(source);
    struct stat status {};
    ASSERT_EQ(::stat((pathOf("store.db") + "-synced").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0664U);
  });
}

TEST(SyncAnchor, NotesNothingThatMayBeLostWithThePower) {
  const auto source = openedStore();
  add(*source, "ann");
  EXPECT_FALSE(isNoted(pathOf("store.db")));
  EXPECT_TRUE(source->save().done);
  const auto first = fileBytes(pathOf("store.db") + "-synced");
  add(*source, "ben");
  EXPECT_EQ(fileBytes(pathOf("store.db") + "-synced"), first);
  EXPECT_TRUE(source->save().done);
  EXPECT_NE(fileBytes(pathOf("store.db") + "-synced"), first);
}

TEST(SyncAnchor, GoesWithTheLog) {
  {
    const auto other = openedStore();
    other->containers();
    const auto source = openedStore();
    fill(*source);
    source->letGo();
    EXPECT_TRUE(isNoted(pathOf("store.db"))) << "the other one keeps the log";
  }
  EXPECT_FALSE(fs::exists(pathOf("store.db") + "-wal"));
  EXPECT_FALSE(isNoted(pathOf("store.db")));
}

TEST(SyncAnchor, OfAKilledProgramGoesWithTheNext) {
  const auto store = leftBy(fill);
  openStoreSource(store)->containers();
  EXPECT_FALSE(fs::exists(store + "-wal"));
  EXPECT_FALSE(isNoted(store));
}

TEST(SyncAnchor, ThatIsTornSaysNothing) {
  const auto store = leftWithoutItsEnd();
  const auto whole = fileBytes(store + "-synced");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    temporaryFile("left.db-synced", whole.substr(0, size));
    EXPECT_EQ(storeProblems(store), Sentences()) << size;
    auto bytes = whole;
    bytes[size] ^= 1;
    temporaryFile("left.db-synced", bytes);
    EXPECT_EQ(storeProblems(store), Sentences()) << size;
  }
}

TEST(SyncAnchor, OfAnotherStoreSaysNothing) {
  const auto note = fileBytes(leftWithoutItsEnd() + "-synced");
  add(*openStoreSource(pathOf("other.db")), "ann");
  temporaryFile("other.db-synced", note);
  EXPECT_EQ(storeProblems(pathOf("other.db")), Sentences());
  save(*openStoreSource(pathOf("other.db")), "ann", "one");
  EXPECT_FALSE(isNoted(pathOf("other.db"))) << "was replaced, and went with the log";
}

TEST(SyncAnchor, SaysNothingOfACopyThatIsPutInPlace) {
  const auto store = leftBy(fill);
  copyStore(leftBy([](ContactSource&) {}, nullptr, "older.db"), store);
  EXPECT_FALSE(isNoted(store));
  EXPECT_EQ(storeProblems(store), Sentences());
}

TEST(SyncAnchor, SaysNothingOfAStoreUnderAnotherName) {
  const auto store = leftBy(fill, loseTheLastPage);
  fs::rename(store, pathOf("renamed.db"));
  fs::rename(store + "-wal", pathOf("renamed.db-wal"));
  EXPECT_EQ(storeProblems(pathOf("renamed.db")), Sentences());
}

// Whoever reads or writes goes on, and does not hide what is missing.
TEST(SyncAnchor, IsNotSilencedByWhoeverWrites) {
  const auto store = leftWithoutItsEnd();
  for (int act = 3; act < 6; ++act) {
    save(*openStoreSource(store), "ann", "after " + std::to_string(act));
    const auto problems = problemsIn(store);
    ASSERT_EQ(problems.size(), 1U) << act;
    EXPECT_EQ(problems[0],
              "what was committed and synced is missing: act 3 () is not there, the store has come "
              "to act " +
                  std::to_string(act) + " () over another act of that number ()");
  }
}

TEST(SyncAnchor, KeepsTheLogForWhoeverRecovers) {
  const auto store = leftWithoutItsEnd();
  const auto log = fileBytes(store + "-wal");
  EXPECT_EQ(openStoreSource(store)->records(RecordKind::Person).size(), 1U);
  EXPECT_EQ(fileBytes(store + "-wal"), log);
  EXPECT_EQ(problemsIn(store), kThirdIsMissing);
}

// A copy before a command, the tags that follow, what a repair asks.
TEST(SyncAnchor, KeepsTheLogWhereItIsOnlyCopiedOrAsked) {
  const auto store = leftWithoutItsEnd();
  const auto log = fileBytes(store + "-wal");
  copyStore(store, pathOf("copy.db"));
  EXPECT_EQ(fileBytes(store + "-wal"), log);
  countsOfStore(store);
  lastActWithoutDebt(store);
  blankRecordsIn(store);
  EXPECT_EQ(fileBytes(store + "-wal"), log);
  EXPECT_EQ(problemsIn(store), kThirdIsMissing);
}

TEST(SyncAnchor, GoesWithTheLogWhoeverClosesTheStoreLast) {
  const std::vector<std::function<void(const std::string&)>> programs{
      [](const auto& store) { copyStore(store, pathOf("copy.db")); },
      [](const auto& store) { countsOfStore(store); },
      [](const auto& store) { lastActWithoutDebt(store); },
      [](const auto& store) { blankRecordsIn(store); }};
  for (const auto& program : programs) {
    const auto store = leftBy(fill);
    ASSERT_TRUE(isNoted(store));
    program(store);
    EXPECT_FALSE(fs::exists(store + "-wal"));
    EXPECT_FALSE(isNoted(store));
    fs::remove(pathOf("store.db"));
  }
}

// Between the last look and the closing another process may commit and go.
TEST(SyncAnchor, GoesWhereOthersHaveNotedMoreSince) {
  const auto store = leftBy(fill);
  fs::remove(store + "-wal");
  const sqlite::Connection file(store, sqlite::Connection::Mode::ReadWrite);
  const SyncAnchor anchor(file);
  const auto noted = anchor.read();
  ASSERT_TRUE(noted);
  auto older = *noted;
  --older.moment.number;
  auto newer = *noted;
  ++newer.moment.number;
  auto others = older;
  others.store[0] ^= 1U;
  for (const auto& looked : {newer, others}) {
    anchor.settle(looked);
    EXPECT_EQ(anchor.read(), noted) << looked.moment.number;
  }
  for (const auto& looked : {std::optional(older), noted, std::optional<SyncedAct>()}) {
    anchor.settle(looked);
    EXPECT_FALSE(isNoted(store));
    anchor.write(*noted);
  }
}

TEST(SyncAnchor, IsSilencedByARepair) {
  const auto store = leftWithoutItsEnd();
  const auto repair = repairStore(store);
  ASSERT_EQ(repair.mended.size(), 1U);
  EXPECT_EQ(withoutTimes(repair.mended[0]), "took the store as it is: " + kThirdIsMissing[0]);
  EXPECT_EQ(repair.left, Sentences());
  EXPECT_EQ(pathsOfCopies(store), Sentences{repair.copy}) << "as it was before it was accepted";
  EXPECT_EQ(countsOfStore(repair.copy).persons, 1U);
  EXPECT_EQ(storeProblems(store), Sentences());
  save(*openStoreSource(store), "ann", "three");
  EXPECT_EQ(storeProblems(store), Sentences());
}

TEST(SyncAnchor, IsNotSilencedByARepairOfADamagedLog) {
  const auto store = leftBy(fill, [](std::string& log) {
    // A page before the last commit that is neither the first nor the last of its own.
    const auto isCommit = [&](std::size_t page) { return log.substr(page + 4, 4) != "\0\0\0\0"s; };
    auto page = kHead + kFrame;
    while (isCommit(page - kFrame) || isCommit(page)) page += kFrame;
    log[page + 500] ^= 1;
  });
  const auto problems = problemsIn(store);
  ASSERT_EQ(problems.size(), 2U);
  EXPECT_TRUE(problems[0].starts_with("the log is damaged")) << problems[0];
  EXPECT_EQ(repairStore(store).mended, Sentences());
  EXPECT_EQ(problemsIn(store), problems);
}

TEST(SyncAnchor, SaysWhatALogWithoutAHeadHasLost) {
  const auto store = leftBy(fill, [](std::string& log) { log.resize(16); });
  const auto problems = problemsIn(store);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_TRUE(problems[0].ends_with("come to act 0 ()")) << problems[0];
  // A program that was killed before it had written the head.
  fs::remove(store + "-synced");
  EXPECT_EQ(storeProblems(store), Sentences());
}

// All acts get other names then.
TEST(SyncAnchor, SaysNothingOnceSomebodyWasForgotten) {
  const auto store = leftBy(fill);
  const auto note = fileBytes(store + "-synced");
  ASSERT_TRUE(openStoreSource(store)->journal().erase(RecordKey::of("ann"), "", 0));
  temporaryFile("left.db-synced", note);
  EXPECT_EQ(storeProblems(store), Sentences());
}

TEST(SyncAnchor, SaysNothingOfWhatTheJournalDoesNotReachBackTo) {
  const auto store = leftWithoutItsEnd();
  save(*openStoreSource(store), "ann", "three");
  save(*openStoreSource(store), "ann", "four");
  sqlite::Connection(store, sqlite::Connection::Mode::ReadWrite)
      .execute("DELETE FROM act WHERE number < 4");
  EXPECT_EQ(storeProblems(store), Sentences());
}

}  // namespace
}  // namespace ox
