// One program lists while another one makes and takes back an act that touches everything: whatever
// is listed is the state before or the state after.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>

#include "ox/base/base64.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/images/picture_files.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using Words = std::vector<std::string>;
using support::temporaryFile;
using support::temporaryPath;

constexpr int kPersons = 40;

// Persons of that first name, the first of them in a group.
std::string cardsOf(const std::string& name) {
  const auto photo = "PHOTO;ENCODING=b;TYPE=JPEG:" + base64(images::flatJpeg(8, 8, {90, 10, 10}));
  std::string cards;
  std::vector<std::string> group = {"FN:" + name + " choir", "N:" + name + " choir",
                                    "UID:" + name + "-choir", "X-ADDRESSBOOKSERVER-KIND:group"};
  for (int i = 0; i < kPersons; ++i) {
    const auto number = std::to_string(i);
    const auto uid = name + "-" + number;
    cards += card({"N:" + number + ";" + name + ";;;", "UID:" + uid, "TEL;TYPE=HOME:" + number,
                   "EMAIL:" + uid + "@example.com", photo});
    if (i < 5) group.push_back("X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:" + uid);
  }
  return cards + card(group);
}

void mustRun(const Words& arguments) {
  const auto result = run(arguments);
  ASSERT_EQ(result.exitCode, 0) << arguments[0] << ": " << result.errors;
}

// The book _local holds persons named Old, with tags and a group; what was restored over it last,
// and can be taken back, are persons named New.
void prepareBooks() {
  mustRun({"import", temporaryFile("new.vcf", cardsOf("New")).string()});
  mustRun({"tag", "New 0", "--add", "new"});
  mustRun({"backup", "_local", temporaryPath("new.book").string()});
  mustRun({"import", temporaryFile("old.vcf", cardsOf("Old")).string()});
  for (int i = 0; i < kPersons; ++i) mustRun({"remove-person", "New " + std::to_string(i)});
  mustRun({"remove-group", "New choir"});
  mustRun({"tag", "Old 3", "--add", "old"});
  mustRun({"remove-person", "Old 9"});
  mustRun({"restore", "_local", temporaryPath("new.book").string()});
}

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// What a listing gives, with how it ended.
std::string listed(const Words& arguments) {
  const auto result = run(arguments);
  return std::to_string(result.exitCode) + " " + result.errors + result.output;
}

std::string backedUp() {
  const auto path = temporaryPath("now.book");
  const auto result = run({"--quiet", "backup", "_local", path.string()});
  return std::to_string(result.exitCode) + " " + result.errors + contentOf(path);
}

// What a copy of the whole store holds.
std::string copied() {
  const auto path = temporaryPath("copy.db").string();
  const auto result = run({"--quiet", "backup", "--all", path});
  if (result.exitCode != 0) return result.errors;
  return listed({"--store", path, "--json", "persons"});
}

using Listing = std::function<std::string()>;

std::map<std::string, Listing> listings() {
  const auto listing = [](Words arguments) -> Listing {
    return [arguments = std::move(arguments)] { return listed(arguments); };
  };
  return {{"persons", listing({"--json", "persons"})},
          {"table of persons", listing({"persons"})},
          {"persons with a tag", listing({"persons", "--tag", "old"})},
          {"members", listing({"persons", "--group", "Old choir"})},
          {"found persons", listing({"persons", "--find", "example.com"})},
          {"groups", listing({"--json", "groups"})},
          {"books", listing({"--json", "books"})},
          {"one person", listing({"--json", "show", "New 1"})},
          {"named persons", listing({"export", "New 1", "New 2"})},
          {"export", listing({"export"})},
          {"host export", listing({"export", "--format", "host-vcard"})},
          {"backup", [] { return backedUp(); }},
          {"copy", [] { return copied(); }}};
}

TEST(Listings, ShowOneMomentWhileAnotherProgramUndoesAndRedoes) {
  prepareBooks();
  const auto all = listings();
  std::map<std::string, std::string> after;
  for (const auto& [name, list] : all) after[name] = list();
  mustRun({"undo"});
  std::map<std::string, std::string> before;
  for (const auto& [name, list] : all) before[name] = list();
  support::RunningProcess other(
      {"/bin/sh", "-c", R"(while ! [ -e "$STOP" ]; do "$OX" redo; "$OX" undo; done)"}, "",
      {std::string("OX=") + OX_PROGRAM, "STOP=" + temporaryPath("stop").string()});
  for (const auto& [name, list] : all) {
    EXPECT_NE(before[name], after[name]) << name;
    constexpr int kTimes = 15;
    int mixed = 0;
    std::string example;
    for (int i = 0; i < kTimes; ++i) {
      const auto now = list();
      if (now == before[name] || now == after[name]) continue;
      ++mixed;
      example = now;
    }
    EXPECT_EQ(mixed, 0) << name << ": " << example.substr(0, 600);
  }
  temporaryFile("stop", "");
  EXPECT_EQ(other.wait().exitCode, 0);
}

}  // namespace
}  // namespace ox::program_tests
