#include <chrono>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::fileBytes;
using support::temporaryFile;
using support::temporaryPath;

const std::string kCards =
    card({"UID:a1", "N:Lee;Ann;;;", "FN:Ann Lee", "item1.TEL;TYPE=pref:+1 555 1",
          "item1.X-ABLabel:Boat", "X-UNKNOWN;P=1:kept"}) +
    card({"UID:b1", "N:;王小明;;;", "FN:王小明", "BDAY:--05-17"}) +
    card({"UID:g1", "FN:Friends", "N:Friends;;;;", "X-ADDRESSBOOKSERVER-KIND:group",
          "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a1"});

void importCards() {
  ASSERT_EQ(run({"import", temporaryFile("cards.vcf", kCards)}).exitCode, 0);
}

// What another store holds after importing that file, as JSON text without identifiers.
std::string shownAfterImport(const std::string& file, const std::string& store) {
  const auto path = temporaryPath(store).string();
  EXPECT_EQ(run({"--store", path, "import", file}).exitCode, 0);
  std::string text;
  for (const auto& person : runJson({"--store", path, "persons"})) {
    auto shown = runJson({"--store", path, "show", person["ID"].get<std::string>()});
    shown.erase("ID");
    shown["groups"] = shown["groups"].size();
    text += shown.dump() + "\n";
  }
  for (auto& group : runJson({"--store", path, "groups"})) {
    group.erase("ID");
    text += group.dump() + "\n";
  }
  return text;
}

TEST(ExportCommand, GivesEverythingBackInBothVersions) {
  importCards();
  const auto original = temporaryFile("original.vcf", kCards).string();
  for (const std::string format : {"vcard3", "vcard4"}) {
    const auto file = temporaryPath(format + ".vcf").string();
    EXPECT_EQ(run({"export", "--format", format, "-o", file}).exitCode, 0);
    EXPECT_EQ(shownAfterImport(file, format + ".db"),
              shownAfterImport(original, "original-" + format + ".db"));
    EXPECT_NE(fileBytes(file).find("kept"), std::string::npos);
    EXPECT_EQ(run({"import", file}).exitCode, 0);
    EXPECT_EQ(runJson({"persons"}).size(), 2U) << "an own export brings nothing new";
  }
}

TEST(ExportCommand, IsTheSameTwiceOnTheOutputAndInAFile) {
  importCards();
  const auto file = temporaryPath("out.vcf");
  EXPECT_EQ(run({"export", "-o", file}).exitCode, 0);
  EXPECT_EQ(run({"export"}).output, fileBytes(file));
  EXPECT_EQ(run({"export", "--book", "_local"}).output, fileBytes(file));
}

TEST(ExportCommand, WritesNamedPersonsAlone) {
  importCards();
  const auto cards = run({"export", "Ann Lee"}).output;
  EXPECT_TRUE(cards.starts_with("BEGIN:VCARD\r\nVERSION:3.0\r\n"));
  EXPECT_TRUE(cards.ends_with("END:VCARD\r\n"));
  EXPECT_EQ(cards.find("BEGIN:VCARD", 1), std::string::npos);
  EXPECT_EQ(run({"export", "Nobody"}).exitCode, 4);
  EXPECT_EQ(run({"export", "--book", "Nowhere"}).exitCode, 4);
  EXPECT_EQ(run({"export", "--format", "yaml"}).exitCode, 2);
}

TEST(ExportCommand, SeparatesTheHostsOwnCardsByALineEnd) {
  importCards();
  const auto first = run({"export", "--format", "host-vcard", "Ann Lee"}).output;
  const auto second = run({"export", "--format", "host-vcard", "王小明"}).output;
  EXPECT_EQ(run({"export", "--format", "host-vcard"}).output, first + "\r\n" + second);
}

TEST(ExportCommand, LeavesTheTargetAloneWhenItFails) {
  importCards();
  const auto file = temporaryFile("old.vcf", "old");
  EXPECT_EQ(run({"export", "Nobody", "-o", file}).exitCode, 4);
  EXPECT_EQ(fileBytes(file), "old");
  const auto store = support::StoreEnvironment::instance().contactStore();
  EXPECT_EQ(run({"export", "-o", store}).exitCode, 1);
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
  EXPECT_EQ(run({"export", "-o", temporaryPath("none") / "out.vcf"}).exitCode, 1);
}

