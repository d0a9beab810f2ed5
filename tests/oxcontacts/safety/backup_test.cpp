#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/images/picture_files.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/log_without_room.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::fileBytes;
using support::temporaryFile;
using support::temporaryPath;

// Ann with a tag and Ben in the local book; Friends holds Close, which holds Ann.
void fillStore() {
  run({"add-person", "_local", "name=Ann Lee", "phone:home=1", "birthday=--05-17"});
  run({"add-person", "_local", "name=Ben"});
  run({"tag", "Ann Lee", "--add", "sailing"});
  run({"add-group", "_local", "Friends"});
  run({"add-group", "_local", "Close", "--under", "Friends"});
  run({"group-add", "Close", "Ann Lee"});
}

// A book without its IDs: persons with their tags, and the tree of groups.
std::string contentOf(const std::string& book) {
  std::string text;
  for (const auto& person : runJson({"persons", "--book", book})) {
    text += person["displayName"].get<std::string>() + " " + person["mainPhone"].dump() +
            person["tags"].dump() + "; ";
  }
  return text + run({"groups", "--book", book}).output;
}

std::string localContent() {
  return "Ann Lee \"1\"[\"sailing\"]; Ben null[]; "
         "Friends  (0 persons, 1 with sub-groups, book On My Mac)\n"
         "  Close  (1 person, 1 with sub-groups, book On My Mac)\n";
}

std::filesystem::path folderOfCopies() {
  return support::StoreEnvironment::instance().contactStore().string() + ".copies";
}

