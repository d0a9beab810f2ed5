// The power goes while a command of the program writes: at every sync, with what was not synced
// lost, torn or in another order. What it was asked to do is there as a whole or not at all; what
// it said it had done is there.
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>

#include "tests/faults/program/change_log.hpp"
#include "tests/faults/program/disorders.hpp"
#include "tests/kills/address_book.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/kills/writing_commands.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

using kills::Act;
using kills::PreparedFolder;

bool isSync(const Event& event) {
  return event.kind == Event::Kind::SyncBytes || event.kind == Event::Kind::SyncFolder;
}

// Beside a sync, before or behind it, the most is at stake.
bool isMoment(const DiskLog& log, std::size_t events) {
  if (events == log.size()) return true;
  return isSync(log[events]) || (events > 0 && isSync(log[events - 1]));
}

// The result is how many cuts were looked at.
int cutEverywhere(const Act& act, std::size_t step) {
  const auto known = kills::identifiersNow();
  const auto states = kills::statesOf(act, known);
  const PreparedFolder prepared;
  const auto found = filesFound();
  const auto [whole, log] = runAndLog(act.command(), found);
  EXPECT_EQ(whole.exitCode, 0) << whole.errors;
  const support::ProcessResult cutOff;
  DiskReplay replay(log);
  int cuts = 0;
  std::size_t moments = 0;
  for (auto events = found.size(); events <= log.size(); ++events) {
    const bool isEnd = events == log.size();
    if (!isMoment(log, events) || (!isEnd && moments++ % step != 0)) continue;
    replay.advanceTo(events);
    for (const auto loss : {Loss::All, Loss::Tail, Loss::Chance}) {
      SCOPED_TRACE(std::string(act.name) + ", after " + std::to_string(events - found.size()) +
                   " of " + std::to_string(log.size() - found.size()) + " changes, loss " +
                   std::to_string(static_cast<int>(loss)));
      PreparedFolder::clear();
      replay.writeInto(support::StoreEnvironment::instance().folder(), loss,
                       static_cast<std::uint32_t>(events));
      kills::expectLeftWhole(act, states, isEnd ? whole : cutOff);
      ++cuts;
      if (testing::Test::HasFailure()) return cuts;
    }
  }
  prepared.bringBack();
  std::cout << act.name << ": " << cuts << " power cuts" << std::endl;
  return cuts;
}

TEST(CutOffWriters, LeaveTheWholeOrNothing) {
  kills::fillAddressBook();
  const PreparedFolder filled("prepared, filled");
  Sample sample(5);
  int cuts = 0;
  for (const auto& act : kills::writingCommands()) {
    if (!sample.takes(act.name, {"the power goes", "", "", support::Strikes::Once})) continue;
    filled.bringBack();
    kills::prepareAlsoFor(act);
    cuts += cutEverywhere(act, static_cast<std::size_t>(Sample::stepOr(12)));
  }
  EXPECT_GT(cuts, 0);
}

}  // namespace
}  // namespace ox::faults
