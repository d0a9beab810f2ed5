// What an import asks of the store grows as its files do, whatever they hold.
#include "tests/support/growth.hpp"

#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "ox/transfer/importer.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::vcard {
namespace {

using Lines = std::vector<std::string>;

std::string card(const Lines& lines) {
  std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
  for (const auto& line : lines) text += line + "\r\n";
  return text + "END:VCARD\r\n";
}

std::string group(const std::string& name, const Lines& more) {
  Lines lines = {"N:" + name, "FN:" + name, "X-ADDRESSBOOKSERVER-KIND:group"};
  lines.insert(lines.end(), more.begin(), more.end());
  return card(lines);
}

const std::string kMember = "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:";

// Every size has names of its own, for all go into one store.
using Cards = std::function<std::string(std::size_t count, const std::string& own)>;

std::string groupsAlike(std::size_t count, const std::string& own) {
  std::string cards = card({"UID:all" + own, "N:;All;;;", "FN:All"});
  for (std::size_t i = 0; i < count; ++i) {
    const auto uid = "p" + own + std::to_string(i);
    cards += card({"UID:" + uid, "N:;P;;;", "FN:P"});
    cards += group("alike" + own, {kMember + "all" + own, kMember + uid});
  }
  return cards;
}

std::string nestedGroups(std::size_t count, const std::string& own) {
  std::string cards;
  for (std::size_t i = 0; i < count; ++i) {
    const auto uid = [&](std::size_t number) { return "n" + own + std::to_string(number); };
    cards += group("nested", {"UID:" + uid(i), kMember + uid(i + 1)});
  }
  return cards;
}

std::string cardsOfOneUid(std::size_t count, const std::string& own) {
  std::string cards;
  for (std::size_t i = 0; i < count; ++i) {
    cards += card({"UID:u" + own, "N:;" + std::to_string(i) + ";;;", "FN:x"});
  }
  return cards;
}

std::string groupOfMany(std::size_t count, const std::string& own) {
  std::string cards;
  Lines members = {"UID:g" + own};
  for (std::size_t i = 0; i < count; ++i) {
    const auto uid = "m" + own + std::to_string(i);
    cards += card({"UID:" + uid, "N:;M;;;", "FN:M"});
    members.push_back(kMember + uid);
  }
  return cards + group("many", members);
}

struct Row {
  const char* name;
  Cards cards;
};

TEST(ImportGrowth, TakesStepsByTheCardTheFirstTimeAndAgain) {
  support::statementsRun();
  const std::vector<Row> rows = {{"groups alike", groupsAlike},
                                 {"nested groups", nestedGroups},
                                 {"cards of one UID", cardsOfOneUid},
                                 {"a group of many", groupOfMany}};
  ImportOptions options;
  options.update = true;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    for (const auto* time : {"first", "again"}) {
      SCOPED_TRACE(time);
      support::expectLinearGrowth(100, [&](std::size_t count) {
        const auto own = "-" + std::to_string(count) + "-";
        const auto file = support::temporaryFile("cards.vcf", row.cards(count, own));
        const auto before = support::stepsTaken();
        importFiles({file}, "_local", options);
        return support::stepsTaken() - before;
      });
    }
  }
}

}  // namespace
}  // namespace ox::vcard
