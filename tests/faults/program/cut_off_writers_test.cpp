// The power goes while a command of the program writes: at every sync, with what was not synced
// lost, torn or in another order. What it was asked to do is there as a whole or not at all; what
// it said it had done is there.
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>

#include "ox/base/sqlite/connection.hpp"
#include "tests/faults/program/change_log.hpp"
#include "tests/faults/program/disorders.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/kills/address_book.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/kills/writing_commands.hpp"
#include "tests/oxcontacts/program.hpp"
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

// What is noted of an act says that it was synced: a power cut may leave the note behind the store,
// torn or gone, and never ahead of it. Several commands, so that there is a log, and a note, from
// before; at last the log is brought into the store, and the note goes.
TEST(CutOffWriters, LeaveNoStoreThatSeemsToMissAnAct) {
  kills::fillAddressBook();
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  std::optional<sqlite::Connection> other(std::in_place, store,
                                          sqlite::Connection::Mode::ReadWrite);
  other->keepLog();
  EXPECT_GT(other->queryInteger("SELECT count(*) FROM record"), 0);
  auto log = filesFound();
  const auto found = log.size();
  std::size_t notes = 0;
  const std::vector<std::vector<std::string>> commands = {
      {"set", "Ann Lee", "note=one"},
      {"import", support::temporaryPath("persons.vcf").string()},
      {"restore", "_local", support::temporaryPath("local.book").string()},
      {"add-person", "_local", "name=Hal Orr"},
      {"remove-person", "Cid"}};
  for (const auto& words : commands) {
    if (&words == &commands.back()) other.reset();
    auto [result, events] = runAndLog(program_tests::programCommand(words), std::move(log));
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    log = std::move(events);
  }
  const PreparedFolder prepared;
  const auto step = static_cast<std::size_t>(Sample::stepOr(3));
  DiskReplay replay(log);
  int cuts = 0;
  for (auto events = found; events <= log.size(); ++events) {
    replay.advanceTo(events);
    const bool isOfNote = events > 0 && log[events - 1].name.ends_with("-synced");
    notes += isOfNote ? 1 : 0;
    if (!isOfNote && !isMoment(log, events) && events % step != 0) continue;
    for (const auto loss : {Loss::All, Loss::Nothing, Loss::Tail, Loss::Chance}) {
      PreparedFolder::clear();
      replay.writeInto(support::StoreEnvironment::instance().folder(), loss,
                       static_cast<std::uint32_t>(events));
      ASSERT_EQ(problemsOf(store), "") << events - found << ", loss " << static_cast<int>(loss);
      ++cuts;
    }
  }
  prepared.bringBack();
  EXPECT_GT(notes, 10U) << "each command notes what it has synced, the last one takes that away";
  EXPECT_FALSE(std::filesystem::exists(store + "-synced"));
  std::cout << cuts << " power cuts, " << notes << " beside a change to the note" << std::endl;
}

}  // namespace
}  // namespace ox::faults
