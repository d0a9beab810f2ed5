#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;
using support::temporaryPath;

std::string import(const std::string& cards, std::vector<std::string> options = {}) {
  options.insert(options.begin(), {"import", temporaryFile("cards.vcf", cards).string()});
  return countsOf(runJson(options));
}

const std::string kAnn = card({"UID:a1", "N:Lee;Ann;;;", "FN:Ann Lee", "TEL:+1 555 1"});
const std::string kBen = card({"N:;Ben;;;", "FN:Ben", "EMAIL:ben@example.org"});
const std::string kFriends =
    card({"UID:g1", "FN:Friends", "N:Friends;;;;", "X-ADDRESSBOOKSERVER-KIND:group",
          "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a1"});

TEST(ImportCommand, AddsNothingTwice) {
  const auto all = kFriends + kAnn + kBen + kAnn + kBen;
  EXPECT_EQ(import(all), "cards 5, added 2, skipped 2, groups 1");
  EXPECT_EQ(import(all), "cards 5, skipped 4, groups 1");
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
  const auto groups = runJson({"groups"});
  ASSERT_EQ(groups.size(), 1U);
  EXPECT_EQ(groups[0]["displayName"], "Friends");
  EXPECT_EQ(groups[0]["persons"], 1);
}

TEST(ImportCommand, AddsNothingTwiceWhenTwoImportTheSame) {
  std::string cards = kFriends + kAnn + kBen;
  for (int i = 0; i < 6000; ++i) {
    const auto name = "P" + std::to_string(i);
    cards += card({"UID:" + name, "N:;" + name + ";;;", "FN:" + name});
  }
  const auto file = temporaryFile("many.vcf", cards).string();
  support::RunningProcess one(programCommand({"--json", "import", file}));
  support::RunningProcess two(programCommand({"--json", "import", file}));
  int added = 0;
  for (auto* process : {&one, &two}) {
    const auto result = process->wait();
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    added += Json::parse(result.output)["added"].get<int>();
  }
  EXPECT_EQ(added, 6002);
  EXPECT_EQ(runJson({"persons"}).size(), 6002U);
  EXPECT_EQ(runJson({"groups"}).size(), 1U);
}

TEST(ImportCommand, ChangesWhatHasTheSameUidOnlyWithUpdate) {
  import(kAnn);
  const auto other = card({"UID:a1", "N:Lee;Anna;;;", "FN:Anna Lee"});
  const auto file = temporaryFile("other.vcf", other).string();
  EXPECT_EQ(runJson({"import", file}), Json::parse(R"({"cards":1,"added":0,"updated":0,"skipped":1,
      "repaired":0,"refused":0,"groups":0,"categoryGroups":0,"strayLines":0,"problems":[{"file":")" +
                                                   file + R"(","line":1,
      "reason":"differs from the person with the same UID; not updated"}],
      "skippedCards":[{"file":")" + file + R"(","line":1,
      "reason":"differs from the person with the same UID"}]})"));
  EXPECT_EQ(personIds().count("Ann Lee"), 1U);
  const auto id = personIds()["Ann Lee"];

  EXPECT_EQ(import(other, {"--update"}), "cards 1, updated 1");
  EXPECT_EQ(personIds(), (std::map<std::string, std::string>{{"Anna Lee", id}}));
  EXPECT_EQ(import(other + kAnn + other, {"--update"}), "cards 3, updated 2, skipped 1");
}

TEST(ImportCommand, TellsWhatWasRefusedAndKeepsTheNeighbours) {
  const auto file = temporaryFile("cut.vcf", kAnn + "stray\r\n" + kBen + "BEGIN:VCARD\r\nFN");
  const auto reportFile = temporaryPath("report.json");
  const auto result = run({"import", file, "--json", "--report", reportFile});
  EXPECT_EQ(result.exitCode, 3);
  const auto report = Json::parse(result.output);
  EXPECT_EQ(countsOf(report), "cards 3, added 2, refused 1, strayLines 1");
  ASSERT_EQ(report["problems"].size(), 2U) << report;
  EXPECT_EQ(report["problems"][0]["line"], 8);
  EXPECT_EQ(report["problems"][1]["line"], 15);
  EXPECT_EQ(Json::parse(support::fileBytes(reportFile)), report);
  EXPECT_NE(result.errors.find(file.string() + ":15: "), std::string::npos) << result.errors;
}