TEST(ExportCommand, WritesThroughALinkAndKeepsTheMode) {
  importCards();
  const auto target = temporaryFile("target.vcf", "old");
  ASSERT_EQ(::chmod(target.c_str(), 0644), 0);
  std::filesystem::create_symlink("target.vcf", temporaryPath("link.vcf"));
  std::filesystem::create_symlink("fresh.vcf", temporaryPath("dangling.vcf"));
  for (const auto* link : {"link.vcf", "dangling.vcf"}) {
    EXPECT_EQ(run({"export", "-o", temporaryPath(link)}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(temporaryPath(link)));
  }
  const auto cards = run({"export"}).output;
  EXPECT_EQ(fileBytes(target), cards);
  EXPECT_EQ(fileBytes(temporaryPath("fresh.vcf")), cards);
  const auto modeOf = [](const std::filesystem::path& path) {
    return static_cast<unsigned>(std::filesystem::status(path).permissions());
  };
  EXPECT_EQ(modeOf(target), 0644U);
  EXPECT_EQ(modeOf(temporaryPath("fresh.vcf")), 0600U);
}

TEST(ExportCommand, TakesTheStandardOutputByItsNames) {
  importCards();
  const auto cards = run({"export"}).output;
  for (const auto* name : {"-", "/dev/stdout", "/dev/fd/1"}) {
    const auto result = run({"export", "-o", name});
    EXPECT_EQ(result.output, cards) << name;
    EXPECT_EQ(result.errors, "") << name;
  }
  EXPECT_EQ(runShell("\"$OX\" export -o - >/dev/full").errors,
            "oxcontacts: the output could not be written\n");
}

TEST(ExportCommand, NeverWritesWhereTheStoreIsOrWillBe) {
  importCards();
  const auto store = temporaryPath("other.db").string();
  run({"--store", store, "accounts", "add", "Work"});
  std::filesystem::create_symlink("other.db", temporaryPath("alias.db"));
  std::filesystem::create_directory(temporaryPath("folder"));
  for (const auto* ending :
       {"", "-wal", "-shm", "-journal", "-synced", ".tags", ".tags-wal", ".tags-shm"}) {
    for (const auto& file :
         {store + ending, (temporaryPath("folder") / ".." / "other.db").string() + ending}) {
      const auto result = support::runProcess(
          programCommand({"--store", store, "export", "-o", file}), "", {"OX_TAG_STORE="});
      EXPECT_EQ(result.exitCode, 1) << file;
      EXPECT_EQ(result.errors, "oxcontacts: " + file + ": is a file of the store itself\n");
    }
  }
  const auto behindLink = run({"--store", temporaryPath("alias.db"), "export", "-o", store});
  EXPECT_EQ(behindLink.exitCode, 1) << behindLink.errors;
}

// The names in the test's folder that begin so.
std::size_t namesBeginning(const std::string& start) {
  std::size_t count = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(support::StoreEnvironment::instance().folder())) {
    count += entry.path().filename().string().starts_with(start) ? 1 : 0;
  }
  return count;
}

TEST(ExportCommand, WritesIntoPipesAndDevices) {
  importCards();
  const auto pipe = temporaryPath("out.pipe").string();
  EXPECT_EQ(runShell("mkfifo " + pipe + "; cat " + pipe + " & \"$OX\" export -o " + pipe + "; wait")
                .output,
            run({"export"}).output);
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  EXPECT_EQ(run({"export", "-o", "/dev/null"}).exitCode, 0);
  EXPECT_EQ(run({"export", "-o", "/dev/full"}).errors,
            "oxcontacts: /dev/full: No space left on device\n");
}

