// Every command of the program that writes, killed at every change that it makes to a file. What it
// was asked to do is there afterwards or is not; what it said it had done is there.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/base/checksum.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/kills/address_book.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/kills/readable_state.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::kills {
namespace {

using support::StoreEnvironment;

using Words = std::vector<std::string>;

// Arguments that name files of the test's folder begin with "@".
struct Act {
  const char* name;
  Words arguments;
  // What it says when it has done it.
  std::string told;
  // Commands that do a part of it, where it is no one act: the whole batches of an import.
  std::vector<Words> parts = {};
  // A file that it writes.
  std::string output = {};
};

std::ostream& operator<<(std::ostream& stream, const Act& act) {
  return stream << act.name;
}

Words commandOf(const Words& arguments) {
  Words words;
  for (const auto& word : arguments) {
    words.push_back(word.starts_with("@") ? support::temporaryPath(word.substr(1)).string() : word);
  }
  return program_tests::programCommand(words);
}

std::string outputState(const std::string& name, const Identifiers& known) {
  if (name.empty()) return {};
  const auto path = support::temporaryPath(name).string();
  if (!std::filesystem::exists(path)) return "no " + name + "\n";
  if (!name.ends_with(".db")) return name + " " + checksum128(support::fileBytes(path)) + "\n";
  return name + " " + faults::problemsOf(path) + readableState(known, path, path + ".tags").text();
}

// The store with its tags, and the file that the act writes.
ReadableState stateFor(const Act& act, const Identifiers& known) {
  auto state = readableState(known);
  state.contacts += outputState(act.output, known);
  return state;
}

std::string problems() {
  auto text = faults::problemsOf(StoreEnvironment::instance().contactStore().string());
  const auto tags = StoreEnvironment::instance().tagStore().string();
  if (!std::filesystem::exists(tags)) return text;
  for (const auto& problem : TagFile(tags).problems()) text += problem + "\n";
  return text;
}

// The states that an act may leave: the first is the one before it, the last the one after it.
class AllowedStates {
 public:
  AllowedStates(const Act& act, const Identifiers& known)
      : act_(act), known_(known), states_{stateFor(act, known)} {
    const PreparedFolder prepared;
    auto ways = act.parts;
    ways.push_back(act.arguments);
    for (const auto& way : ways) {
      const auto result = runAlive(commandOf(way));
      EXPECT_EQ(result.exitCode, 0) << result.errors;
      if (way == act.arguments) {
        EXPECT_NE((result.output + result.errors).find(act.told), std::string::npos)
            << result.output << result.errors;
      }
      states_.push_back(stateFor(act, known));
      prepared.bringBack();
    }
  }

  // Contacts and tags lie in two files: when a kill has come between, the next command that looks
  // at the tags brings them to where the contacts are.
  void expectOneIsLeftBy(const support::ProcessResult& result) const {
    auto state = stateFor(act_, known_);
    EXPECT_EQ(problems(), "");
    EXPECT_TRUE(anyHas(&ReadableState::contacts, state.contacts)) << told(state);
    if (!isAllowed(state)) {
      const auto next = runAlive(program_tests::programCommand({"books"}));
      EXPECT_EQ(next.exitCode, 0) << next.errors;
      EXPECT_EQ(problems(), "");
      state = stateFor(act_, known_);
    }
    EXPECT_TRUE(isAllowed(state)) << told(state);
    if (saysDone(result)) {
      EXPECT_EQ(state.text(), states_.back().text());
    } else if (state.text() != states_.back().text()) {
      expectItIsDoneAgain();
    }
  }

 private:
  // What was left needs no help by hand: whoever asks once more gets the whole.
  void expectItIsDoneAgain() const {
    const auto again = runAlive(commandOf(act_.arguments));
    EXPECT_EQ(again.exitCode, 0) << again.errors;
    EXPECT_EQ(stateFor(act_, known_).text(), states_.back().text());
  }
  bool saysDone(const support::ProcessResult& result) const {
    if (result.exitCode == 0) return true;
    const auto words = result.output + result.errors;
    return !act_.told.empty() && words.find(act_.told) != std::string::npos;
  }
  bool anyHas(std::string ReadableState::*part, const std::string& text) const {
    return std::any_of(states_.begin(), states_.end(),
                       [&](const auto& state) { return state.*part == text; });
  }
  bool isAllowed(const ReadableState& wanted) const {
    return std::any_of(states_.begin(), states_.end(),
                       [&](const auto& state) { return state.text() == wanted.text(); });
  }
  std::string told(const ReadableState& state) const {
    return "left:\n" + state.text() + "before:\n" + states_.front().text() + "after:\n" +
           states_.back().text();
  }

  const Act& act_;
  const Identifiers& known_;
  std::vector<ReadableState> states_;
};

class KilledCommand : public testing::TestWithParam<Act> {};

TEST_P(KilledCommand, IsDoneOrIsNot) {
  fillAddressBook();
  const auto known = identifiersNow();
  const AllowedStates allowed(GetParam(), known);
  ASSERT_FALSE(HasFailure());
  const int killed = killEverywhere(commandOf(GetParam().arguments),
                                    [&](const auto& result) { allowed.expectOneIsLeftBy(result); });
  EXPECT_GT(killed, 5);
  RecordProperty("killed", killed);
}

const std::vector<Act> kActs = {
    {"ImportsPersons", {"import", "@persons.vcf"}, "2 cards"},
    {"ImportsPersonsAndGroups", {"import", "@cards.vcf"}, "3 cards", {{"import", "@persons.vcf"}}},
    {"ImportsIntoAnAccount", {"import", "@persons.vcf", "--into", "Work"}, "2 cards"},
    {"ImportsChangedCards", {"import", "--update", "@changed.vcf"}, "1 updated"},
    {"SetsValues", {"set", "Ann Lee", "phone+=3", "nickname=Annie", "email="}, "changed Ann Lee"},
    {"SetsAPicture", {"photo", "Ben Ray", "--set", "@photo.tiff"}, "set the picture of Ben Ray"},
    {"ClearsAPicture", {"photo", "Ann Lee", "--clear"}, "Ann Lee has no picture now"},
    {"RenamesAGroup", {"rename-group", "Friends", "Others"}, "Others"},
    {"RemovesAGroupWithItsTree", {"remove-group", "Friends"}, "removed the group Friends"},
    {"AddsMembers", {"group-add", "Club", "Ann Lee", "Cid"}, "Club"},
    {"RemovesMembers", {"group-remove", "Friends", "Ben Ray", "Ann Lee"}, "Friends"},
    {"RemovesMembersOfTheWholeTree",
     {"group-remove", "Friends", "Ann Lee", "Cid", "--recursive"},
     "Friends"},
    {"AddsAnAccount", {"accounts", "add", "Home"}, "added Home"},
    {"RemovesAnAccount", {"accounts", "remove", "Old"}, "removed Old"},
    {"BacksUpABook", {"backup", "_local", "@out.book"}, "saved ", {}, "out.book"},
    {"BacksUpTheStore", {"backup", "--all", "@out.db"}, "saved ", {}, "out.db"},
    {"BacksUpOverABackup", {"backup", "Work", "@local.book"}, "saved ", {}, "local.book"},
    {"Exports", {"export", "-o", "@out.vcf"}, "", {}, "out.vcf"},
};

std::string nameOf(const testing::TestParamInfo<Act>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(That, KilledCommand, testing::ValuesIn(kActs), nameOf);

}  // namespace
}  // namespace ox::kills
