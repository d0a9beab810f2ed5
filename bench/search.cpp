// How fast are persons found by what is typed? Beside it: a prepared query of SQLite's full-text
// index (FTS5) for the same words over the same texts. And what following a change costs.
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/child.hpp"
#include "bench/figures.hpp"
#include "bench/stores.hpp"
#include "ox/base/store_location.hpp"
#include "ox/base/text/case.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox::bench {
namespace {

constexpr std::size_t kSearches = 200;

// Both parts of the names of persons all over the store.
std::vector<std::string> typedNames() {
  const auto people = ABAddressBook::sharedAddressBook()->people();
  std::vector<std::string> names;
  for (std::size_t i = 0; names.size() < kSearches; ++i) {
    const auto& person = people.at(i * 7919 % people.size());
    const auto textOf = [&](std::string_view property) {
      const auto value = person->valueForProperty(property);
      const auto* object = std::get_if<Object>(&value);
      return object == nullptr ? std::string() : object->toText().value_or("");
    };
    names.push_back(textOf(kABLastNameProperty) + " " + textOf(kABFirstNameProperty));
  }
  return names;
}

// Made of the texts of the index, which it stands beside, when first asked for.
class FullText {
 public:
  FullText() {
    const auto path = contactStorePath() + ".find";
    check(sqlite3_open(":memory:", &database_));
    run("ATTACH '" + path + "' AS index_of_store");
    run("CREATE VIRTUAL TABLE words USING fts5(text, content='', detail='none', prefix='2 3')");
    run("INSERT INTO words(rowid, text) SELECT record, CAST(text AS TEXT) FROM "
        "index_of_store.person");
    check(sqlite3_prepare_v2(database_, "SELECT rowid FROM words WHERE words MATCH ?1", -1, &query_,
                             nullptr));
  }
  FullText(const FullText&) = delete;
  FullText& operator=(const FullText&) = delete;
  ~FullText() {
    sqlite3_finalize(query_);
    sqlite3_close(database_);
  }

  std::size_t find(const std::string& words) {
    sqlite3_bind_text(query_, 1, words.data(), static_cast<int>(words.size()), SQLITE_STATIC);
    std::size_t found = 0;
    while (sqlite3_step(query_) == SQLITE_ROW) ++found;
    sqlite3_reset(query_);
    return found;
  }

 private:
  void run(const std::string& sql) {
    check(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr));
  }
  void check(int result) {
    if (result != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(database_));
  }

  sqlite3* database_ = nullptr;
  sqlite3_stmt* query_ = nullptr;
};

// In the child.
int measure(std::string_view way) {
  const auto book = ABAddressBook::sharedAddressBook();
  if (way == "make") {
    const Stopwatch watch;
    book->peopleMatching("nobody");
    tellSeconds(watch.seconds());
    return 0;
  }
  if (way == "make full text") {
    book->peopleMatching("nobody");
    const Stopwatch watch;
    const FullText index;
    tellSeconds(watch.seconds());
    return 0;
  }
  auto names = typedNames();
  book->peopleMatching(names.front());
  std::size_t found = 0;
  double seconds = 0;
  if (way == "ours") {
    const Stopwatch watch;
    for (const auto& name : names) found += book->peopleMatching(name).size();
    seconds = watch.seconds();
  } else {
    FullText index;
    for (auto& name : names) {
      auto folded = foldedForSearch(name);
      name = "\"" + folded.replace(folded.find(' '), 1, "\" \"") + "\"";
    }
    const Stopwatch watch;
    for (const auto& name : names) found += index.find(name);
    seconds = watch.seconds();
  }
  if (found == 0) throw std::runtime_error("nobody was found");
  tellSeconds(seconds);
  tellParent("found", static_cast<double>(found));
  return 0;
}

Measured inChild(const std::string& store, const std::string& way) {
  const auto numbers = runChild(store, {way});
  std::string note;
  if (numbers.contains("found")) {
    note = std::to_string(numbers.at("found") / kSearches).substr(0, 5) + " a search";
  }
  return measuredBy(numbers, note);
}

void addFigures() {
  addFigure("make the search index",
            {{"peopleMatching, the first",
              [](std::size_t size) { return inChild(copyOf(localStoreOf(size)), "make"); }},
             {"the texts into FTS5",
              [](std::size_t size) { return inChild(localStoreOf(size), "make full text"); }}});
  for (const auto size : sizes()) {
    const auto searching = [size](const std::string& name, const std::string& way) -> Way {
      return {name, [=](std::size_t) { return inChild(localStoreOf(size), way); }};
    };
    addFigure("find by name; of " + std::to_string(size),
              {searching("peopleMatching", "ours"), searching("FTS5, prepared", "full text")},
              {kSearches});
  }
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  if (argc == 3 && std::string_view(argv[1]) == "--child") return measure(argv[2]);
  return runFigures(argc, argv, addFigures);
}
