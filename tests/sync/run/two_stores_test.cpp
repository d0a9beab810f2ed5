// Two stores and one book: random edits on both machines, and in the book by a third client, until
// everybody is quiet.

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/store_source.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

// What everybody edited, as words that are to be found in the end in a value, or in a conflict.
using Words = std::set<std::string>;

class Machine {
 public:
  Machine(BookElsewhere& elsewhere, const std::string& name)
      : source_(openStoreSource(StoreAddress(support::temporaryPath(name + ".db").string()))) {
    installContactSource(source_);
    book_ = std::make_unique<SyncedBook>(elsewhere, name);
  }

  // The store of the process is this machine's until another one's is used.
  SyncedBook& use() {
    installContactSource(source_);
    return *book_;
  }

 private:
  std::shared_ptr<ContactSource> source_;
  std::unique_ptr<SyncedBook> book_;
};

class RandomEdits {
 public:
  explicit RandomEdits(unsigned seed) : random_(seed) {}

  void run() {
    for (int i = 0; i < 4; ++i) {
      elsewhere.put(name("c", i) + ".vcf", cardText(name("c", i), name("c", i), "Start"));
    }
    if (chance(4)) elsewhere.givesTokens = false;
    if (chance(4)) elsewhere.givesEtagsOnPut = false;
    if (chance(3)) elsewhere.rewrite = &respelt;
    for (int step = 0; step < 24; ++step) {
      auto& book = (chance(2) ? one : two).use();
      switch (below(9)) {
        case 0:
        case 1:
          sync(book);
          break;
        case 2:
          breakOff(book);
          break;
        case 3:
          add(book);
          break;
        case 4:
          editThere();
          break;
        case 5:
          if (chance(3)) remove(book);
          break;
        default:
          edit(book);
          break;
      }
    }
    settle();
  }

  BookElsewhere elsewhere;
  Machine one{elsewhere, "one"};
  Machine two{elsewhere, "two"};
  Words written;                  // phones: each an entry of its own
  std::set<std::string> removed;  // persons, by first name

 private:
  // Keeps everything, in another order and other words.
  static std::string respelt(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
      const auto end = text.find("\r\n", at);
      lines.push_back(text.substr(at, end - at));
      at = end + 2;
    }
    std::sort(lines.begin() + 2, lines.end() - 1);
    std::string result;
    for (auto& line : lines) {
      if (const auto type = line.find(";TYPE=CELL"); type != std::string::npos) {
        line.replace(type, 10, ";type=cell");
      }
      result += line + "\r\n";
    }
    return result;
  }

  static std::string name(const std::string& start, int number) {
    return start + std::to_string(number);
  }
  std::size_t below(std::size_t end) { return random_() % end; }
  bool chance(std::size_t of) { return below(of) == 0; }

  static sync::SyncOptions agreed() {
    sync::SyncOptions options;
    options.allowsDeletions = true;
    options.confirm = [](const sync::BookReport&) { return true; };
    return options;
  }

  void sync(SyncedBook& book) {
    const auto report = book.run(agreed());
    EXPECT_EQ(report.state, sync::BookReport::State::InStep) << report.failure;
    EXPECT_TRUE(report.refused.empty());
  }

  void breakOff(SyncedBook& book) {
    elsewhere.requests = 0;
    (chance(2) ? elsewhere.breaksAfter : elsewhere.breaksBefore) = below(6);
    book.run(agreed());
    elsewhere.breaksAfter.reset();
    elsewhere.breaksBefore.reset();
  }

  void add(SyncedBook& book) {
    const auto word = name("n", ++count_);
    const auto phone = name("9", ++count_);
    book.addPerson(word, "New", {phone});
    written.insert(phone);
  }

  void edit(SyncedBook& book) {
    const auto persons = book.persons();
    if (persons.empty()) return;
    const auto& person = persons[below(persons.size())];
    if (chance(2)) {
      const auto phone = name("8", ++count_);
      book.addPhone(person, phone);
      written.insert(phone);
    } else {
      const auto note = name("note", ++count_);
      book.set(person, property_id::kNote, note);
      lastNotes_.insert(note);
    }
  }

  void editThere() {
    if (elsewhere.cards().empty()) return;
    auto card = elsewhere.cards().begin();
    std::advance(card, static_cast<std::ptrdiff_t>(below(elsewhere.cards().size())));
    auto text = card->second.text;
    const auto phone = name("7", ++count_);
    text.insert(text.find("END:VCARD"), "TEL;TYPE=CELL:" + phone + "\r\n");
    written.insert(phone);
    elsewhere.put(card->first, text);
  }

  void remove(SyncedBook& book) {
    const auto persons = book.persons();
    if (persons.size() < 2) return;
    const auto& person = persons[below(persons.size())];
    // What was said of a person who is deleted goes with her, unless somebody edits her meanwhile.
    for (const auto& phone : book.phones(person)) written.erase(phone);
    book.remove(person);
  }

  void settle() {
    for (int round = 0; round < 6; ++round) {
      sync(one.use());
      sync(two.use());
    }
    elsewhere.log.clear();
    sync(one.use());
    sync(two.use());
    EXPECT_EQ(elsewhere.log, (std::vector<std::string>{"LIST", "LIST"}));
  }

  std::mt19937 random_;
  int count_ = 0;
  Words lastNotes_;
};

std::vector<std::string> sorted(std::vector<std::string> lines) {
  std::ranges::sort(lines);
  return lines;
}

// Phones in any order.
std::vector<std::string> contentOf(const SyncedBook& book) {
  std::vector<std::string> lines;
  for (const auto& person : book.persons()) {
    auto phones = book.phones(person);
    std::ranges::sort(phones);
    auto line = book.text(person, property_id::kFirst) + " " +
                book.text(person, property_id::kLast) + " " +
                book.text(person, property_id::kNote) + ":";
    for (const auto& phone : phones) line += " " + phone;
    lines.push_back(std::move(line));
  }
  return sorted(std::move(lines));
}

unsigned seedsAsked() {
  const auto* text = std::getenv("OX_SYNC_SEEDS");
  return text != nullptr ? static_cast<unsigned>(std::atoi(text)) : 25;
}

class TwoStores : public testing::TestWithParam<unsigned> {};

TEST_P(TwoStores, EndAlikeAndLoseNoEdit) {
  // A process has one pair of stores: each seed is a case, and each case runs some.
  for (unsigned i = 0; i < seedsAsked() / 5; ++i) {
    const auto seed = GetParam() * 100'000 + i;
    SCOPED_TRACE("seed " + std::to_string(seed));
    for (const auto* name : {"one", "two"}) {
      for (const auto* ending : {".db", ".db-wal", ".db-shm", ".db-synced"}) {
        std::filesystem::remove(support::temporaryPath(std::string(name) + ending));
      }
    }
    RandomEdits edits(seed);
    ASSERT_NO_THROW(edits.run());
    const auto one = contentOf(edits.one.use());
    const auto two = contentOf(edits.two.use());
    EXPECT_EQ(one, two);
    EXPECT_EQ(one.size(), edits.elsewhere.cards().size());
    std::string all;
    for (const auto& line : one) all += line + " ";
    for (const auto& word : edits.written) {
      EXPECT_NE(all.find(" " + word + " "), std::string::npos) << word << " is lost";
    }
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(OfRandomEdits, TwoStores, testing::Range(0U, 5U));

}  // namespace
}  // namespace ox::test
