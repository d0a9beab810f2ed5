// What becomes of a store of which one byte is not what was written: whoever reads it is told, or
// the check says so, or nothing is wrong.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/property_codec.hpp"
#include "tests/platform/store/rich_store.hpp"
#include "tests/support/damaged_rows.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeBytes(const std::string& path, const std::string& bytes) {
  for (const auto* ending : {"-wal", "-shm", "-journal"}) std::filesystem::remove(path + ending);
  std::ofstream(path, std::ios::binary) << bytes;
}

// A store with something of everything in it, as one file.
void makeStore() {
  const auto source = openStoreSource(storePath());
  support::fillRichStore(*source);
  source->checkpoint();
}

// "told" where reading fails.
std::string stateAt(const std::string& path) {
  try {
    return support::wholeStateOf(*openStoreSource(path));
  } catch (const std::exception&) {
    return "told";
  }
}

bool isSound(const std::string& path) {
  try {
    return storeProblems(path).empty();
  } catch (const std::exception&) {
    return false;
  }
}

TEST(FlippedBytes, AreNeverBelieved) {
  makeStore();
  const auto bytes = bytesOf(storePath());
  const auto expected = stateAt(storePath());
  ASSERT_NE(expected, "told");
  ASSERT_TRUE(isSound(storePath()));
  std::mt19937_64 random(20261121);
  const auto path = support::temporaryPath("flipped.db").string();
  int unsound = 0;
  const auto* wanted = std::getenv("OX_FLIPS");
  const int flips = wanted != nullptr ? std::atoi(wanted) : 300;
  for (int i = 0; i < flips; ++i) {
    auto flipped = bytes;
    auto place = random() % flipped.size();
    // Much of a page is room that nothing uses: there one in four is enough.
    while (bytes[place] == 0 && random() % 4 != 0) place = random() % flipped.size();
    const auto bit = random() % 8;
    flipped[place] = static_cast<char>(flipped[place] ^ (1 << bit));
    writeBytes(path, flipped);
    if (!isSound(path)) {
      ++unsound;
      continue;
    }
    const auto state = stateAt(path);
    EXPECT_TRUE(state == expected) << "byte " << place << ", bit " << bit;
  }
  EXPECT_GT(unsound, flips / 10);
}

// Changes every byte of a text that stands in the file, one after another.
template <typename Look>
void withEachByteOf(const std::string& text, Look look) {
  const auto bytes = bytesOf(storePath());
  const auto path = support::temporaryPath("flipped.db").string();
  const auto place = bytes.find(text);
  ASSERT_NE(place, std::string::npos);
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto flipped = bytes;
    for (auto found = place; found != std::string::npos; found = flipped.find(text, found)) {
      flipped[found + i] = static_cast<char>(flipped[found + i] ^ 1);
    }
    writeBytes(path, flipped);
    look(path);
  }
}

TEST(FlippedBytes, OfAPictureAreNotBroughtBackByAnUndo) {
  makeStore();
  withEachByteOf("the picture of Ben", [](const std::string& path) {
    const auto source = openStoreSource(path);
    const auto number = source->journal().removedRecords(1).at(0).command;
    EXPECT_THROW(source->journal().takeBack(number, StoreJournal::Last::Command), StoreError);
    EXPECT_EQ(source->record(RecordKey::of("ben")), std::nullopt);
    EXPECT_FALSE(isSound(path));
  });
}

TEST(FlippedBytes, OfARowAreNotLaunderedByACopy) {
  makeStore();
  withEachByteOf("iCloud", [](const std::string& path) {
    const auto copy = path + ".copy";
    try {
      copyStore(path, copy);
    } catch (const StoreError&) {
      return;
    }
    EXPECT_FALSE(isSound(copy));
    EXPECT_EQ(stateAt(copy), "told");
  });
}

TEST(FlippedBytes, OfARowAreNamedByTheCheckAndByWhoeverReadsIt) {
  makeStore();
  const auto path = support::temporaryPath("flipped.db").string();
  auto bytes = bytesOf(storePath());
  bytes[bytes.find("iCloud")] = 'j';
  writeBytes(path, bytes);
  EXPECT_EQ(storeProblems(path),
            (std::vector<std::string>{"row 2 of container is damaged: its checksum differs",
                                      "records that no book shows, because row 2 of container, "
                                      "their account, is damaged: 1"}));
  const auto source = openStoreSource(path);
  const Failure told{FailureKind::Corrupt, path + ": row 2 of the accounts is damaged", path};
  const failures::Watch whoeverLists;
  EXPECT_EQ(source->containers().size(), 1U);
  EXPECT_EQ(whoeverLists.all(), std::vector{told});
  const failures::Watch whoeverMeetsOne;
  std::size_t persons = 0;
  for (const auto& key : source->records(RecordKind::Person)) {
    persons += source->containerOf(key, RecordKind::Person) ? 1 : 0;
  }
  EXPECT_EQ(persons + 1, source->records(RecordKind::Person).size());
  EXPECT_EQ(whoeverMeetsOne.all(), std::vector{told});
  const failures::Watch whoeverNamesIt;
  EXPECT_TRUE(source->recordsIn("A:ABAccount", RecordKind::Person).empty());
  EXPECT_EQ(whoeverNamesIt.all(), std::vector{told});
}

