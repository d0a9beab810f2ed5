// A run that brings an account in step with a folder of cards, killed at every change that it makes
// to a file, be it a card or the store. Whatever is left, nothing is lost and nothing doubled, and
// the next run ends where one that nobody killed would have ended.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/platform/store/upkeep/check.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::kills {
namespace {

using program_tests::programCommand;
using Lines = std::vector<std::string>;

std::filesystem::path folder() {
  return support::temporaryPath("cards");
}

void putCard(const std::string& name, const std::string& last, const std::string& more = {}) {
  const auto text = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + name + "\r\nN:" + last + ";" + name +
                    ";;;\r\nFN:" + name + " " + last + "\r\n" + more + "END:VCARD\r\n";
  support::temporaryFile("cards/" + name + ".vcf", text);
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

BothSides bothSides() {
  BothSides sides;
  std::string all;
  for (const auto& entry : std::filesystem::directory_iterator(folder())) {
    if (entry.path().extension() == ".vcf") all += support::fileBytes(entry.path());
  }
  sides.there = cardsIn(all);
  const auto file = support::temporaryPath("here.vcf");
  runWell({"export", "--book", "Cards", "-o", file.string()});
  sides.here = cardsIn(support::fileBytes(file));
  std::filesystem::remove(file);
  return sides;
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

}  // namespace
}  // namespace ox::kills
