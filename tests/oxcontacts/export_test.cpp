#include <filesystem>
#include <gtest/gtest.h>

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
  EXPECT_EQ(run({"export", "--format", "csv"}).exitCode, 2);
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

}  // namespace
}  // namespace ox::program_tests
