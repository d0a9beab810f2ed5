#include "tests/kills/writing_commands.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>

#include "ox/base/checksum.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/kills/address_book.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::kills {
namespace {

std::vector<std::string> commandOf(const Act::Words& arguments) {
  Act::Words words;
  for (const auto& word : arguments) {
    if (word == "oldest copy") {
      words.push_back(program_tests::runJson({"copies"}).back()["name"]);
    } else if (word.starts_with("@")) {
      words.push_back(support::temporaryPath(word.substr(1)).string());
    } else {
      words.push_back(word);
    }
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

// What it said; an act that says nothing says it by its end alone.
bool saysDone(const Act& act, const support::ProcessResult& result) {
  if (result.exitCode == 0) return true;
  return !act.told.empty() && (result.output + result.errors).find(act.told) != std::string::npos;
}

}  // namespace

std::vector<std::string> Act::command() const {
  return commandOf(arguments);
}

std::ostream& operator<<(std::ostream& stream, const Act& act) {
  return stream << act.name;
}

void prepareFor(const Act& act) {
  fillAddressBook();
  prepareAlsoFor(act);
}

void prepareAlsoFor(const Act& act) {
  if (act.before.empty()) return;
  const auto result = runAlive(commandOf(act.before));
  EXPECT_EQ(result.exitCode, 0) << result.errors;
}

AllowedStates statesOf(const Act& act, const Identifiers& known) {
  AllowedStates states([&act, &known] { return stateFor(act, known); });
  const PreparedFolder prepared;
  auto ways = act.parts;
  ways.push_back(act.arguments);
  for (const auto& way : ways) {
    const auto result = runAlive(commandOf(way));
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    const auto& told = way == act.arguments ? act.told : "";
    EXPECT_NE((result.output + result.errors).find(told), std::string::npos) << result.errors;
    states.add();
    prepared.bringBack();
  }
  return states;
}

void expectLeftWhole(const Act& act, const AllowedStates& states,
                     const support::ProcessResult& result) {
  const auto last = states.count() - 1;
  const auto left = states.expectLeft(saysDone(act, result) ? last : 0, last);
  if (left >= last) return;
  // What looks as if nothing was done may be an act whose tags are not in their file yet.
  EXPECT_EQ(runAlive(program_tests::programCommand({"books"})).exitCode, 0);
  if (states.expectLeft(left, last) >= last) return;
  const auto again = runAlive(act.command());
  EXPECT_EQ(again.exitCode, 0) << again.errors;
  states.expectLeft(last, last);
}

const std::vector<Act>& writingCommands() {
  static const std::vector<Act> acts = {
      {"ImportsPersons", {"import", "@persons.vcf"}, "2 cards"},
      {"ImportsPersonsAndGroups",
       {"import", "@cards.vcf"},
       "3 cards",
       {{"import", "@persons.vcf"}}},
      {"ImportsIntoAnAccount", {"import", "@persons.vcf", "--into", "Work"}, "2 cards"},
      {"ImportsPersonsWithTags", {"import", "@tagged.vcf"}, "2 cards"},
      {"ImportsCategoriesAsGroups",
       {"import", "@tagged.vcf", "--categories", "groups"},
       "2 cards",
       {{"import", "@untagged.vcf"}}},
      {"ImportsATable", {"import", "@persons.csv"}, "2 cards"},
      {"ImportsChangedCards", {"import", "--update", "@changed.vcf"}, "1 updated"},
      {"AddsAPerson",
       {"add-person", "_local", "name=Hal Orr", "phone=1", "phone+=2", "email=h@o"},
       "added Hal Orr"},
      {"SetsValues", {"set", "Ann Lee", "phone+=3", "nickname=Annie", "email="}, "changed Ann Lee"},
      {"SetsAPicture", {"photo", "Ben Ray", "--set", "@photo.tiff"}, "set the picture of Ben Ray"},
      {"ClearsAPicture", {"photo", "Ann Lee", "--clear"}, "Ann Lee has no picture now"},
      {"RemovesPersons", {"remove-person", "Ann Lee", "Ben Ray"}, "removed Ann Lee"},
      {"AddsAGroup", {"add-group", "_local", "Sailing"}, "Sailing"},
      {"AddsAGroupUnderAnother",
       {"add-group", "_local", "Sailing", "--under", "Friends"},
       "Sailing"},
      {"RenamesAGroup", {"rename-group", "Friends", "Others"}, "Others"},
      {"RemovesAGroupWithItsTree", {"remove-group", "Friends"}, "removed the group Friends"},
      {"AddsMembers", {"group-add", "Club", "Ann Lee", "Cid"}, "to Club"},
      {"RemovesMembers", {"group-remove", "Friends", "Ben Ray", "Ann Lee"}, "from Friends"},
      {"RemovesMembersOfTheWholeTree",
       {"group-remove", "Friends", "Ann Lee", "Cid", "--recursive"},
       "from Friends"},
      {"ChangesTags",
       {"tag", "Ann Lee", "--add", "tennis", "--add", "opera", "--remove", "golf"},
       "opera\n"},
      {"MergesTwoRecords", {"merge", "Ben Ray", "Ann Lee"}, "merged Ann Lee"},
      {"MovesPersons", {"move", "Ann Lee", "Ben Ray", "--to", "Work"}, "moved Ben Ray"},
      {"CopiesPersons", {"copy", "Ann Lee", "Ben Ray", "--to", "Work"}, "copied Ben Ray"},
      {"RestoresABook", {"restore", "_local", "@local.book"}, "restored "},
      {"TakesTheLastCommandBack", {"undo"}, "took back "},
      {"TakesARemovalBack",
       {"undo"},
       "took back ",
       {},
       {},
       {"remove-person", "Ann Lee", "Ben Ray"}},
      {"TakesARestoreBack", {"undo"}, "took back ", {}, {}, {"restore", "_local", "@local.book"}},
      {"TakesARemovedAccountBack",
       {"undo"},
       "took back ",
       {},
       {},
       {"accounts", "remove", "Work", "--force"}},
      {"TakesAnUndoBack", {"redo"}, "took back ", {}, {}, {"undo"}},
      {"RestoresACopy",
       {"copies", "restore", "oldest copy"},
       "restored ",
       {},
       {},
       {"restore", "_local", "@local.book"}},
      {"BoundsTheJournal", {"log", "--keep-days", "5", "--keep-megabytes", "5"}, "is kept for "},
      {"AddsAnAccount", {"accounts", "add", "Home"}, "added Home"},
      {"RemovesAnAccount", {"accounts", "remove", "Old"}, "removed Old"},
      {"RemovesAnAccountWithItsRecords", {"accounts", "remove", "Work", "--force"}, "removed Work"},
      {"BacksUpABook", {"backup", "_local", "@out.book"}, "saved ", {}, "out.book"},
      {"BacksUpTheStore", {"backup", "--all", "@out.db"}, "saved ", {}, "out.db"},
      {"BacksUpOverABackup", {"backup", "Work", "@local.book"}, "saved ", {}, "local.book"},
      {"Exports", {"export", "-o", "@out.vcf"}, "", {}, "out.vcf"},
  };
  return acts;
}

}  // namespace ox::kills
