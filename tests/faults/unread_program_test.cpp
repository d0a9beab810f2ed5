// The program while the store's files cannot be read: at every read that a command makes, once and
// from there on.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>

#include "tests/faults/read_switch.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

using program_tests::ProcessResult;
using support::StoreEnvironment;
using Words = std::vector<std::string>;

struct Reader {
  const char* name;
  Words arguments;          // "@name" is a file of the test's folder
  std::string output = {};  // the file that it writes
};

void PrintTo(const Reader& reader, std::ostream* stream) {
  *stream << reader.name;
}

const std::vector<Reader>& readers() {
  static const std::vector<Reader> commands = {
      {"Accounts", {"accounts"}},
      {"Books", {"books"}},
      {"Persons", {"persons"}},
      {"PersonsOfABook", {"persons", "--book", "Work"}},
      {"ShowsSomebody", {"show", "Ann Lee"}},
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

enum class Fails { Once, FromThereOn };

struct Reading {
  ProcessResult result;
  bool wasStruck = false;
};

// Runs the command; its n-th read of a file of the store fails.
Reading runUnread(const Words& command, int n, Fails fails) {
  const auto mark = inFolder("struck");
  std::filesystem::remove(mark);
  auto result = support::runProcess(
      command, "",
      {"LD_PRELOAD=" OX_READ_SWITCH,
       kReadFolderVariable + ("=" + StoreEnvironment::instance().folder().string()),
       kReadAtVariable + ("=" + std::to_string(n)),
       kReadOnVariable + std::string(fails == Fails::Once ? "=" : "=on"),
       kReadMarkVariable + ("=" + mark),
       // The switch is loaded before the sanitizers, which stand aside for it.
       "ASAN_OPTIONS=verify_asan_link_order=0"});
  return {std::move(result), std::filesystem::exists(mark)};
}

// Programs under a sanitizer take ten times as long to start.
int everySoManyReads() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr int kUsual = 12;
#else
  constexpr int kUsual = 5;
#endif
  const auto* wanted = std::getenv("OX_FAULT_STEP");
  return wanted == nullptr ? kUsual : std::max(1, std::atoi(wanted));
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

class Unread : public testing::TestWithParam<Reader> {
 protected:
  Unread() { fillStore(); }
};

class UnreadWriting : public testing::Test {
 protected:
  UnreadWriting() {
    fillStore();
    for (const auto& name : files()) kept_[name] = support::fileBytes(inFolder(name));
  }

  // The store and the tags as they were; nobody has them open.
  void bringBack() const {
    for (const auto& name : files()) std::filesystem::remove(inFolder(name));
    for (const auto& [name, bytes] : kept_) support::temporaryFile(name, bytes);
  }

 private:
  static std::vector<std::string> files() {
    std::vector<std::string> names;
    for (const auto& entry :
         std::filesystem::directory_iterator(StoreEnvironment::instance().folder())) {
      if (entry.is_regular_file()) names.push_back(entry.path().filename().string());
    }
    return names;
  }

  std::map<std::string, std::string> kept_;
};

// What the command gives is what it gives of a sound disk, or it fails; whether something is there
// is never told by who could not look.
TEST_P(Unread, IsNeverTakenForNothing) {
  const auto& reader = GetParam();
  const auto command = commandOf(reader);
  const auto told = [&](const ProcessResult& result) {
    return result.output +
           (reader.output.empty() ? "" : support::fileBytes(inFolder(reader.output)));
  };
  const auto sound = support::runProcess(command);
  ASSERT_EQ(sound.exitCode, 0) << sound.errors;
  const auto expected = told(sound);
  int struck = 0;
  for (const auto fails : {Fails::Once, Fails::FromThereOn}) {
    for (int n = 1;; n += everySoManyReads()) {
      SCOPED_TRACE((fails == Fails::Once ? "read " : "from read ") + std::to_string(n));
      if (!reader.output.empty()) support::temporaryFile(reader.output, "old");
      const auto [result, wasStruck] = runUnread(command, n, fails);
      if (!wasStruck) break;
      ++struck;
      if (result.exitCode == 0) {
        EXPECT_EQ(told(result), expected) << result.errors;
      } else {
        EXPECT_EQ(result.exitCode, 1) << result.errors;
        EXPECT_NE(result.output + result.errors, "");
        // Something else may have failed than what the file is made of.
        if (!reader.output.empty()) {
          const auto file = support::fileBytes(inFolder(reader.output));
          EXPECT_TRUE(file == "old" || result.output + file == expected) << file << result.errors;
        }
      }
      if (HasFailure() && std::getenv("OX_FAULT_ALL") == nullptr) return;
    }
  }
  EXPECT_GT(struck, 1);
}

// Somebody who is not found may be made anew, and somebody who is gone be taken for another one.
TEST_F(UnreadWriting, NeverTellsThatSomebodyIsNotThere) {
  for (const auto& command : std::vector<Words>{{"set", "Ann Lee", "nickname=Annie"},
                                                {"tag", "Ben Ray", "--add", "chess"},
                                                {"group-add", "Friends", "Ben Ray"},
                                                {"rename-group", "Close", "Close"},
                                                {"forget", "Ben Ray"}}) {
    for (int n = 1;; n += everySoManyReads()) {
      SCOPED_TRACE(command[0] + " at read " + std::to_string(n));
      bringBack();
      const auto [result, wasStruck] =
          runUnread(program_tests::programCommand(command), n, Fails::Once);
      if (!wasStruck) break;
      EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode << result.errors;
      if (HasFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Read, Unread, testing::ValuesIn(readers()),
                         [](const auto& reader) { return std::string(reader.param.name); });

}  // namespace
}  // namespace ox::faults
