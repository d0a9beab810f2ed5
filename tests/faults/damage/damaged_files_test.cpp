// Files that the disk has damaged: what is wrong is never told as if it were right. Whoever reads
// one is told that it is damaged, or the check says so, or nothing that can be read has changed.
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <set>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/OxAddressBookSDK/general/random_book.hpp"
#include "tests/faults/damage/mutation.hpp"
#include "tests/platform/store/rich_store.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

namespace fs = std::filesystem;
using support::fileBytes;
using support::temporaryPath;

constexpr std::uint64_t kSeed = 20261122;
constexpr const char* kTold = "told";

// What a look at a file gives: its whole state, or that it is damaged.
template <typename Look>
std::string lookAt(Look look) {
  try {
    return look();
  } catch (const std::exception&) {
    return kTold;
  }
}

std::string storeState(const std::string& path) {
  return lookAt([&] { return support::wholeStateOf(*openStoreSource(path)); });
}

// The state of a store that its check calls sound.
std::string soundStoreState(const std::string& path) {
  const auto problems = lookAt([&] { return storeProblems(path).empty() ? "" : kTold; });
  return problems.empty() ? storeState(path) : kTold;
}

void writeFiles(const std::string& path, const std::string& bytes, const std::string& log) {
  for (const auto* ending : {"-wal", "-shm", "-journal", "-synced"}) fs::remove(path + ending);
  std::ofstream(path, std::ios::binary) << bytes;
  if (!log.empty()) std::ofstream(path + "-wal", std::ios::binary) << log;
}

// Damages a copy of the bytes in every way in turn, at places of chance, and hands it to `stateOf`,
// which answers what can be read of it then; that must be one of the right states, or told.
void damageOften(const std::string& file, const std::string& bytes, Pages pages,
                 const std::set<std::string>& right,
                 const std::function<std::string(const std::string&)>& stateOf) {
  std::mt19937_64 chance(kSeed);
  std::array<int, Damage::kKinds> told{};
  const int count = damagesOr(45);
  for (int i = 0; i < count; ++i) {
    const auto kind = static_cast<Damage::Kind>(i % Damage::kKinds);
    auto damaged = bytes;
    const auto what = damage(damaged, kind, pages, chance);
    const auto state = stateOf(damaged);
    if (state == kTold) {
      ++told.at(static_cast<std::size_t>(i) % told.size());
    } else {
      EXPECT_TRUE(right.contains(state)) << file << ": " << what.text;
    }
  }
  std::cout << file << ": damaged " << count << " times; told, by kind:";
  int all = 0;
  for (const int number : told) {
    std::cout << ' ' << number;
    all += number;
  }
  std::cout << std::endl;
  EXPECT_GT(all, count / 10);
}

std::string filledStore() {
  auto path = support::StoreEnvironment::instance().contactStore().string();
  const auto source = openStoreSource(path);
  support::fillRichStore(*source);
  source->checkpoint();
  return path;
}

TEST(Damaged, StoreIsNeverBelieved) {
  const auto bytes = fileBytes(filledStore());
  const auto path = temporaryPath("damaged.db").string();
  writeFiles(path, bytes, "");
  const auto right = soundStoreState(path);
  ASSERT_NE(right, kTold);
  damageOften("store", bytes, {}, {right}, [&](const std::string& damaged) {
    writeFiles(path, damaged, "");
    return soundStoreState(path);
  });
}

TEST(Damaged, BackupIsNeverBelieved) {
  const auto path = temporaryPath("damaged.db").string();
  copyStore(filledStore(), path);
  const auto bytes = fileBytes(path);
  const auto right = soundStoreState(path);
  ASSERT_NE(right, kTold);
  damageOften("backup", bytes, {}, {right}, [&](const std::string& damaged) {
    writeFiles(path, damaged, "");
    return soundStoreState(path);
  });
}

constexpr Pages kFrames{32, 24 + 4096};

struct StoreWithLog {
  std::string bytes;
  std::string log;
  std::string note;  // of what was synced
};

enum class LogOf { Everything, TheLastActs };

StoreWithLog storeWithLog(LogOf acts) {
  const auto path = support::StoreEnvironment::instance().contactStore().string();
  const auto source = openStoreSource(path);
  source->containers();
  support::fillRichStore(*source);
  if (acts == LogOf::TheLastActs) {
    source->checkpoint();
    source->remove(RecordKey::of("many7"), RecordKind::Person);
    source->setValue(RecordKey::of("ann"), RecordKind::Person, property_id::kNote, Object("new"));
    EXPECT_TRUE(source->save().done);
  }
  return {fileBytes(path), fileBytes(path + "-wal"), fileBytes(path + "-synced")};
}

