// Every command of the program that only looks, on a disk that breaks or is full at every place:
// what it tells is right, or it fails.
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/faults/program/disorders.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

using program_tests::ProcessResult;
using Words = std::vector<std::string>;

struct Reader {
  const char* name;
  Words arguments;          // "@name" is a file of the test's folder
  std::string output = {};  // the file that it writes
};

const std::vector<Reader>& readers() {
  static const std::vector<Reader> commands = {
      {"Accounts", {"accounts"}},
      {"Books", {"books"}},
      {"Persons", {"persons"}},
      {"PersonsOfABook", {"persons", "--book", "Work"}},
      {"ShowsSomebody", {"show", "Ann Lee"}},
      {"FindsPersons", {"persons", "--find", "lee"}},
      {"ShowsSomebodyByPart", {"show", "lee"}},
      {"ShowsThePast", {"show", "Ann Lee", "--at", "2999-01-01"}},
      {"Groups", {"groups"}},
      {"Tags", {"tag", "Ann Lee"}},
      {"GetsAPicture", {"photo", "Ann Lee", "--get", "@out"}, "out"},
      {"ExportsAll", {"export", "-o", "@out"}, "out"},
      {"ExportsABook", {"export", "--book", "Work", "-o", "@out"}, "out"},
      {"ExportsSomebody", {"export", "Ben Ray", "-o", "@out"}, "out"},
      {"ExportsHostCards", {"export", "--format", "host-vcard", "-o", "@out"}, "out"},
      {"BacksUpABook", {"backup", "Work", "@out"}, "out"},
      {"BacksUpTheStore", {"backup", "--all", "@out"}, "out"},
      {"Log", {"log"}},
      {"LogOfSomebody", {"log", "Ann Lee"}},
      {"LogOfSomebodyGone", {"log", "Eve Fox"}},
      {"Trash", {"trash"}},
      {"Checks", {"check"}},
  };
  return commands;
}

std::string inFolder(const std::string& name) {
  return support::temporaryPath(name).string();
}

Words commandOf(const Reader& reader) {
  Words words;
  for (const auto& word : reader.arguments) {
    words.push_back(word.starts_with('@') ? inFolder(word.substr(1)) : word);
  }
  return program_tests::programCommand(words);
}

