#include <gtest/gtest.h>

#include "oxcontacts/edit/apply_assignments.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

// What an edit does not name stays, also where no property of the model shows it.

namespace ox::program_tests {
namespace {

using support::temporaryFile;

void importAnn(std::vector<std::string> lines) {
  lines.insert(lines.begin(), {"UID:a1", "N:;Ann;;;", "FN:Ann"});
  ASSERT_EQ(run({"import", temporaryFile("ann.vcf", card(lines))}).exitCode, 0);
}

// The exported lines that hold the word, without their groups.
std::string linesWith(const std::string& word) {
  std::string found;
  const auto cards = run({"export"}).output;
  for (std::size_t start = 0, end; (end = cards.find("\r\n", start)) != std::string::npos;
       start = end + 2) {
    auto line = cards.substr(start, end - start);
    if (line.starts_with("item")) line.erase(0, line.find('.') + 1);
    if (line.starts_with(word)) found += line + "\n";
  }
  return found;
}

TEST(Edit, OfOneEntryKeepsWhatTheOthersBring) {
  importAnn({"TEL;X-A=1:1", "TEL;TYPE=WORK;X-A=2:2", "TEL;TYPE=HOME;X-A=3:3"});
  struct Row {
    const char* assignment;
    const char* lines;
  };
  const std::vector<Row> rows = {
      {"phone+=4", "TEL;X-A=1:1\nTEL;TYPE=WORK;X-A=2:2\nTEL;TYPE=HOME;X-A=3:3\nTEL:4\n"},
      {"phone:work=22", "TEL;X-A=1:1\nTEL;TYPE=WORK:22\nTEL;TYPE=HOME;X-A=3:3\nTEL:4\n"},
      {"phone:home=3", "TEL;X-A=1:1\nTEL;TYPE=WORK:22\nTEL;TYPE=HOME;X-A=3:3\nTEL:4\n"},
      {"phone:work=", "TEL;X-A=1:1\nTEL;TYPE=HOME;X-A=3:3\nTEL:4\n"},
      {"note=x", "TEL;X-A=1:1\nTEL;TYPE=HOME;X-A=3:3\nTEL:4\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(run({"set", "Ann", row.assignment}).exitCode, 0) << row.assignment;
    EXPECT_EQ(linesWith("TEL"), row.lines) << row.assignment;
  }
}

TEST(Edit, OfOnePartOfAnAddressKeepsTheRestOfIt) {
  importAnn({"ADR;TYPE=HOME;X-A=1:PO 7;Flat 2;Main St 1;Paris;;75001;",
             "ADR;TYPE=WORK;X-A=2:;;Side St 2;Lyon;;;"});
  EXPECT_EQ(run({"set", "Ann", "address.zip:home=75002"}).exitCode, 0);
  EXPECT_EQ(linesWith("ADR"),
            "ADR;TYPE=HOME;X-A=1:PO 7;Flat 2;Main St 1;Paris;;75002;\n"
            "ADR;TYPE=WORK;X-A=2:;;Side St 2;Lyon;;;\n");
  EXPECT_EQ(linesWith("X-ABADR"), "");
  EXPECT_EQ(run({"set", "Ann", "address.city+=Oslo"}).exitCode, 0);
  EXPECT_EQ(linesWith("ADR;;;;") + linesWith("ADR:"), "ADR:;;;Oslo;;;\n");
  EXPECT_EQ(linesWith("X-ABADR"), "");
  EXPECT_EQ(run({"set", "Ann", "address.street:home=New St"}).exitCode, 0);
  EXPECT_EQ(linesWith("ADR;TYPE=HOME"), "ADR;TYPE=HOME;X-A=1:;;New St;Paris;;75002;\n");
}

TEST(Edit, MeansALabelAsItStandsBeforeTheWordThatItResembles) {
  importAnn({"item1.URL:one", "item1.X-ABLabel:homepage", "item2.URL:two",
             "item2.X-ABLabel:_$!<HomePage>!$_"});
  struct Row {
    const char* assignment;
    const char* lines;
  };
  const std::vector<Row> rows = {
      {"urls:homepage=three", "URL:three\nURL:two\n"},
      {"urls:Homepage=", "URL:two\n"},
      {"urls:homepage=four", "URL:four\n"},
      {"urls:home page=", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(run({"set", "Ann", row.assignment}).exitCode, 0) << row.assignment;
    EXPECT_EQ(linesWith("URL"), row.lines) << row.assignment;
  }
}

TEST(Edit, KeepsAnAddressThatHoldsMoreThanItsParts) {
  const auto addresses = support::multiValue(
      {{.label = std::string(kABHomeLabel), .value = Dictionary{{"City", "Oslo"}, {"X", "y"}}},
       {.label = std::string(kABWorkLabel),
        .value = Dictionary{{"City", "Oslo"}, {"CountryCode", "no"}}}});
  support::StoreBuilder().person("ann", {.more = {{property_id::kAddress, addresses}}});
  const auto ann = test::person("ann");
  program::applyAssignments(program::parseAssignments({"address.city:home=", "address.city:work="}),
                            *ann);
  const auto stored = ann->valueForProperty(kABAddressProperty);
  const auto& entries = std::get<MultiValuePtr>(stored)->entries;
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].value, Object(Dictionary{{"X", "y"}}));
}

TEST(Edit, TakesEveryPropertyOnAFreshStore) {
  importAnn({});
  EXPECT_EQ(run({"set", "Ann", "other=x", "note=y"}).exitCode, 0);
  EXPECT_EQ(run({"set", "Ann", "other+=z"}).exitCode, 0);
  const auto shown = run({"show", "Ann"}).output;
  EXPECT_NE(shown.find("x\n"), std::string::npos) << shown;
  EXPECT_NE(shown.find("z\n"), std::string::npos) << shown;
}

}  // namespace
}  // namespace ox::program_tests