// A log that is damaged ends there: what is read, where nothing was noted beside it, is an older
// state, the one of a whole act.
TEST(Damaged, LogGivesNoStateThatNeverWas) {
  const auto store = storeWithLog(LogOf::Everything);
  const auto path = temporaryPath("damaged.db").string();
  const auto stateWith = [&](const std::string& log) {
    writeFiles(path, store.bytes, log);
    return soundStoreState(path);
  };
  std::set<std::string> right;
  for (auto frame = kFrames.start; frame < store.log.size(); frame += kFrames.bytes) {
    const bool endsAnAct = store.log.substr(frame + 4, 4) != std::string(4, '\0');
    if (endsAnAct) right.insert(stateWith(store.log.substr(0, frame + kFrames.bytes)));
  }
  right.insert(stateWith(""));
  right.erase(kTold);
  ASSERT_GT(right.size(), 10U);
  damageOften("log", store.log, kFrames, right, stateWith);
}

// Whatever is lost of it, the note tells of the last act.
TEST(Damaged, LogWithItsNoteIsNeverBelieved) {
  const auto store = storeWithLog(LogOf::TheLastActs);
  const auto path = temporaryPath("damaged.db").string();
  const auto stateWith = [&](const std::string& log) {
    writeFiles(path, store.bytes, log);
    std::ofstream(path + "-synced", std::ios::binary) << store.note;
    return soundStoreState(path);
  };
  const auto right = stateWith(store.log);
  ASSERT_NE(right, kTold);
  ASSERT_EQ(stateWith(""), kTold);
  damageOften("log with its note", store.log, kFrames, {right}, stateWith);
}

TEST(Damaged, StoreBelowALogIsNeverBelieved) {
  const auto store = storeWithLog(LogOf::TheLastActs);
  const auto path = temporaryPath("damaged.db").string();
  const auto stateWith = [&](const std::string& bytes) {
    writeFiles(path, bytes, store.log);
    return soundStoreState(path);
  };
  const auto right = stateWith(store.bytes);
  ASSERT_NE(right, kTold);
  damageOften("store below a log", store.bytes, {}, {right}, stateWith);
}

// Tags of forty persons in two books.
std::string filledTags() {
  auto path = support::temporaryFile("tags.db", "").string();
  TagFile file(path);
  for (int i = 0; i < 40; ++i) {
    const auto person = "person" + std::to_string(i);
    for (int tag = 0; tag <= i % 4; ++tag) {
      file.add(i % 2 == 0 ? "one" : "other", person, "tag" + std::to_string(i * tag));
    }
  }
  file.follow("store", {{7, "name of the act", {}}}, [] { return 7; });
  return path;
}

std::string soundTagState(const std::string& path) {
  return lookAt([&] {
    TagFile file(path);
    if (!file.problems().empty()) return std::string(kTold);
    std::string state = std::to_string(file.lastFollowed("store"));
    for (int i = 0; i < 40; ++i) {
      const auto person = "person" + std::to_string(i);
      for (const auto& manager : file.managersOf(person)) {
        state += "\n" + person + " in " + manager;
        for (const auto& tag : file.tags(manager, person)) state += " " + tag;
      }
    }
    return state;
  });
}

TEST(Damaged, TagFileIsNeverBelieved) {
  const auto path = filledTags();
  const auto bytes = fileBytes(path);
  const auto right = soundTagState(path);
  ASSERT_NE(right, kTold);
  const auto pageBytes = static_cast<std::size_t>(static_cast<unsigned char>(bytes[16])) << 8U;
  damageOften("tag file", bytes, {0, pageBytes}, {right}, [&](const std::string& damaged) {
    writeFiles(path, damaged, "");
    return soundTagState(path);
  });
}

TEST(Damaged, NeutralBookIsRefused) {
  const auto data = randomBook(kSeed)->saveToData();
  ASSERT_TRUE(data);
  damageOften("neutral book", *data, {0, 512}, {}, [](const std::string& damaged) {
    return OxAddressBookGeneral::addressBookWithData(makeData(damaged)) ? "read" : kTold;
  });
}

}  // namespace
}  // namespace ox::faults
