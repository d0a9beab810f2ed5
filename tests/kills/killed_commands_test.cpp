// Every command of the program that writes, killed at every change that it makes to a file, and at
// moments of chance. What it was asked to do is there afterwards or is not; what it said it had
// done is there.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <thread>

#include "tests/kills/killed_run.hpp"
#include "tests/kills/writing_commands.hpp"

namespace ox::kills {
namespace {

class KilledCommand : public testing::TestWithParam<Act> {};

TEST_P(KilledCommand, IsDoneOrIsNot) {
  prepareFor(GetParam());
  const auto known = identifiersNow();
  const auto states = statesOf(GetParam(), known);
  ASSERT_FALSE(HasFailure());
  const int killed = killEverywhere(GetParam().command(), [&](const auto& result) {
    expectLeftWhole(GetParam(), states, result);
  });
  EXPECT_GT(killed, 1);
  RecordProperty("killed", killed);
}

// How often each command is killed; the environment asks for more.
int randomKills() {
  constexpr int kFew = 3;
  const auto* wanted = std::getenv("OX_RANDOM_KILLS");
  return wanted == nullptr ? kFew : std::atoi(wanted);
}

using Duration = std::chrono::duration<double>;

Duration timeOf(const std::vector<std::string>& command) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(support::runProcess(command).exitCode, 0);
  return std::chrono::steady_clock::now() - start;
}

// Killed from outside, as a user or the system does it, with every sync in place.
TEST_P(KilledCommand, IsDoneOrIsNotAtMomentsOfChance) {
  prepareFor(GetParam());
  const auto known = identifiersNow();
  const auto states = statesOf(GetParam(), known);
  const PreparedFolder prepared;
  const auto whole = timeOf(GetParam().command());
  std::mt19937 chance(std::random_device{}());
  std::uniform_real_distribution<> part(0.0, 1.1);
  int killed = 0;
  for (int i = 0; i < randomKills() && !HasFailure(); ++i) {
    prepared.bringBack();
    const auto wait = whole * part(chance);
    SCOPED_TRACE("killed after " + std::to_string(wait.count()) + " s");
    support::RunningProcess process(GetParam().command());
    std::this_thread::sleep_for(wait);
    process.signal(SIGKILL);
    const auto result = process.wait();
    expectLeftWhole(GetParam(), states, result);
    killed += wasKilled(result) ? 1 : 0;
  }
  RecordProperty("killed", killed);
}

std::string nameOf(const testing::TestParamInfo<Act>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(That, KilledCommand, testing::ValuesIn(writingCommands()), nameOf);

}  // namespace
}  // namespace ox::kills