TEST(BackupCommand, BringsABookBackAsItWas) {
  fillStore();
  const auto file = temporaryPath("local.book").string();
  EXPECT_EQ(runJson({"backup", "_local", file}), Json({{"groups", 2}, {"persons", 2}}));
  run({"remove-group", "Friends"});
  run({"set", "Ann Lee", "phone=9"});
  run({"add-person", "_local", "name=Cy"});
  run({"tag", "Cy", "--add", "gone"});

  EXPECT_EQ(runJson({"restore", "_local", file}), Json({{"groups", 2}, {"persons", 2}}));
  EXPECT_EQ(contentOf("_local"), localContent());
  EXPECT_EQ(run({"check"}).output, "sound\n");
  sqlite::Connection tags(support::StoreEnvironment::instance().tagStore().string(),
                          sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(tags.queryInteger("SELECT count(*) FROM tag"), 1);  // none of removed persons

  const auto copies = runJson({"copies"});
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_EQ(copies[0]["reason"], "restore");
  const std::string copy = copies[0]["path"];
  EXPECT_EQ(runJson({"--store", copy, "persons", "--find", "Cy"}).size(), 1U);
}

TEST(BackupCommand, RestoresIntoABookWithoutRecordsAndIntoOneThatHasSome) {
  fillStore();
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  const auto file = temporaryPath("local.book").string();
  run({"backup", "_local", file});
  auto expected = localContent();
  for (std::size_t at; (at = expected.find("On My Mac")) != std::string::npos;) {
    expected.replace(at, 9, "iCloud");
  }
  for (int i = 1; i <= 2; ++i) {
    const auto result = run({"restore", "iCloud", file});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_NE(result.errors.find("the store as it was: "), std::string::npos);
    EXPECT_NE(result.errors.find("restored iCloud: 2 groups, 2 persons"), std::string::npos);
    EXPECT_EQ(contentOf("A"), expected);
    EXPECT_EQ(contentOf("_local"), localContent());
  }
}

// Groups may come into such an account with an import; its book shows none of them.
TEST(BackupCommand, TellsOfGroupsThatTheBookDoesNotShowAndRestoringKeepsThem) {
  run({"accounts", "add", "Google", "--identifier", "G:ABAccount"});
  const auto cards = temporaryFile(
      "cards.vcf", card({"UID:a", "N:;Ann;;;", "FN:Ann"}) +
                       card({"UID:g", "N:Hidden;;;;", "FN:Hidden", "X-ADDRESSBOOKSERVER-KIND:group",
                             "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a"}));
  run({"import", cards, "--into", "Google"});
  const auto file = temporaryPath("google.book").string();
  const auto saved = run({"backup", "Google", file});
  EXPECT_EQ(saved.exitCode, 3);
  EXPECT_EQ(saved.errors, "oxcontacts: saved Google to " + file + ": 0 groups, 1 person\n" +
                              "oxcontacts: Google shows no groups: 1 group is not in " + file +
                              "; `backup --all` keeps it\n");
  const auto restored = run({"restore", "Google", file});
  EXPECT_EQ(restored.exitCode, 0) << restored.errors;
  EXPECT_TRUE(restored.errors.ends_with("restored Google: 1 group, 1 person\n")) << restored.errors;
  // Those of a file come in beside them.
  fillStore();
  run({"backup", "_local", file});
  EXPECT_EQ(runJson({"restore", "Google", file}), Json({{"groups", 3}, {"persons", 2}}));
}

TEST(RestoreCommand, RefusesAnythingButAWholeBackup) {
  fillStore();
  const auto file = temporaryPath("local.book").string();
  run({"backup", "_local", file});
  const auto whole = fileBytes(file);
  auto flipped = whole;
  flipped[whole.size() / 2] ^= 1;
  auto newer = whole;
  const std::string version = "\"version\":";
  newer[newer.find(version) + version.size()] ^= 8;  // another digit
  const std::size_t step = std::max<std::size_t>(64, whole.size() / 25 / 64 * 64);
  const auto endless = temporaryFile("endless.book", whole);
  std::filesystem::resize_file(endless, std::uintmax_t{8} << 40U);  // nothing but a hole
  const auto hole = temporaryFile("hole.book", "");
  std::filesystem::resize_file(hole, std::uintmax_t{8} << 40U);
  const std::string none = "is no backup of a book, nothing was changed";
  const std::string damaged = "is no whole backup of a book: the neutral book cannot be read: ";
  struct Row {
    std::string file;
    std::string reason;
  };
  std::vector<Row> rows = {
      {temporaryPath("missing.book"), "does not exist"},
      {support::StoreEnvironment::instance().folder(), "is a directory"},
      {"/dev/zero", "is not a regular file"},
      {support::StoreEnvironment::instance().contactStore(), "is a file of the store itself"},
      {temporaryFile("empty.book", ""), none},
      {temporaryFile("cards.vcf", card({"N:;Ann;;;"})), none},
      {hole, none},
      {endless, "is too large (8796093022208 bytes)"},
      {temporaryFile("flipped.book", flipped), damaged + "cut off or damaged, nothing was changed"},
      {temporaryFile("newer.book", newer),
       "is a backup of a book in a version that this program does not know, nothing was changed"},
  };
  for (std::size_t end = step; end < whole.size(); end += step) {
    rows.push_back({temporaryFile("cut" + std::to_string(end), whole.substr(0, end)), damaged});
  }
  for (const auto& row : rows) {
    const auto result = run({"restore", "_local", row.file});
    EXPECT_EQ(result.exitCode, 1) << row.file << result.errors;
    EXPECT_TRUE(result.errors.starts_with("oxcontacts: " + row.file + ": " + row.reason))
        << result.errors;
  }
  EXPECT_EQ(run({"restore", "Nowhere", file}).exitCode, 4);
  EXPECT_EQ(contentOf("_local"), localContent());
  EXPECT_FALSE(std::filesystem::exists(folderOfCopies()));
}

TEST(RestoreCommand, EmptiesABookOnlyWithForce) {
  run({"accounts", "add", "Empty", "--identifier", "E:ABAccount"});
  const auto file = temporaryPath("empty.book").string();
  EXPECT_EQ(runJson({"backup", "Empty", file}), Json({{"groups", 0}, {"persons", 0}}));
  fillStore();
  const auto refused = run({"restore", "_local", file});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_NE(refused.errors.find("--force"), std::string::npos);
  EXPECT_EQ(contentOf("_local"), localContent());
  EXPECT_EQ(run({"restore", "_local", file, "--force"}).exitCode, 0);
  EXPECT_EQ(runJson({"persons"}), Json::array());
  EXPECT_EQ(runJson({"groups"}), Json::array());
}

TEST(RestoreCommand, LeavesNoHalfCopyOfTheStore) {
  fillStore();
  const auto file = temporaryPath("local.book").string();
  run({"backup", "_local", file});
  // No file may grow as long as the copy would be.
  const auto result = runShell("ulimit -f 80; exec \"$OX\" restore _local '" + file + "'");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.errors.find("disk I/O error"), std::string::npos) << result.errors;
  EXPECT_TRUE(std::filesystem::is_empty(folderOfCopies()));
}

TEST(RestoreCommand, SaysWhenItCouldNotSave) {
  fillStore();
  const auto file = temporaryPath("local.book").string();
  run({"backup", "_local", file});
  const auto before = contentOf("_local");
  const support::LogWithoutRoom full(support::StoreEnvironment::instance().contactStore().string());
  const auto result = support::runProcess(
      support::LogWithoutRoom::limited(programCommand({"restore", "_local", file})));
  EXPECT_EQ(result.exitCode, 1) << result.errors;
  EXPECT_NE(result.errors.find("nothing was saved: "), std::string::npos) << result.errors;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(contentOf("_local"), before);
}

