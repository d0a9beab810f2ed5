#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

#include "ox/base/sqlite/connection.hpp"
#include "ox/images/image_codec.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "tests/images/picture_files.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/oxcontacts/store_content.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using Command = std::vector<std::string>;

std::string textOf(const Command& command) {
  std::string text;
  for (const auto& word : command) text += word + " ";
  return text;
}

// Draws commands from a seed, about what the store holds at that moment.
class RandomCommands {
 public:
  explicit RandomCommands(std::uint64_t seed) : random_(seed) {
    run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
    const auto cards = card({"UID:u-1", "N:One;Ann;;;", "TEL:1", "TEL:2", "NOTE:first"}) +
                       card({"UID:u-2", "N:Two;Ben;;;", "EMAIL:ben@example.com"}) +
                       card({"UID:u-3", "N:Three;Cy;;;", "ADR:;;Street 1;Town;;1;Land"});
    file_ = support::temporaryFile("people.vcf", cards).string();
    run({"import", file_});
    more_ = support::temporaryFile("more.vcf", card({"UID:u-1", "N:One;Ann;;;", "TEL:9"}) +
                                                   card({"UID:u-4", "N:Four;Dee;;;"}))
                .string();
    book_ = support::temporaryPath("backup.book").string();
    run({"backup", "_local", book_});
    picture_ = support::temporaryFile("p.tiff", *images::encodeTiff(images::patterned(5, 4)));
  }

  Command next() {
    readRecords();
    const auto serial = std::to_string(++serial_);
    const std::array<Command, 18> commands = {{
        {"add-person", book(), "name=New " + serial, "phone=" + serial},
        {"set", person(), "phone+=+" + serial},
        {"set", person(), "note=note " + serial, "nickname=N" + serial},
        {"set", person(), "phone=", "note="},
        {"set", person(), "name=Renamed " + serial},
        {"remove-person", person()},
        {"add-group", "_local", "Group " + serial},
        {"add-group", "_local", "Under " + serial, "--under", group()},
        {"rename-group", group(), "Renamed " + serial},
        {"remove-group", group()},
        {"group-add", group(), localPerson(), localPerson()},
        {"group-remove", group(), localPerson()},
        {"tag", person(), "--add", "tag " + std::to_string(serial_ % 4)},
        {"tag", person(), "--remove", "tag " + std::to_string(serial_ % 4), "--add", "always"},
        {"photo", person(), "--set", picture_},
        {"photo", person(), "--clear"},
        {"copy", person(), "--to", book()},
        {"import", pick(std::vector<std::string>{file_, more_}), "--update"},
    }};
    const auto drawn = random_() % 20;
    if (drawn == 18) return {"restore", "_local", book_};
    if (drawn == 19) return {"accounts", "remove", "W", "--force"};
    return commands[drawn];
  }

  std::uint64_t draw(std::uint64_t below) { return random_() % below; }

 private:
  void readRecords() {
    persons_.clear();
    localPersons_.clear();
    groups_.clear();
    sqlite::Connection store(support::StoreEnvironment::instance().contactStore(),
                             sqlite::Connection::Mode::ReadWrite);
    auto rows = store.prepare(sqlOf(Sql::RecordsAfter));
    rows.bind(1, 0);
    while (rows.step()) {
      const auto record = entryOfRow(rows);
      auto& list = record.kind == RecordKind::Person ? persons_ : groups_;
      list.push_back(record.key.text());
      if (record.kind == RecordKind::Person && record.container == 1) {
        localPersons_.push_back(record.key.text());
      }
    }
  }

  std::string pick(const std::vector<std::string>& list) {
    return list.empty() ? "nobody" : list[random_() % list.size()];
  }
  std::string person() { return pick(persons_); }
  std::string localPerson() { return pick(localPersons_); }
  std::string group() { return pick(groups_); }
  std::string book() { return random_() % 2 == 0 ? "_local" : "W"; }