TEST(ExportCommand, GivesAllOfOneMomentWhomeverAnotherProcessRemovesMeanwhile) {
  importCards();
  const auto all = run({"export", "--format", "host-vcard"}).output;
  const auto pipe = temporaryPath("out.pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  support::RunningProcess program(programCommand({"export", "--format", "host-vcard", "-o", pipe}));
  ASSERT_TRUE(waitsIn(program.id(), {SYS_openat}));  // it knows whom, and waits for the reader
  EXPECT_EQ(run({"remove-person", "Ann Lee"}).exitCode, 0);
  EXPECT_EQ(fileBytes(pipe), all);
  const auto result = program.wait();
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_NE(result.errors.find("exported 2 persons"), std::string::npos) << result.errors;
  EXPECT_EQ(runJson({"persons"}).size(), 1U);
}

TEST(ExportCommand, LeavesNothingWhenInterrupted) {
  std::string cards;
  for (int i = 0; i < 4000; ++i) {
    cards +=
        card({"UID:n" + std::to_string(i), "N:;P;;;", "FN:P", "NOTE:" + std::string(500, 'x')});
  }
  run({"import", temporaryFile("many.vcf", cards)});
  const auto file = temporaryFile("out.vcf", "old");
  support::RunningProcess program(programCommand({"export", "--format", "host-vcard", "-o", file}));
  for (int i = 0; i < 20'000 && namesBeginning("out.vcf") < 2; ++i) {
    std::this_thread::sleep_for(std::chrono::microseconds(500));
  }
  ASSERT_EQ(namesBeginning("out.vcf"), 2U) << "it was never seen at work";
  program.signal(SIGINT);
  EXPECT_EQ(program.wait().exitCode, 130);
  EXPECT_EQ(namesBeginning("out.vcf"), 1U);
  EXPECT_EQ(fileBytes(file), "old");
}

void damage(const char* sql) {
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute(sql);
}

TEST(ExportThatKeepsGoing, WritesWhatCanBeReadBesideTheFile) {
  importCards();
  const auto ids = personIds();
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  const auto file = temporaryFile("cards out.vcf", "an earlier one").string();
  damage("UPDATE content SET properties = x'00' WHERE record = 1");
  EXPECT_EQ(run({"export", "-o", file}).exitCode, 1);
  const auto result = run({"export", "-o", file, "--keep-going"});
  EXPECT_EQ(result.exitCode, 1) << result.errors;
  EXPECT_EQ(result.output, "missing: " + ids.at("Ann Lee") + ": the record: " + store + ": " +
                               ids.at("Ann Lee") +
                               ": the stored values of a record are cut short\n");
  EXPECT_EQ(result.errors, "oxcontacts: exported 1 person and 1 group to " + file +
                               ".partial\noxcontacts: not everything could be read; " + file +
                               " is as it was\n");
  EXPECT_EQ(fileBytes(file), "an earlier one");
  const auto partial = fileBytes(file + ".partial");
  EXPECT_EQ(partial.find("Ann Lee"), std::string::npos);
  EXPECT_NE(partial.find("FN:王小明"), std::string::npos);
  EXPECT_EQ(partial.find("X-ADDRESSBOOKSERVER-MEMBER"), std::string::npos);
  const auto report =
      Json::parse(run({"--json", "export", "-o", file, "--keep-going"}).output, nullptr, false);
  ASSERT_EQ(report.size(), 1U) << report;
  EXPECT_EQ(report[0]["record"], ids.at("Ann Lee"));
  EXPECT_EQ(report[0]["what"], "the record");
}

TEST(ExportThatKeepsGoing, NamesAPictureThatIsMissingInACard) {
  importCards();
  const auto file = temporaryPath("out.vcf").string();
  damage(
      "INSERT INTO image(checksum, data) VALUES(1, x'00');"
      "UPDATE content SET image = (SELECT max(id) FROM image) WHERE record = 1");
  const auto result = run({"export", "-o", file, "--keep-going"});
  EXPECT_EQ(result.exitCode, 1) << result.errors;
  EXPECT_TRUE(
      result.output.starts_with("missing: " + personIds().at("Ann Lee") + ": its picture: "))
      << result.output;
  EXPECT_FALSE(std::filesystem::exists(file)) << "there was none";
  EXPECT_NE(fileBytes(file + ".partial").find("FN:Ann Lee"), std::string::npos);
}

// Whose row of the record is damaged is known by nothing but that row.
TEST(ExportThatKeepsGoing, TellsOfARecordThatCannotBeListed) {
  importCards();
  const auto ids = personIds();
  const auto file = temporaryFile("out.vcf", "old").string();
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  std::string uid;
  std::size_t page = 0;
  {
    sqlite::Connection reader(store, sqlite::Connection::Mode::ReadOnly);
    page = static_cast<std::size_t>(
        reader.queryInteger("SELECT rootpage FROM sqlite_schema WHERE name = 'record'"));
    auto row = reader.prepare("SELECT uid FROM record WHERE id = 1");
    row.step();
    uid = row.blob(0);
  }
  auto bytes = fileBytes(store);
  const auto place = bytes.find(uid, (page - 1) * 4096);
  ASSERT_NE(place, std::string::npos);
  bytes[place] = static_cast<char>(bytes[place] ^ 1);
  temporaryFile("contacts.db", bytes);
  for (const auto& words : std::vector<std::vector<std::string>>{
           {"export", "-o", file}, {"export", "--book", "_local", "-o", file}}) {
    EXPECT_EQ(run(words).exitCode, 1);
    EXPECT_EQ(fileBytes(file), "old") << words[1];
  }
  // Whoever is named by an ID needs no list.
  EXPECT_EQ(run({"export", ids.at("王小明"), "-o", temporaryPath("one.vcf")}).exitCode, 0);
  const auto result = run({"export", "-o", file, "--keep-going"});
  EXPECT_EQ(result.exitCode, 1) << result.errors;
  EXPECT_TRUE(result.output.starts_with("missing: a record: ")) << result.output;
  EXPECT_EQ(fileBytes(file), "old");
  EXPECT_NE(fileBytes(file + ".partial").find("FN:王小明"), std::string::npos);
}

TEST(ExportThatKeepsGoing, IsAnExportLikeAnyOtherWhereEverythingCanBeRead) {
  importCards();
  const auto file = temporaryFile("out.vcf", "old").string();
  EXPECT_EQ(run({"export", "-o", temporaryPath("plain.vcf").string()}).exitCode, 0);
  const auto result = run({"export", "-o", file, "--keep-going"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(fileBytes(file), fileBytes(temporaryPath("plain.vcf")));
  EXPECT_FALSE(std::filesystem::exists(file + ".partial"));
}

TEST(ExportThatKeepsGoing, NeedsAFileBesideWhichItCanWrite) {
  importCards();
  EXPECT_EQ(run({"export", "--keep-going"}).exitCode, 2);
  EXPECT_EQ(run({"export", "--keep-going", "-o", "/dev/null"}).exitCode, 2);
  EXPECT_EQ(
      run({"export", "--keep-going", "--format", "host-vcard", "-o", temporaryPath("x").string()})
          .exitCode,
      2);
}

}  // namespace
}  // namespace ox::program_tests