TEST(RestoreCommand, ChangesNothingWhileAnotherProgramHoldsTheStore) {
  fillStore();
  const auto file = temporaryPath("local.book").string();
  run({"backup", "_local", file});
  const auto before = contentOf("_local");
  {
    sqlite::Connection other(support::StoreEnvironment::instance().contactStore().string(),
                             sqlite::Connection::Mode::ReadWrite);
    const sqlite::Transaction writing(other);
    const auto result = run({"restore", "_local", file});
    EXPECT_EQ(result.exitCode, 5) << result.errors;
    EXPECT_NE(result.errors.find("nothing was restored: "), std::string::npos) << result.errors;
  }
  EXPECT_EQ(contentOf("_local"), before);
}

TEST(BackupCommand, KeepsTheLastGoodOneWhenARecordCannotBeRead) {
  fillStore();
  const auto file = temporaryPath("good.book").string();
  run({"backup", "_local", file});
  const auto good = fileBytes(file);
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE content SET properties = x'00' WHERE record = 2");
  for (const auto& target : {file, temporaryPath("new.book").string()}) {
    const auto result = run({"--json", "backup", "_local", target});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find("the book was not saved, " + target + " is as it was: "),
              std::string::npos)
        << result.errors;
  }
  EXPECT_EQ(fileBytes(file), good);
  EXPECT_FALSE(std::filesystem::exists(temporaryPath("new.book")));
}

TEST(BackupCommand, NamesThePersonsWhosePicturesItCannotHold) {
  support::StoreBuilder()
      .person("ann", {.first = "Ann", .image = makeData(images::flatJpeg(4, 4, {200, 10, 10}))})
      .person("ben", {.first = "Ben", .image = makeData("GIF89a")})
      .person("cy", {.first = "Cy", .image = makeData(images::pngClaiming(10'000, 10'000))});
  const auto file = temporaryPath("local.book").string();
  const auto result = run({"--json", "backup", "_local", file});
  EXPECT_EQ(result.exitCode, 3) << result.errors;
  EXPECT_EQ(Json::parse(result.output), Json({{"groups", 0}, {"persons", 3}}));
  const std::string reason =
      ": the picture cannot be decoded and is not in " + file + "; `backup --all` keeps it\n";
  const auto ids = personIds();
  EXPECT_EQ(result.errors, "oxcontacts: Ben (" + ids.at("Ben") + ")" + reason + "oxcontacts: Cy (" +
                               ids.at("Cy") + ")" + reason);
  EXPECT_EQ(run({"restore", "_local", file}).exitCode, 0);
  EXPECT_EQ(run({"--json", "backup", "_local", file}).exitCode, 0) << "the pictures are gone";
}

TEST(BackupCommand, CopiesTheWholeStoreWithItsTags) {
  fillStore();
  const auto file = temporaryPath("all.db").string();
  for (const std::size_t persons : {2U, 3U}) {  // the second time over the first copy
    EXPECT_EQ(runJson({"backup", "--all", file}), Json({{"groups", 2}, {"persons", persons}}));
    const auto kept = support::runProcess(
        programCommand({"--store", file, "--json", "persons", "--tag", "sailing"}), "",
        {"OX_TAG_STORE=" + file + ".tags"});
    EXPECT_EQ(Json::parse(kept.output).size(), 1U) << kept.errors;
    EXPECT_EQ(runJson({"--store", file, "persons"}).size(), persons);
    EXPECT_EQ(run({"--store", file, "check"}).output, "sound\n");
    run({"--store", file, "add-person", "_local", "name=Only in the copy"});
    run({"add-person", "_local", "name=Cy"});
  }
}

