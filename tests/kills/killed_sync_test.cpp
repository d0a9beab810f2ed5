// A run that brings an account in step, killed: with a folder of cards at every change that it
// makes to a file, be it a card or the store, with a server at every request. Whatever is left,
// nothing is lost and nothing doubled, and the next run ends where one that nobody killed would
// have ended.
#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ox/platform/store/upkeep/check.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/support/card_server.hpp"

namespace ox::kills {
namespace {

using program_tests::programCommand;
using Lines = std::vector<std::string>;

std::filesystem::path folder() {
  return support::temporaryPath("cards");
}

std::string cardOf(const std::string& name, const std::string& last) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + name + "\r\nN:" + last + ";" + name +
         ";;;\r\nFN:" + name + " " + last + "\r\nEND:VCARD\r\n";
}

void putCard(const std::string& name, const std::string& last) {
  support::temporaryFile("cards/" + name + ".vcf", cardOf(name, last));
}

void runWell(const Lines& words) {
  const auto result = runAlive(programCommand(words));
  EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
}

// Cards without what a run gives them anew, in order.
Lines cardsIn(const std::string& text) {
  Lines cards;
  std::string card;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = std::min(text.find("\r\n", at), text.size() - 2) + 2;
    const auto line = text.substr(at, end - at);
    if (!line.starts_with("UID:") && !line.starts_with("REV:")) card += line;
    if (line == "END:VCARD\r\n") cards.push_back(std::exchange(card, {}));
    at = end;
  }
  std::ranges::sort(cards);
  return cards;
}

struct BothSides {
  Lines here;
  Lines there;

  bool operator==(const BothSides&) const = default;
};

Lines cardsHere() {
  const auto file = support::temporaryPath("here.vcf");
  runWell({"export", "--book", "Cards", "-o", file.string()});
  auto cards = cardsIn(support::fileBytes(file));
  std::filesystem::remove(file);
  return cards;
}

BothSides bothSides() {
  std::string all;
  for (const auto& entry : std::filesystem::directory_iterator(folder())) {
    if (entry.path().extension() == ".vcf") all += support::fileBytes(entry.path());
  }
  return {cardsHere(), cardsIn(all)};
}

BothSides bothSides(const support::CardServer& server) {
  std::string all;
  for (const auto& [name, text] : server.texts()) all += text;
  return {cardsHere(), cardsIn(all)};
}

// Both sides agreed, and have then gone their own ways.
void fillBothSides() {
  std::filesystem::create_directory(folder());
  for (const auto* name : {"Ann", "Ben", "Cy", "Dan", "Eve"}) putCard(name, "Lee");
  runWell({"accounts", "add", "Cards", "--folder", folder().string()});
  runWell({"sync"});
  runWell({"set", "Ann", "note=ours"});
  putCard("Ben", "Ray");
  runWell({"set", "Cy", "note=ours"});
  putCard("Cy", "Ray");
  runWell({"remove-person", "Dan"});
  std::filesystem::remove(folder() / "Eve.vcf");
  runWell({"add-person", "Cards", "name=Fay Orr", "phone=7"});
  putCard("Gus", "Orr");
}

TEST(KilledSync, IsFinishedByTheNextRunWithoutLossOrDouble) {
  fillBothSides();
  const auto command = programCommand({"sync"});
  BothSides expected;
  {
    const PreparedFolder prepared;
    runWell({"sync"});
    expected = bothSides();
    prepared.bringBack();
  }
  ASSERT_EQ(expected.here.size(), 5U);
  ASSERT_EQ(expected.there.size(), 5U);
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  const int killed = killEverywhere(command, [&](const support::ProcessResult& result) {
    EXPECT_TRUE(wasKilled(result) || result.exitCode == 0) << result.errors;
    EXPECT_EQ(storeProblems(store), Lines());
    runWell({"sync"});
    EXPECT_EQ(bothSides().here, expected.here);
    EXPECT_EQ(bothSides().there, expected.there);
    EXPECT_EQ(storeProblems(store), Lines());
    const auto again = runAlive(command);
    EXPECT_EQ(again.output, "Cards: 0 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
  });
  EXPECT_GT(killed, 10);
  RecordProperty("killed", killed);
}

void fillBothSides(support::CardServer& server) {
  for (const auto* name : {"Ann", "Ben", "Cy", "Dan", "Eve"}) {
    server.put(std::string(name) + ".vcf", cardOf(name, "Lee"));
  }
  runWell({"accounts", "add", "Cards", "--url", server.bookUrl(), "--allow-http"});
  runWell({"sync"});
  runWell({"set", "Ann", "note=ours"});
  server.put("Ben.vcf", cardOf("Ben", "Ray"));
  runWell({"set", "Cy", "note=ours"});
  server.put("Cy.vcf", cardOf("Cy", "Ray"));
  runWell({"remove-person", "Dan"});
  server.erase("Eve.vcf");
  runWell({"add-person", "Cards", "name=Fay Orr", "phone=7"});
  server.put("Gus.vcf", cardOf("Gus", "Orr"));
}

// A run of the program that ends when its request of that number (from 0) has arrived at the
// server, or when the server has done what it asks, whichever is wanted. One that does not come so
// far ends by itself.
struct Blow {
  int request = 0;
  bool isDone = false;
};

support::ProcessResult runUntil(const Blow& blow, support::CardServer& server) {
  std::atomic<pid_t> process = 0;
  int requests = 0;
  server.between([&](const auto&, const auto& answer) {
    if (requests++ != blow.request) return answer();
    while (process == 0) std::this_thread::yield();
    if (blow.isDone) answer();
    ::kill(process, SIGKILL);
    return support::ScriptedAnswer{.closesUnanswered = true};
  });
  support::RunningProcess sync(programCommand({"sync"}));
  process = sync.id();
  auto result = sync.wait();
  server.between(nullptr);
  return result;
}

// As many as a program under a sanitizer, which is slow to start, leaves time for.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kStep = 2;
#else
constexpr int kStep = 1;
#endif

TEST(KilledSync, AtAnyRequestIsFinishedByTheNextRun) {
  support::CardServer server;
  fillBothSides(server);
  const auto stateThere = server.state();
  const PreparedFolder prepared;
  runWell({"sync"});
  const auto expected = bothSides(server);
  ASSERT_EQ(expected.here.size(), 5U);
  ASSERT_EQ(expected.there.size(), 5U);
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  int killed = 0;
  for (const bool isDone : {false, true}) {
    for (Blow blow{isDone ? kStep - 1 : 0, isDone};; blow.request += kStep) {
      SCOPED_TRACE("request " + std::to_string(blow.request) + (isDone ? " done" : " arrived"));
      prepared.bringBack();
      server.setState(stateThere);
      const auto result = runUntil(blow, server);
      EXPECT_TRUE(wasKilled(result) || result.exitCode == 0) << result.errors;
      EXPECT_EQ(storeProblems(store), Lines());
      const auto next = programCommand({"sync"});
      EXPECT_TRUE(!wasKilled(result) || support::runProcess(next).exitCode == 0);
      EXPECT_EQ(bothSides(server), expected);
      const auto changes = server.state().changes;
      EXPECT_EQ(support::runProcess(next).output,
                "Cards: 0 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
      EXPECT_EQ(server.state().changes, changes);
      EXPECT_EQ(storeProblems(store), Lines());
      if (HasFailure()) return;
      if (!wasKilled(result)) break;
      ++killed;
    }
  }
  EXPECT_GE(killed, 12 / kStep);
  RecordProperty("killed", killed);
}

}  // namespace
}  // namespace ox::kills
