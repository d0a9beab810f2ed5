// Others look at the store while commands write: what they list is whole at every moment. One
// reader is a host that stays, one is the program, asked again and again.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <thread>

#include "tests/kills/address_book.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/kills/life.hpp"
#include "tests/kills/record_text.hpp"
#include "tests/oxcontacts/program.hpp"

namespace ox::kills {
namespace {

using program_tests::programCommand;
using Words = std::vector<std::string>;

// What every person of that first name has at all times.
struct Whole {
  std::size_t phones;
  std::size_t emails;
  bool picture;
};
const std::map<std::string, Whole>& wholePersons() {
  static const std::map<std::string, Whole> known = {
      {"Ann", {2, 1, true}},   {"Ben", {0, 0, false}}, {"Cid", {0, 0, false}},
      {"Dora", {1, 0, false}}, {"Gus", {1, 0, false}}, {"Hal", {2, 1, false}},
  };
  return known;
}

std::string missingIn(const ABPerson& person) {
  const auto name = textOf(person, kABFirstNameProperty);
  const auto known = wholePersons().find(name);
  if (known == wholePersons().end()) return "a person named \"" + name + "\"";
  const auto& whole = known->second;
  std::string missing;
  if (entriesOf(person, kABPhoneProperty).entries.size() < whole.phones)
    missing += " without phones";
  if (entriesOf(person, kABEmailProperty).entries.size() < whole.emails)
    missing += " without mails";
  if (whole.picture && !person.imageData()) missing += " without picture";
  return missing.empty() ? "" : name + missing;
}

// What is wrong with the records that the host sees now, one line each, and their names. A record
// that goes while it is looked at says nothing, and then the names say nothing either.
struct Seen {
  std::set<std::string> wrong;
  std::string names;
};

Seen look() {
  Seen seen;
  std::vector<std::string> names;
  bool allStayed = true;
  const auto note = [&](const ABRecord& record, const std::string& name, const std::string& wrong) {
    names.push_back(name);
    const bool stayed = isThere(record);
    allStayed = allStayed && stayed;
    if (stayed && !wrong.empty()) seen.wrong.insert(wrong);
  };
  for (const auto& person : records()->people()) {
    note(*person, textOf(*person, kABFirstNameProperty), missingIn(*person));
  }
  for (const auto& group : records()->groups()) {
    const auto name = textOf(*group, kABGroupNameProperty);
    note(*group, name + "(" + std::to_string(group->members().size()) + ")",
         name.empty() ? "a group without a name" : "");
  }
  if (!allStayed) return seen;
  std::sort(names.begin(), names.end());
  for (const auto& name : names) seen.names += name + " ";
  return seen;
}

// Prints everything that it has seen to be wrong. With "same" the names must be the same at every
// look.
const support::SecondProcess looksOn("looksOn", [](const auto& arguments) {
  const bool same = arguments.at(0) == "same";
  const auto before = look();
  std::puts("ready");
  std::fflush(stdout);
  std::set<std::string> wrong;
  std::size_t looks = 0;
  for (; !std::filesystem::exists(stopFile()); ++looks) {
    auto seen = look();
    wrong.merge(seen.wrong);
    if (same && !seen.names.empty() && seen.names != before.names) {
      wrong.insert("half a book: " + seen.names);
    }
  }
  for (const auto& line : wrong) std::puts(line.c_str());
  return looks > 0 ? 0 : 1;
});

// Persons whom the program lists without a name, and groups.
std::set<std::string> namelessInListing() {
  std::set<std::string> wrong;
  for (const auto& person : program_tests::runJson({"persons"})) {
    if (person["displayName"] == "") wrong.insert("a person without a name is listed");
  }
  for (const auto& group : program_tests::runJson({"groups"})) {
    if (group["displayName"] == "") wrong.insert("a group without a name is listed");
  }
  return wrong;
}

constexpr int kTimes = 25;

// What each of the readers has seen that is wrong.
struct SeenBy {
  std::string host;
  std::string program;
};

// Runs the command, which may be another one each time, so often while the readers look on.
SeenBy seenDuring(const char* names, const std::function<Words(int)>& arguments) {
  support::RunningProcess reader(looksOn.command({names}));
  EXPECT_TRUE(reader.waitForOutput("ready\n"));
  std::atomic<bool> isOver = false;
  std::set<std::string> listed;
  std::thread lister([&] {
    while (!isOver) listed.merge(namelessInListing());
  });
  for (int i = 0; i < kTimes; ++i) {
    const auto result = runAlive(programCommand(arguments(i)));
    EXPECT_EQ(result.exitCode, 0) << result.errors;
  }
  isOver = true;
  lister.join();
  support::temporaryFile("stop", "");
  const auto result = reader.wait();
  EXPECT_EQ(result.exitCode, 0);
  SeenBy seen{result.output.substr(std::string("ready\n").size()), ""};
  for (const auto& line : listed) seen.program += line + "\n";
  return seen;
}

void expectNothingSeen(const SeenBy& seen) {
  EXPECT_EQ(seen.host, "");
  EXPECT_EQ(seen.program, "");
}

TEST(Readers, SeeNoHalfMadePerson) {
  fillAddressBook();
  expectNothingSeen(seenDuring("any", [](int) -> Words {
    return {"add-person", "_local", "name=Hal Orr", "phone=1", "phone+=2", "email=h@o"};
  }));
}

TEST(Readers, SeeNoGroupWithoutAName) {
  fillAddressBook();
  expectNothingSeen(seenDuring("any", [](int) -> Words {
    return {"add-group", "_local", "Sailing", "--under", "Club"};
  }));
}

TEST(Readers, SeeNoHalfCopiedPerson) {
  fillAddressBook();
  auto ids = program_tests::personIds();
  const auto copyBoth = [&](int) -> Words {
    return {"copy", ids.at("Ann Lee"), ids.at("Ben Ray"), "--to", "Work"};
  };
  expectNothingSeen(seenDuring("any", copyBoth));
}

TEST(Readers, SeeNoHalfImportedPerson) {
  fillAddressBook();
  const auto importNext = [](int i) -> Words {
    const auto uid = "UID:hal" + std::to_string(i);
    const auto hal =
        program_tests::card({"FN:Hal", "N:;Hal;;;", uid, "TEL:1", "TEL:2", "EMAIL:h@o"});
    return {"import", support::temporaryFile("hal.vcf", hal + hal).string()};
  };
  expectNothingSeen(seenDuring("any", importNext));
}

TEST(Readers, SeeTheWholeBookWhileItIsRestored) {
  fillAddressBook();
  const auto book = support::temporaryPath("now.book").string();
  ASSERT_EQ(runAlive(programCommand({"backup", "_local", book})).exitCode, 0);
  expectNothingSeen(seenDuring("same", [&](int) -> Words { return {"restore", "_local", book}; }));
}

}  // namespace
}  // namespace ox::kills