TEST(BackupCommand, LeavesWhatIsThereWhenItFails) {
  fillStore();
  const auto folder = support::StoreEnvironment::instance().folder();
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  const auto kept = temporaryFile("kept.book", "something else").string();
  struct Row {
    std::vector<std::string> arguments;
    int exitCode;
    std::string message;
  };
  const std::vector<Row> rows = {
      {{"_local", store}, 1, "is a file of the store itself"},
      {{"--all", store}, 1, "is a file of the store itself"},
      {{"--all", store + "-wal"}, 1, "itself"},
      {{"_local", folder}, 1, "Is a directory"},
      {{"--all", folder}, 1, "Is a directory"},
      {{"_local", "/dev/null"}, 2, "a backup needs a file of its own"},
      {{"--all", "/dev/null"}, 2, "a backup needs a file of its own"},
      {{"_local", (folder / "none" / "x").string()}, 1, "No such file or directory"},
      {{"--all", (folder / "none" / "x").string()}, 1, "No such file or directory"},
      {{"Nowhere", kept}, 4, "there is no book \"Nowhere\""},
      {{"_local", "-"}, 2, "a backup needs a file of its own"},
      {{"--all", "/dev/stdout"}, 2, "a backup needs a file of its own"},
      {{"_local"}, 2, "backup takes BOOK and FILE, or --all and FILE"},
      {{"--all", "_local", kept}, 2, "backup takes BOOK and FILE, or --all and FILE"},
  };
  run({"--store", store, "persons"});
  for (auto row : rows) {
    row.arguments.insert(row.arguments.begin(), "backup");
    const auto result = run(row.arguments);
    EXPECT_EQ(result.exitCode, row.exitCode) << row.message << result.errors;
    EXPECT_NE(result.errors.find(row.message), std::string::npos) << result.errors;
  }
  EXPECT_EQ(fileBytes(kept), "something else");
  EXPECT_EQ(contentOf("_local"), localContent());
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    EXPECT_NE(entry.path().extension(), ".new") << entry.path();
  }
}

TEST(BackupCommand, ReplacesStoreAndTagsTogetherOrNot) {
  fillStore();
  const auto file = temporaryPath("all.db").string();
  run({"backup", "--all", file});
  const auto tags = fileBytes(file + ".tags");
  // Somebody works with the copy.
  run({"--store", file, "add-person", "_local", "name=Only in the copy"});
  sqlite::Connection user(file, sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(user.queryInteger("SELECT count(*) FROM record"), 5);
  run({"tag", "Ann Lee", "--add", "new"});
  for (const auto& store : {support::StoreEnvironment::instance().tagStore().string(),
                            temporaryPath("no.tags").string()}) {
    const auto result = support::runProcess(programCommand({"backup", "--all", file}), "",
                                            {"OX_TAG_STORE=" + store});
    EXPECT_EQ(result.exitCode, 5) << result.errors;
    EXPECT_EQ(fileBytes(file + ".tags"), tags);
  }
  EXPECT_EQ(user.queryInteger("SELECT count(*) FROM record"), 5);
}

TEST(BackupCommand, LeavesWhatOnlyBearsTheNameOfTags) {
  fillStore();
  const auto file = temporaryPath("all.db").string();
  sqlite::Connection(temporaryPath("recipes.db"), sqlite::Connection::Mode::ReadWriteCreate)
      .execute("CREATE TABLE recipe(name TEXT)");
  for (const auto& foreign :
       {std::string("my notes"), std::string(), fileBytes(temporaryPath("recipes.db"))}) {
    temporaryFile("all.db.tags", foreign);
    const auto result = run({"backup", "--all", file});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "oxcontacts: " + file +
                                 ".tags: would be replaced by the tags of the copy, and holds "
                                 "none\n");
    EXPECT_EQ(fileBytes(file + ".tags"), foreign);
    EXPECT_FALSE(std::filesystem::exists(file));
  }
  std::filesystem::remove(file + ".tags");
  EXPECT_EQ(run({"backup", "--all", file}).exitCode, 0);
  EXPECT_EQ(run({"backup", "--all", file}).exitCode, 0);
}

// Another program is just making the tag file: it is there, and holds no table yet.
TEST(BackupCommand, TakesATagFileThatIsNotMadeYetForNone) {
  run({"add-person", "_local", "name=Ann Lee"});
  temporaryFile(support::StoreEnvironment::instance().tagStore().filename().string(), "");
  const auto file = temporaryPath("all.db").string();
  for (int i = 0; i < 2; ++i) {
    const auto result = run({"backup", "--all", file});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_FALSE(std::filesystem::exists(file + ".tags"));
  }
}

// What copies of such a file once became.
TEST(BackupCommand, ReplacesADatabaseWithoutATableByTheTags) {
  fillStore();
  const auto file = temporaryPath("all.db").string();
  sqlite::Connection(temporaryPath("empty.db"), sqlite::Connection::Mode::ReadWriteCreate)
      .execute(("VACUUM INTO '" + file + ".tags'").c_str());
  ASSERT_GT(std::filesystem::file_size(file + ".tags"), 0U);
  EXPECT_EQ(run({"backup", "--all", file}).exitCode, 0);
  EXPECT_EQ(run({"--store", file, "tag", "Ann Lee"}).exitCode, 0);
}

}  // namespace
}  // namespace ox::program_tests