TEST(ImportCommand, RefusesWithStrictWhatItWouldMend) {
  const auto mended =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;Cy;;;\r\nFN:Cy\r\nno line at all\r\nEND:VCARD\r\n";
  EXPECT_EQ(import(mended + kAnn, {"--strict"}), "cards 2, added 1, refused 1");
  EXPECT_EQ(personIds().count("Cy"), 0U);
  EXPECT_EQ(import(mended + kAnn), "cards 2, added 1, skipped 1, repaired 1");
}

TEST(ImportCommand, GroupsFindTheirMembersAnywhere) {
  const auto group = [](const std::string& uid, const std::vector<std::string>& members) {
    std::vector<std::string> lines{"UID:" + uid, "FN:" + uid, "N:" + uid + ";;;;",
                                   "X-ADDRESSBOOKSERVER-KIND:group"};
    for (const auto& member : members) {
      lines.push_back("X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:" + member);
    }
    return card(lines);
  };
  import(kAnn);
  const auto later = card({"UID:d1", "N:;Dee;;;", "FN:Dee"});
  // top holds inner (given first), inner a person of an earlier import and one of a later file;
  // loop and inner hold each other.
  const auto first = temporaryFile("first.vcf", group("top", {"inner", "nobody"}) +
                                                    group("inner", {"a1", "d1", "loop"}) +
                                                    group("loop", {"inner", "loop"}))
                         .string();
  const auto second = temporaryFile("second.vcf", later).string();
  const auto report = runJson({"import", first, second});
  EXPECT_EQ(countsOf(report), "cards 4, added 1, groups 3");
  EXPECT_EQ(report["problems"].size(), 3U) << report;
  const auto groups = runJson({"groups"});
  ASSERT_EQ(groups.size(), 1U) << groups;
  EXPECT_EQ(groups[0]["displayName"], "top");
  EXPECT_EQ(groups[0]["includePersons"], 2);
  EXPECT_EQ(groups[0]["subGroups"][0]["displayName"], "inner");
  EXPECT_EQ(groups[0]["subGroups"][0]["persons"], 2);
  EXPECT_EQ(groups[0]["subGroups"][0]["subGroups"][0]["displayName"], "loop");
  EXPECT_EQ(countsOf(runJson({"import", first, second})), "cards 4, skipped 1, groups 3");
  EXPECT_EQ(run({"check"}).output, "sound\n");
}

