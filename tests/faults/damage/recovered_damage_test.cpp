// What recovery brings back of a store that the disk has damaged: nearly every record whose own
// bytes are whole, and none with values that it never had.
#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <set>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/salvage/store_salvage.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/faults/damage/mutation.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

namespace fs = std::filesystem;
using support::temporaryPath;

constexpr int kPersons = 120;

// Persons of two accounts, some in a group, some with a picture of several pages; no two alike.
std::string copiedStore() {
  support::StoreBuilder store;
  std::mt19937 chance(1);
  std::string last;
  for (int i = 0; i < kPersons; ++i) {
    if (i == kPersons / 2) store.container("C:ABAccount", "Cloud", 3);
    support::PersonValues values;
    values.first = "First" + std::to_string(i);
    values.note = std::string(20 + chance() % 400, static_cast<char>('a' + i % 26));
    if (i % 30 == 0) values.image = makeData(std::string(5'000, static_cast<char>('A' + i % 7)));
    last = RecordKey::make(RecordKind::Person).text();
    store.person(last, values);
  }
  store.group("team", "Team").member("team", last);
  auto path = temporaryPath("damaged.db").string();
  copyStore(support::StoreEnvironment::instance().contactStore().string(), path);
  return path;
}

// The stored values of each record. Who has lost its identifier gets another one.
std::set<std::string> valuesIn(const std::string& path) {
  sqlite::Connection store(path, sqlite::Connection::Mode::ReadWrite);
  auto rows = store.prepare("SELECT c.properties FROM record r JOIN content c ON c.record = r.id");
  std::set<std::string> values;
  while (rows.step()) values.emplace(rows.blob(0));
  return values;
}

std::set<std::string> recoveredFrom(const std::string& path) {
  const auto target = temporaryPath("recovered.db").string();
  for (const auto* ending : {"", "-wal", "-shm"}) fs::remove(target + ending);
  try {
    StoreSalvage salvage(path, target);
    salvage.take();
    salvage.put();
  } catch (const std::exception&) {
    return {};  // nothing of it could be read
  }
  EXPECT_EQ(storeProblems(target), std::vector<std::string>{});
  return valuesIn(target);
}

struct Counts {
  int whole = 0;
  int recovered = 0;
};

TEST(Recovered, IsNearlyAllThatIsWhole) {
  const auto path = copiedStore();
  const auto bytes = support::fileBytes(path);
  const auto values = valuesIn(path);
  std::mt19937_64 chance(20261122);
  std::array<Counts, Damage::kKinds> counts{};
  const int damages = damagesOr(18);
  for (int i = 0; i < damages; ++i) {
    const auto kind = static_cast<Damage::Kind>(i % Damage::kKinds);
    auto damaged = bytes;
    const auto what = damage(damaged, kind, {}, chance);
    SCOPED_TRACE(what.text);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << damaged;
    const auto recovered = recoveredFrom(path);
    auto& count = counts.at(static_cast<std::size_t>(kind));
    for (const auto& stored : values) {
      if (damaged.find(stored) == std::string::npos) continue;
      ++count.whole;
      count.recovered += recovered.contains(stored) ? 1 : 0;
    }
    EXPECT_TRUE(std::ranges::includes(values, recovered));
  }
  std::cout << "recovered of the whole records, after " << damages << " damages, by kind:";
  for (const auto& count : counts) {
    std::cout << ' ' << count.recovered << '/' << count.whole;
    EXPECT_GE(count.recovered + 2, count.whole * 0.99);
  }
  std::cout << std::endl;
}

}  // namespace
}  // namespace ox::faults