TEST(FlippedBytes, OfALinkKeepNobodyFromBeingRemoved) {
  makeStore();
  const auto path = support::temporaryPath("flipped.db").string();
  writeBytes(path, bytesOf(storePath()));
  support::writeDamagedRows(path, "UPDATE link SET parent = parent");
  const auto source = openStoreSource(path);
  source->remove(RecordKey::of("ann"), RecordKind::Person);
  EXPECT_TRUE(source->save().done);
  EXPECT_FALSE(source->record("ann"));
}

TEST(FlippedBytes, OfALinkAreToldToWhoeverAsksForAnyListOfItsGroup) {
  makeStore();
  const auto path = support::temporaryPath("flipped.db").string();
  writeBytes(path, bytesOf(storePath()));
  support::writeDamagedRows(path,
                            "UPDATE link SET parent = parent WHERE child = "
                            "(SELECT id FROM record WHERE uid = 'chess')");
  const auto source = openStoreSource(path);
  const auto friends = RecordKey::of("friends");
  EXPECT_THROW(source->children(friends, RecordKind::Person), StoreError);
  EXPECT_THROW(source->children(friends, RecordKind::Group), StoreError);
  const RecordKeys players{RecordKey::of("ann"), RecordKey::of("many3")};
  EXPECT_EQ(*source->children(RecordKey::of("chess"), RecordKind::Person), players);
}

TEST(FlippedBytes, OfALinkThatLeadsNowhereAreTold) {
  makeStore();
  const auto path = support::temporaryPath("flipped.db").string();
  writeBytes(path, bytesOf(storePath()));
  support::writeDamagedRows(
      path,
      "PRAGMA foreign_keys=OFF; UPDATE link SET child = 1000000 WHERE child = "
      "(SELECT id FROM record WHERE uid = 'many3')");
  EXPECT_THROW(openStoreSource(path)->children(RecordKey::of("chess"), RecordKind::Person),
               StoreError);
}

TEST(FlippedBytes, OfABoundOfTheJournalStopNoAct) {
  makeStore();
  const auto path = support::temporaryPath("flipped.db").string();
  writeBytes(path, bytesOf(storePath()));
  openStoreSource(path)->journal().setBounds({10, 0});
  support::writeDamagedRows(path, "UPDATE setting SET value = value");
  const auto source = openStoreSource(path);
  for (int i = 0; i < 130; ++i) {
    source->setValue(RecordKey::of("cid"), RecordKind::Person, property_id::kNote,
                     Object(std::to_string(i)));
    ASSERT_TRUE(source->save().done) << i;
  }
  EXPECT_EQ(source->journal().bounds().days, JournalBounds().days);
}

TEST(FlippedBytes, OfWhatOthersHaveTouchedStopNobodyWhoFollows) {
  makeStore();
  const auto path = support::temporaryPath("flipped.db").string();
  writeBytes(path, bytesOf(storePath()));
  const auto follower = openStoreSource(path);
  const auto persons = follower->records(RecordKind::Person).size();
  {
    const auto other = openStoreSource(path);
    other->link(RecordKey::of("chess"), RecordKey::of("many4"), RecordKind::Person);
    ASSERT_TRUE(other->save().done);
  }
  support::writeDamagedRows(
      path, "UPDATE record SET kind = kind WHERE uid = 'many4'; UPDATE act SET at = at");
  EXPECT_EQ(follower->records(RecordKind::Person).size(), persons - 1);
}

TEST(FlippedBytes, OfARecordHideNoOther) {
  makeStore();
  const auto path = support::temporaryPath("flipped.db").string();
  auto bytes = bytesOf(storePath());
  // A row holds the text of an identifier that is not ours, and so does an index.
  for (auto at = bytes.find("many7"); at != std::string::npos; at = bytes.find("many7", at)) {
    bytes.replace(at, 5, "many?");
  }
  writeBytes(path, bytes);
  const auto sound = openStoreSource(storePath())->records(RecordKind::Person).size();
  const failures::Watch watch;
  EXPECT_EQ(openStoreSource(path)->records(RecordKind::Person).size(), sound - 1);
  ASSERT_EQ(watch.all().size(), 1U);
  EXPECT_EQ(watch.all().front().kind, FailureKind::Corrupt);
  EXPECT_EQ(watch.all().front().subject, path);
  EXPECT_TRUE(watch.all().front().reason.ends_with(" of the records is damaged"));
}

}  // namespace
}  // namespace ox
