// Eight processes live in one store, some of them are killed, others look on. In the end everything
// is there that any of them was told to be done, nothing is there twice, and nobody has seen half
// of anything.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <thread>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/kills/life.hpp"
#include "tests/kills/life_model.hpp"
#include "tests/kills/record_text.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_builder.hpp"

namespace ox::kills {
namespace {

constexpr std::size_t kProcesses = 8;
constexpr std::size_t kWatchers = 2;

// How long; the environment asks for more.
std::chrono::seconds howLong() {
  constexpr int kShort = 4;
  const auto* wanted = std::getenv("OX_LIFE_SECONDS");
  return std::chrono::seconds(wanted == nullptr ? kShort : std::atoi(wanted));
}

// In a process of its own, so that this one has nothing in memory when it looks at the end.
const support::SecondProcess makesSharedRecords("makesSharedRecords", [](const auto&) {
  std::ofstream log(lifeLog("first"));
  for (std::size_t i = 0; i < kSharedPersons; ++i) {
    const auto name = "s" + std::to_string(i);
    support::StoreBuilder().person(name, {.first = name});
    log << "try add person - " + name + "\ndone\n";
  }
  for (std::size_t i = 0; i < kSharedGroups; ++i) {
    const auto name = "g" + std::to_string(i);
    support::StoreBuilder().group(name, name);
    log << "try add group - " + name + "\ndone\n";
  }
  return 0;
});

std::vector<std::string> tagsOf(const std::string& person) {
  const auto path = support::StoreEnvironment::instance().tagStore().string();
  if (!std::filesystem::exists(path)) return {};
  return TagFile(path).tags("_local", person);
}

LifeModel::Things thingsOf(const ABPerson& person) {
  const auto name = textOf(person, kABFirstNameProperty);
  LifeModel::Things things{"person - " + name};
  for (const auto& entry : entriesOf(person, kABPhoneProperty).entries) {
    things.insert("phone " + name + " " + entry.value.toText().value_or("?"));
  }
  for (const auto& tag : tagsOf(person.uniqueId().value_or(""))) {
    things.insert("tag " + name + " " + tag);
  }
  if (!name.starts_with("s")) return things;
  if (const auto pair = textOf(person, kABNicknameProperty); !pair.empty()) {
    things.insert("pair " + name + " " + pair);
    EXPECT_EQ(textOf(person, kABJobTitleProperty), pair);
  }
  if (const auto image = person.imageData()) {
    things.insert("picture " + name + " " + image->substr(std::string(kPicture).size()));
  }
  return things;
}

LifeModel::Things thingsOf(const ABGroup& group) {
  const auto name = textOf(group, kABGroupNameProperty);
  LifeModel::Things things;
  for (const auto& member : group.members()) {
    things.insert("member " + name + " " + textOf(*member, kABFirstNameProperty));
  }
  for (const auto& below : group.subgroups()) {
    things.insert("group " + name + " " + textOf(*below, kABGroupNameProperty));
  }
  if (group.parentGroups().empty()) things.insert("group - " + name);
  return things;
}

LifeModel::Things thingsThere() {
  LifeModel::Things things;
  for (const auto& person : records()->people()) things.merge(thingsOf(*person));
  for (const auto& group : records()->groups()) things.merge(thingsOf(*group));
  return things;
}

using Process = std::unique_ptr<support::RunningProcess>;

Process started(const support::SecondProcess& function, const std::string& name) {
  return std::make_unique<support::RunningProcess>(function.command({name}));
}

// Kills one of the processes now and then, and starts another.
void letThemLive() {
  std::vector<Process> watchers;
  for (std::size_t i = 0; i < kWatchers; ++i) {
    watchers.push_back(started(watches, "watcher" + std::to_string(i)));
  }
  std::vector<Process> living;
  std::size_t born = 0;
  for (; born < kProcesses; ++born) living.push_back(started(lives, std::to_string(born)));
  std::mt19937 chance(std::random_device{}());
  const auto end = std::chrono::steady_clock::now() + howLong();
  while (std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(300 + chance() % 400));
    auto& process = living[chance() % living.size()];
    process->signal(SIGKILL);
    EXPECT_TRUE(wasKilled(process->wait()));
    process = started(lives, std::to_string(born++));
  }
  support::temporaryFile("stop", "");
  for (const auto* group : {&watchers, &living}) {
    for (const auto& process : *group) {
      const auto result = process->wait();
      EXPECT_EQ(result.exitCode, 0) << result.errors;
    }
  }
}

TEST(ManyProcesses, LoseNothingAndSeeNothingHalf) {
  ASSERT_EQ(makesSharedRecords.run().exitCode, 0);
  letThemLive();
  // The next command finishes what the killed ones have left.
  EXPECT_EQ(program_tests::run({"books"}).exitCode, 0);
  EXPECT_EQ(program_tests::run({"check"}).exitCode, 0);
  LifeModel model;
  for (const auto& entry :
       std::filesystem::directory_iterator(support::StoreEnvironment::instance().folder())) {
    if (entry.path().extension() == ".log") model.readLog(entry.path().string());
  }
  EXPECT_EQ(model.differences(thingsThere()), "");
  EXPECT_GT(model.acts(), 100U);
  RecordProperty("acts", static_cast<int>(model.acts()));
  RecordProperty("refused", static_cast<int>(model.refused()));
}

}  // namespace
}  // namespace ox::kills