// Two accounts, persons with a picture and with values of many pages, tags, groups in a tree, and
// somebody who is gone.
void fillStore() {
  const auto cards =
      program_tests::card({"FN:Ann Lee", "N:Lee;Ann;;;", "UID:ann",
                           "NOTE:" + std::string(20'000, 'n'),
                           "PHOTO;ENCODING=b;TYPE=JPEG:" + std::string(20'000, 'A')}) +
      program_tests::card({"FN:Ben Ray", "N:Ray;Ben;;;", "UID:ben", "TEL:1"});
  support::temporaryFile("cards.vcf", cards);
  for (const auto& command : std::vector<Words>{
           {"import", inFolder("cards.vcf")},
           {"accounts", "add", "Work"},
           {"add-person", "Work", "name=Dora", "phone=2"},
           {"add-group", "_local", "Friends"},
           {"add-group", "_local", "Close", "--under", "Friends"},
           {"group-add", "Friends", "Ann Lee", "Ben Ray"},
           {"tag", "Ann Lee", "--add", "golf"},
           {"add-person", "_local", "name=Eve Fox"},
           {"remove-person", "Eve Fox"},
           {"backup", "_local", inFolder("local.book")},
           {"restore", "Work", inFolder("local.book")},
           {"undo"},
       }) {
    const auto result = program_tests::run(command);
    ASSERT_TRUE(result.exitCode == 0 || result.exitCode == 3) << command[0] << result.errors;
  }
}

// What the command gives is what it gives of a sound disk, or it fails; whether something is there
// is never told by who could not look.
class StruckReader {
 public:
  explicit StruckReader(const Reader& reader) : reader_(reader), command_(commandOf(reader)) {
    const auto sound = support::runProcess(command_);
    EXPECT_EQ(sound.exitCode, 0) << sound.errors;
    expected_ = told(sound);
  }

  int tryAll(const Disorder& disorder, int step) const {
    return tryEverywhere(
        reader_.name, disorder, step,
        [&](const support::Blow& blow) {
          if (!reader_.output.empty()) support::temporaryFile(reader_.output, "old");
          return support::runStruck(command_, blow);
        },
        [&](const support::StruckRun& run) {
          look(run.result, !run.wasStruck || disorder.mustBeBorne());
        });
  }

 private:
  std::string written() const {
    return reader_.output.empty() ? "" : support::fileBytes(inFolder(reader_.output));
  }
  std::string told(const ProcessResult& result) const { return result.output + written(); }

  void look(const ProcessResult& result, bool mustBeDone) const {
    if (result.exitCode == 0) {
      EXPECT_EQ(told(result), expected_) << result.errors;
      return;
    }
    EXPECT_TRUE(result.exitCode == 1 && !mustBeDone) << result.exitCode << result.errors;
    EXPECT_NE(result.output + result.errors, "");
    // Something else may have failed than what the file is made of.
    if (reader_.output.empty()) return;
    EXPECT_TRUE(written() == "old" || told(result) == expected_) << written() << result.errors;
  }

  const Reader& reader_;
  Words command_;
  std::string expected_;
};

TEST(StruckReaders, TakeNothingForNothing) {
  fillStore();
  const kills::PreparedFolder prepared;
  Sample sample(17);
  int struck = 0;
  for (const auto& reader : readers()) {
    for (const auto& disorder : allDisorders()) {
      if (!sample.takes(reader.name, disorder)) continue;
      prepared.bringBack();
      struck += StruckReader(reader).tryAll(disorder, Sample::stepOr(12));
    }
  }
  EXPECT_GT(struck, 0);
}

// Of each record there is either the card or the word that it is missing.
TEST(StruckReaders, KeepGoingAndTellWhatIsMissing) {
  fillStore();
  const auto countOf = [](const std::string& text, const std::string& wanted) {
    std::size_t count = 0;
    for (auto at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1)) {
      ++count;
    }
    return count;
  };
  const auto file = inFolder("out");
  const auto command = program_tests::programCommand({"export", "--keep-going", "-o", file});
  ASSERT_EQ(support::runProcess(command).exitCode, 0);
  const auto whole = support::fileBytes(file);
  const auto cards = countOf(whole, "BEGIN:VCARD");
  for (const auto strikes : {support::Strikes::Once, support::Strikes::FromThereOn}) {
    const Disorder disorder{"a read breaks", support::call_switch::kReads,
                            support::call_switch::kBroken, strikes};
    const auto struck = tryEverywhere(
        "export --keep-going", disorder, Sample::stepOr(3),
        [&](const support::Blow& blow) {
          support::temporaryFile("out", "old");
          std::filesystem::remove(file + ".partial");
          return support::runStruck(command, blow);
        },
        [&](const support::StruckRun& run) {
          const auto& [code, output, errors] = run.result;
          if (code == 0) {
            EXPECT_EQ(support::fileBytes(file), whole);
            return;
          }
          EXPECT_EQ(code, 1) << errors;
          // Something else may have failed than what the file is made of.
          if (support::fileBytes(file) == whole) return;
          EXPECT_EQ(support::fileBytes(file), "old");
          if (!std::filesystem::exists(file + ".partial")) return;
          const auto partial = support::fileBytes(file + ".partial");
          EXPECT_EQ(countOf(partial, "BEGIN:VCARD") + countOf(output, ": the record: "), cards)
              << output;
          EXPECT_NE(output, "");
        });
    EXPECT_GT(struck, 1);
  }
}

// Near its end a command has things to take apart, and some want memory for it.
TEST(StruckReaders, EndWithAMessageWhereNoMemoryIsLeftToTakeThingsApart) {
  fillStore();
  const auto command = program_tests::programCommand({"log", "Ann Lee"});
  const auto struckAt = [&](int place) {
    return support::runStruck(command, {support::kAllocations, support::call_switch::kNone, place,
                                        support::Strikes::FromThereOn});
  };
  int reached = 1;
  for (int notReached = 1'000'000; notReached - reached > 1;) {
    const auto between = reached + (notReached - reached) / 2;
    (struckAt(between).wasStruck ? reached : notReached) = between;
  }
  constexpr int kLast = 90;
  ASSERT_GT(reached, kLast);
  for (auto place = reached - kLast; place <= reached; ++place) {
    const auto [code, output, errors] = struckAt(place).result;
    EXPECT_TRUE(code == 0 || (code == 1 && !errors.empty())) << place << ": " << code << errors;
  }
}

// Somebody who is not found may be made anew, and somebody who is gone be taken for another one.
TEST(StruckReaders, NeverTellThatSomebodyIsNotThere) {
  fillStore();
  const kills::PreparedFolder prepared;
  const Disorder disorder{"a read breaks", support::call_switch::kReads,
                          support::call_switch::kBroken, support::Strikes::Once};
  for (const auto& command : std::vector<Words>{{"set", "Ann Lee", "nickname=Annie"},
                                                {"tag", "Ben Ray", "--add", "chess"},
                                                {"group-add", "Friends", "Ben Ray"},
                                                {"rename-group", "Close", "Close"},
                                                {"persons", "--find", "lee ann"},
                                                {"show", "lee"},
                                                {"forget", "Ben Ray"}}) {
    const auto struck = tryEverywhere(
        command[0], disorder, Sample::stepOr(8),
        [&](const support::Blow& blow) {
          prepared.bringBack();
          return support::runStruck(program_tests::programCommand(command), blow);
        },
        [](const support::StruckRun& run) {
          const auto code = run.result.exitCode;
          EXPECT_TRUE(code == 0 || code == 1) << code << run.result.errors;
        });
    EXPECT_GT(struck, 1);
  }
}

}  // namespace
}  // namespace ox::faults