TEST(ImportCommand, TellsOfGroupsThatTheAccountDoesNotShow) {
  run({"accounts", "add", "Google"});
  const auto file = temporaryFile("google.vcf", kAnn + kFriends);
  const auto result = run({"import", file, "--into", "Google"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "oxcontacts: Google shows no groups: 1 group card stays out of sight\n");
  EXPECT_EQ(result.output,
            "2 cards: 1 added, 0 updated, 0 skipped, 0 refused, 1 group; 0 repaired\n");
  EXPECT_EQ(run({"import", file}).errors, "");
}

TEST(ImportCommand, ReadsStandardInput) {
  const auto file = temporaryFile("cards.vcf", kAnn + kBen).string();
  EXPECT_EQ(runShell("\"$OX\" import - < '" + file + "'").output,
            "2 cards: 2 added, 0 updated, 0 skipped, 0 refused, 0 groups; 0 repaired\n");
  EXPECT_EQ(runShell("cat '" + file + "' | \"$OX\" import -").output,
            "2 cards: 0 added, 0 updated, 2 skipped, 0 refused, 0 groups; 0 repaired\n");
}

TEST(ImportCommand, RefusesFilesThatHoldNoCards) {
  std::filesystem::create_directory(temporaryPath("folder"));
  const auto good = temporaryFile("good.vcf", kAnn).string();
  const std::string binary("\x7f\x45LF\x00\x01\xff\xfe binary", 15);
  struct Row {
    std::string file;
    const char* reason;
    int exitCode;
    std::size_t personsAfter;  // what cannot be opened keeps everything out
  };
  const std::vector<Row> rows = {
      {temporaryPath("missing.vcf"), "", 1, 0},
      {temporaryPath("folder"), "", 1, 0},
      {temporaryFile("binary.vcf", binary), "holds no vCard", 3, 1},
      {temporaryFile("empty.vcf", ""), "holds no vCard", 3, 1},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(run({"import", row.file}).exitCode, 1) << row.file;
    const auto result = run({"import", good, row.file, "--json"});
    EXPECT_EQ(result.exitCode, row.exitCode) << row.file;
    const auto problems = Json::parse(result.output)["problems"];
    ASSERT_EQ(problems.size(), 1U) << problems;
    EXPECT_EQ(problems[0]["file"], row.file);
    EXPECT_EQ(problems[0]["line"], 0);
    EXPECT_NE(result.errors.find(row.file), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find(row.reason), std::string::npos) << result.errors;
    EXPECT_EQ(runJson({"persons"}).size(), row.personsAfter) << row.file;
  }
}

TEST(ImportCommand, MakesNoStoreOfFilesThatAreNotThere) {
  const auto store = temporaryPath("mistyped.db").string();
  const auto result = run({"--store", store, "import", "one.vcf", "two.vcf"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "oxcontacts: one.vcf: No such file or directory\n"
            "oxcontacts: two.vcf: No such file or directory\n"
            "oxcontacts: nothing was imported, and no store was made\n");
  EXPECT_FALSE(std::filesystem::exists(store));
}

TEST(ImportCommand, CountsWhatItNamesInTextAndInJson) {
  const auto file = temporaryFile("mixed.vcf", kAnn + "stray\r\nstray\r\n" + kAnn + kBen +
                                                   "BEGIN:VCARD\r\nVERSION:3.0\r\nEND:VCARD\r\n")
                        .string();
  const auto empty = temporaryFile("empty.vcf", "").string();
  const auto text = run({"import", file, empty});
  EXPECT_EQ(text.exitCode, 3);
  EXPECT_EQ(text.output,
            "4 cards: 2 added, 0 updated, 1 skipped, 1 refused, 0 groups; 0 repaired; "
            "2 lines outside of cards\n");
  const auto at = "oxcontacts: " + file + ":";
  EXPECT_EQ(text.errors, at + "8: text outside of any card: stray\n" + at +
                             "9: text outside of any card: stray\n" + at +
                             "23: the card holds no property\noxcontacts: " + empty +
                             ": holds no vCard\n");
  const auto again = run({"import", file, empty, "--json"});
  EXPECT_EQ(again.exitCode, 3);
  const auto report = Json::parse(again.output);
  EXPECT_EQ(countsOf(report), "cards 4, skipped 3, refused 1, strayLines 2");
  EXPECT_EQ(report["problems"].size(), 4U);
  const auto skipped = [&](int line) {
    return Json{{"file", file}, {"line", line}, {"reason", "is there already"}};
  };
  EXPECT_EQ(report["skippedCards"], (Json{skipped(1), skipped(10), skipped(17)}));
}

TEST(ImportCommand, ShowsBeforeItWritesAnything) {
  const auto file =
      temporaryFile("gbk.vcf", card({"N:\xCD\xF5;\xCE\xB0;;;", "FN:\xCD\xF5\xCE\xB0"}) + kFriends)
          .string();
  const auto result = run({"import", "--dry-run", file});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, file + ":1: 王伟 (read as GB18030)\n" + file +
                               ":6: Friends\n"
                               "2 cards: 1 person, 1 group, 0 refused; 1 repaired; nothing was "
                               "written\n");
  EXPECT_TRUE(
      result.errors.starts_with("oxcontacts: " + file + ":3: text is not UTF-8, read as GB18030 ("))
      << result.errors;
  const auto names = runJson({"import", "--dry-run", "--charset", "windows-1251", file})["names"];
  EXPECT_EQ(names,
            Json::parse(R"([{"file":")" + file + R"(","line":1,"kind":"person",
      "name":"О° Нх","charset":null},{"file":")" +
                        file + R"(","line":6,"kind":"group","name":"Friends","charset":null}])"));
  EXPECT_FALSE(std::filesystem::exists(support::StoreEnvironment::instance().contactStore()));
  const auto unknown = run({"import", "--charset", "no-such", file});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_EQ(unknown.errors, "oxcontacts: no-such: no charset that text of cards may be in\n");
}

