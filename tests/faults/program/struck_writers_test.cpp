// Every command of the program that writes, on a disk that breaks or is full at every place. It
// fails in words or is done; what it was asked to do is there as a whole or not at all; and what
// the next one does on a sound disk is whole.
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "tests/faults/program/disorders.hpp"
#include "tests/kills/address_book.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/kills/writing_commands.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

using kills::Act;
using kills::PreparedFolder;

// A tag file that cannot be read costs the tags and keeps nothing else from being done: whose tags
// are not known leaves them behind.
constexpr const char* kTagsLost = "the contacts are saved, but not all of the tags";

// 2 of "3 cards: 2 added, 0 updated".
int toldOf(const std::string& what, const std::string& report) {
  const auto end = report.find(" " + what);
  if (end == std::string::npos) throw std::invalid_argument("nothing is told of that: " + report);
  const auto start = report.rfind(' ', end - 1) + 1;
  return std::stoi(report.substr(start, end - start));
}

class StruckWriter {
 public:
  explicit StruckWriter(const Act& act)
      : act_(act),
        known_(kills::identifiersNow()),
        states_(kills::statesOf(act, known_)),
        command_(act.command()) {}

  int tryAll(const Disorder& disorder, int step) {
    return tryEverywhere(
        act_.name, disorder, step,
        [&](const support::Blow& blow) {
          prepared_.bringBack();
          return support::runStruck(command_, blow);
        },
        [&](const support::StruckRun& run) { look(run, disorder); });
  }

 private:
  void look(const support::StruckRun& run, const Disorder& disorder) const {
    const auto& result = run.result;
    const bool mustBeDone = !run.wasStruck || disorder.mustBeBorne();
    EXPECT_TRUE(result.exitCode == 0 || (result.exitCode == 1 && !mustBeDone))
        << result.exitCode << result.errors;
    EXPECT_TRUE(result.exitCode == 0 || !result.errors.empty());
    SCOPED_TRACE("it told: " + result.output + result.errors);
    const auto last = states_.count() - 1;
    if (result.errors.find(kTagsLost) != std::string::npos) {
      states_.expectContactsLeft(last, last);
    } else if (result.errors.find(".vcf: ") != std::string::npos) {
      expectWhatCouldBeImported(result);
    } else {
      kills::expectLeftWhole(act_, states_, result);
    }
  }

  // Of a file that cannot be read to its end: the cards that are counted are there, and the others
  // come with the next import.
  void expectWhatCouldBeImported(const support::ProcessResult& result) const {
    EXPECT_EQ(result.exitCode, 1);
    const auto again = kills::runAlive(command_);
    EXPECT_EQ(again.exitCode, 0) << again.errors;
    EXPECT_EQ(toldOf("skipped", again.output),
              toldOf("added", result.output) + toldOf("updated", result.output))
        << again.output;
    states_.expectLeft(states_.count() - 1, states_.count() - 1);
  }

  const Act& act_;
  kills::Identifiers known_;
  kills::AllowedStates states_;
  PreparedFolder prepared_;
  std::vector<std::string> command_;
};

TEST(StruckWriters, DoTheWholeOrNothing) {
  kills::fillAddressBook();
  const PreparedFolder filled("prepared, filled");
  Sample sample(17);
  int struck = 0;
  for (const auto& act : kills::writingCommands()) {
    std::vector<Disorder> disorders;
    for (const auto& disorder : allDisorders()) {
      if (sample.takes(act.name, disorder)) disorders.push_back(disorder);
    }
    if (disorders.empty()) continue;
    filled.bringBack();
    kills::prepareAlsoFor(act);
    StruckWriter writer(act);
    for (const auto& disorder : disorders) {
      struck += writer.tryAll(disorder, Sample::stepOr(40));
    }
  }
  EXPECT_GT(struck, 0);
}

}  // namespace
}  // namespace ox::faults
