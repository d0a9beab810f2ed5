#include "tests/faults/program/disorders.hpp"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <string_view>

namespace ox::faults {
namespace {

namespace words = support::call_switch;
using support::Strikes;

constexpr int kEnoughFailures = 3;
constexpr int kEach = 0;
constexpr int kOfThousands = 25;

int failedParts() {
  const auto& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
  int failed = 0;
  for (int i = 0; i < result.total_part_count(); ++i) {
    failed += result.GetTestPartResult(i).failed() ? 1 : 0;
  }
  return failed;
}

}  // namespace

bool Disorder::mustBeBorne() const {
  return std::string_view(fault) == words::kHalf;
}

const std::vector<Disorder>& allDisorders() {
  static const std::vector<Disorder> disorders = {
      {"a change breaks", words::kChanges, words::kBroken, Strikes::Once},
      {"a read breaks", words::kReads, words::kBroken, Strikes::Once},
      {"changes break", words::kChanges, words::kBroken, Strikes::FromThereOn},
      {"reads break", words::kReads, words::kBroken, Strikes::FromThereOn},
      {"no room for a change", words::kChanges, words::kFull, Strikes::Once},
      {"a transfer is cut short", words::kTransfers, words::kHalf, Strikes::Once},
      {"no room", words::kChanges, words::kFull, Strikes::FromThereOn},
      {"transfers are cut short", words::kTransfers, words::kHalf, Strikes::FromThereOn},
      {"no descriptor for a file", words::kOpens, words::kNone, Strikes::Once, kEach},
      {"no descriptors", words::kOpens, words::kNone, Strikes::FromThereOn, kEach},
      {"few descriptors", support::kDescriptors, words::kNone, Strikes::FromThereOn, kEach},
      {"no room in memory once", support::kAllocations, words::kNone, Strikes::Once, kOfThousands},
      {"no memory", support::kAllocations, words::kNone, Strikes::FromThereOn, kOfThousands},
      {"no room for a thread", words::kThreads, words::kNone, Strikes::Once, kEach},
      {"no threads", words::kThreads, words::kNone, Strikes::FromThereOn, kEach},
  };
  return disorders;
}

int Sample::stepOr(int usual) {
  const auto* wanted = std::getenv("OX_FAULT_STEP");
  return wanted == nullptr ? usual : std::max(1, std::atoi(wanted));
}

bool Sample::isWhole() {
  return std::getenv("OX_FAULT_STEP") != nullptr;
}

bool Sample::takes(const std::string& command, const Disorder& disorder) {
  const auto* only = std::getenv("OX_FAULT_ONLY");
  if (only != nullptr) return command == only || disorder.name == std::string_view(only);
  return asked_++ % oneIn_ == 0 || isWhole();
}

int tryEverywhere(const std::string& title, const Disorder& disorder, int step,
                  const std::function<support::StruckRun(const support::Blow&)>& run,
                  const std::function<void(const support::StruckRun&)>& look) {
  int struck = 0;
  int failures = 0;
  std::map<int, int> ends;
  for (int place = 1;; place += std::max(1, step * disorder.spacing)) {
    SCOPED_TRACE(title + ", " + disorder.name + " at " + std::to_string(place));
    const auto partsBefore = failedParts();
    const auto tried = run({disorder.calls, disorder.fault, place, disorder.strikes});
    look(tried);
    if (!tried.wasStruck) break;
    ++struck;
    ++ends[tried.result.exitCode];
    // A case that has failed goes on with what else it has to tell, but not for ever.
    if (failedParts() > partsBefore && ++failures == kEnoughFailures) break;
  }
  std::cout << title << ", " << disorder.name << ": struck " << struck << " times;";
  for (const auto& [code, count] : ends) std::cout << ' ' << count << " ended with " << code;
  std::cout << std::endl;
  return struck;
}

}  // namespace ox::faults