TEST(ImportCommand, SurvivesHugeAndDeepInput) {
  const std::string nested = [] {
    std::string text;
    for (int i = 0; i < 10'000; ++i)
      text += "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;Deep;;;\r\nAGENT:\r\n";
    for (int i = 0; i < 10'000; ++i) text += "END:VCARD\r\n";
    return text;
  }();
  const auto deep = temporaryFile("deep.vcf", nested + kAnn);
  const auto result = run({"import", deep});
  EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 3) << result.exitCode << result.errors;
  EXPECT_EQ(personIds().count("Ann Lee"), 1U);

  const auto longLine =
      temporaryFile("long.vcf", "BEGIN:VCARD\r\nNOTE:" + std::string(80U << 20U, 'x') +
                                    "\r\nEND:VCARD\r\n" + kBen);
  EXPECT_EQ(countsOf(runJson({"import", longLine})), "cards 2, added 1, refused 1");
}

TEST(ImportCommand, ReportsOnlyWhereItDoesNoHarm) {
  const auto good = temporaryFile("good.vcf", kAnn).string();
  const auto& environment = support::StoreEnvironment::instance();
  std::filesystem::create_hard_link(good, temporaryPath("twin.vcf"));
  struct Row {
    std::string report;
    int exitCode;
    std::string message;
  };
  const std::vector<Row> rows = {
      {environment.contactStore(), 1, "is a file of the store itself"},
      {environment.contactStore().string() + "-wal", 1, "is a file of the store itself"},
      {environment.tagStore(), 1, "is a file of the store itself"},
      {good, 1, "is to be imported"},
      {temporaryPath("twin.vcf"), 1, "is to be imported"},
      {temporaryPath("none") / "report.json", 1, "No such file or directory"},
      {environment.folder(), 1, "Is a directory"},
      {"-", 2, "the report needs a file of its own; --json prints it"},
  };
  for (const auto& row : rows) {
    const auto result = run({"import", good, "--report", row.report});
    EXPECT_EQ(result.exitCode, row.exitCode) << row.report;
    EXPECT_NE(result.errors.find(row.message), std::string::npos) << result.errors;
    EXPECT_EQ(result.output, "") << row.report;
  }
  EXPECT_EQ(support::fileBytes(good), kAnn);
  EXPECT_EQ(runJson({"persons"}), Json::array());
}

TEST(ImportCommand, TellsWhatItCommittedWhenTheReportCannotBeWritten) {
  const auto pipe = temporaryPath("pipe.vcf");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::filesystem::create_directory(temporaryPath("going"));
  support::RunningProcess program(programCommand(
      {"import", pipe, "--report", (temporaryPath("going") / "report.json").string()}));
  const int feed = ::open(pipe.c_str(), O_WRONLY);  // until the import reads
  ASSERT_GE(feed, 0);
  std::filesystem::remove_all(temporaryPath("going"));
  ASSERT_EQ(::write(feed, kAnn.data(), kAnn.size()), static_cast<ssize_t>(kAnn.size()));
  ::close(feed);
  const auto result = program.wait();
  EXPECT_EQ(result.exitCode, 1) << result.errors;
  EXPECT_TRUE(result.output.starts_with("1 card: 1 added,")) << result.output;
  EXPECT_NE(result.errors.find("the report could not be written: "), std::string::npos);
  EXPECT_EQ(runJson({"persons"}).size(), 1U);
}

// The names of what is left of a file that is written beside its target.
std::string unfinishedFiles() {
  std::string names;
  for (const auto& entry :
       std::filesystem::directory_iterator(support::StoreEnvironment::instance().folder())) {
    if (entry.path().extension() == ".new") names += entry.path().filename().string() + " ";
  }
  return names;
}

TEST(ImportCommand, WritesTheReportAlsoWhenNobodyReadsWhatItPrints) {
  const auto file = temporaryFile("cut.vcf", kAnn + "BEGIN:VCARD\r\nFN").string();
  const auto report = temporaryPath("report.json").string();
  const auto result =
      runShell("{ \"$OX\" import " + file + " --json --report " + report + "; echo $? >&2; } | :");
  EXPECT_EQ(countsOf(Json::parse(support::fileBytes(report))), "cards 2, added 1, refused 1");
  EXPECT_EQ(unfinishedFiles(), "") << result.errors;
}

TEST(ImportCommand, ReportsIntoPipesAndDevices) {
  const auto file = temporaryFile("good.vcf", kAnn).string();
  EXPECT_EQ(run({"import", file, "--report", "/dev/null"}).exitCode, 0);
  const auto skipped = run({"--quiet", "import", file, "--report", "/dev/stderr"});
  EXPECT_EQ(countsOf(Json::parse(skipped.errors)), "cards 1, skipped 1");
  const auto pipe = temporaryPath("report.pipe").string();
  const auto piped = runShell("mkfifo " + pipe + "; cat " + pipe + " & \"$OX\" import " + file +
                              " --report " + pipe + " >&2; wait");
  EXPECT_EQ(countsOf(Json::parse(piped.output)), "cards 1, skipped 1") << piped.errors;
  const auto full = run({"import", file, "--report", "/dev/full"});
  EXPECT_EQ(full.exitCode, 1);
  EXPECT_EQ(full.errors,
            "oxcontacts: the report could not be written: /dev/full: No space left on device\n");
  const auto log = temporaryFile("log", "before\n");
  runShell("\"$OX\" import " + file + " --report /dev/stderr 2>>" + log.string());
  EXPECT_TRUE(support::fileBytes(log).starts_with("before\n{")) << support::fileBytes(log);
  EXPECT_EQ(unfinishedFiles(), "");
}

TEST(ImportCommand, EndsCleanlyWhenInterrupted) {
  const auto pipe = temporaryPath("pipe.vcf");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  support::RunningProcess program(programCommand({"import", pipe, "--json"}));
  const int feed = ::open(pipe.c_str(), O_WRONLY);
  ASSERT_GE(feed, 0);
  std::string cards;
  for (int i = 0; i < 3000; ++i) {
    cards += card({"UID:n" + std::to_string(i), "N:;P" + std::to_string(i) + ";;;", "FN:P"});
  }
  // A pipe holds 64 KiB: most cards have been read once everything is written.
  ASSERT_EQ(::write(feed, cards.data(), cards.size()), static_cast<ssize_t>(cards.size()));
  program.signal(SIGINT);
  ::close(feed);
  const auto result = program.wait();
  EXPECT_EQ(result.exitCode, 130) << result.errors;
  const auto report = Json::parse(result.output);
  EXPECT_GE(report["added"], 1000);
  EXPECT_LT(report["added"], 3000);
  EXPECT_EQ(runJson({"persons"}).size(), report["added"].get<std::size_t>());
  EXPECT_EQ(run({"check"}).output, "sound\n");
}

#ifdef SYS_poll
constexpr long kPoll = SYS_poll;
#else
constexpr long kPoll = SYS_ppoll;
#endif

TEST(ImportCommand, EndsAtTheFirstInterruptionWhileItWaits) {
  const auto pipe = temporaryPath("pipe.vcf");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  support::RunningProcess program(programCommand({"import", pipe, "--json"}));
  const int feed = ::open(pipe.c_str(), O_WRONLY);
  ASSERT_GE(feed, 0);
  const auto cards = kAnn + kBen + "BEGIN:VCARD\r\nFN:Cut";
  ASSERT_EQ(::write(feed, cards.data(), cards.size()), static_cast<ssize_t>(cards.size()));
  int unread = 1;
  while (::ioctl(feed, FIONREAD, &unread) == 0 && unread > 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ASSERT_TRUE(waitsIn(program.id(), {kPoll}));
  program.signal(SIGINT);
  const auto result = program.wait();
  ::close(feed);
  EXPECT_EQ(result.exitCode, 130) << result.errors;
  EXPECT_EQ(countsOf(Json::parse(result.output)), "cards 2, added 2");
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
}

TEST(ImportCommand, MakesGroupsOfCategoriesOnceAndCountsThem) {
  const auto file =
      temporaryFile("cards.vcf", card({"UID:1", "N:;Ann;;;", "FN:Ann", "CATEGORIES:golf,chess"}) +
                                     card({"UID:2", "N:;Bo;;;", "FN:Bo", "CATEGORIES:golf"}));
  const auto first = run({"import", "--categories", "groups", file});
  EXPECT_EQ(first.exitCode, 0);
  EXPECT_EQ(first.errors, "oxcontacts: made 2 groups of categories\n");
  const auto acts = runJson({"log"}).size();
  const auto again = runJson({"import", "--categories", "groups", file});
  EXPECT_EQ(again["categoryGroups"], 0);
  EXPECT_EQ(again["skipped"], 2);
  EXPECT_EQ(runJson({"log"}).size(), acts);
}

TEST(ImportCommand, KeepsTheTagsThatALaterCardOfTheFileDoesNotName) {
  const auto ann = [](const std::vector<std::string>& lines) {
    std::vector<std::string> all = {"UID:1", "N:;Ann;;;", "FN:Ann"};
    all.insert(all.end(), lines.begin(), lines.end());
    return card(all);
  };
  const auto file = temporaryFile(
      "cards.vcf", ann({"CATEGORIES:one,two"}) + ann({"CATEGORIES:two,three"}) + ann({"NOTE:x"}));
  ASSERT_EQ(run({"import", "--update", file}).exitCode, 0);
  EXPECT_EQ(runJson({"show", "Ann"})["tags"], Json::array({"two", "three"}));
}

}  // namespace
}  // namespace ox::program_tests