  std::mt19937_64 random_;
  int serial_ = 0;
  std::string file_;
  std::string more_;
  std::string book_;
  std::string picture_;
  std::vector<std::string> persons_;
  std::vector<std::string> localPersons_;
  std::vector<std::string> groups_;
};

std::int64_t lastNumber() {
  const auto log = runJson({"log", "--limit", "1"});
  return log.empty() ? 0 : log[0]["number"].get<std::int64_t>();
}

// How many seeds: a few in every run of the tests, as many as $OX_UNDO_SEEDS says in a long one.
int countOfSeeds() {
  const char* count = std::getenv("OX_UNDO_SEEDS");
  return count != nullptr ? std::atoi(count) : 12;
}

class UndoOfRandomCommands : public testing::TestWithParam<int> {};

TEST_P(UndoOfRandomCommands, GoesBackStepByStepAndForthAgain) {
  constexpr int kCommands = 12;
  RandomCommands commands(static_cast<std::uint64_t>(GetParam()));
  std::vector<std::string> states = {storeContent()};
  std::vector<std::string> done;
  auto last = lastNumber();
  for (int i = 0; i < kCommands; ++i) {
    const auto command = commands.next();
    run(command);
    if (const auto number = lastNumber(); number != last) {
      last = number;
      states.push_back(storeContent());
      done.push_back(textOf(command));
    }
  }
  const auto trace = [&] {
    std::string text;
    for (const auto& command : done) text += command + "\n";
    return text;
  };
  for (auto i = done.size(); i-- > 0;) {
    const auto undone = run({"undo"});
    ASSERT_EQ(undone.exitCode, 0) << undone.errors << done[i] << "\n" << trace();
    ASSERT_EQ(storeContent(), states[i]) << "undoing " << done[i] << "\n" << trace();
  }
  for (std::size_t i = 0; i < done.size(); ++i) {
    const auto redone = run({"redo"});
    ASSERT_EQ(redone.exitCode, 0) << redone.errors << done[i] << "\n" << trace();
    ASSERT_EQ(storeContent(), states[i + 1]) << "redoing " << done[i] << "\n" << trace();
  }
  EXPECT_EQ(run({"check"}).output, "sound\n");
}

// Somebody else keeps a person of her own and changes the note of one of the others in between; all
// that is left as it was written, whatever is undone.
TEST_P(UndoOfRandomCommands, LeavesWhatAnotherProgramWroteInBetween) {
  constexpr int kCommands = 10;
  RandomCommands commands(static_cast<std::uint64_t>(GetParam()));
  run({"add-person", "_local", "name=Zed"});
  const auto zed = personIds().at("Zed");
  std::vector<std::int64_t> mine;
  auto last = lastNumber();
  for (int i = 0; i < kCommands; ++i) {
    auto command = commands.next();
    const bool isAboutZed = std::ranges::find(command, zed) != command.end();
    if (isAboutZed || command[0] == "restore") continue;
    run(command);
    if (const auto number = lastNumber(); number != last) mine.push_back(number);
    run({"set", zed, "phone+=+" + std::to_string(i), "note=" + std::to_string(i)});
    last = lastNumber();
  }
  const auto before = runJson({"show", zed});
  while (!mine.empty()) {
    const auto at = mine.begin() + static_cast<std::ptrdiff_t>(commands.draw(mine.size()));
    const auto undone = run({"undo", std::to_string(*at)});
    EXPECT_TRUE(undone.exitCode == 0 || undone.exitCode == 3) << undone.errors;
    mine.erase(at);
    EXPECT_EQ(run({"check"}).output, "sound\n");
  }
  EXPECT_EQ(runJson({"show", zed}), before);
}

INSTANTIATE_TEST_SUITE_P(OfASeed, UndoOfRandomCommands, testing::Range(1, countOfSeeds() + 1));

}  // namespace
}  // namespace ox::program_tests
