// How fast are vCards imported into an empty store, and again when all of them are there already?
// Beside it: SQLite alone writing the same rows, ready made; and finding each by its card's UID.
#include <map>

#include "bench/figures.hpp"
#include "bench/plain_sqlite.hpp"
#include "bench/stores.hpp"

namespace ox::bench {
namespace {

constexpr const char* kLocal = "_local:ABAccount";

// A store that holds the cards, and its rows.
struct Imported {
  std::string store;
  plain::Rows rows;
};

const Imported& imported(std::size_t count) {
  static auto& made = *new std::map<std::size_t, Imported>;
  auto& entry = made[count];
  if (entry.store.empty()) {
    entry.store = temporaryPath("imported-" + std::to_string(count) + ".db");
    importInto(entry.store, kLocal, cardFile(count), count);
    entry.rows = plain::readRows(entry.store);
  }
  return entry;
}

Measured importNew(std::size_t count) {
  const auto store = temporaryPath("new.db");
  removeStore(store);
  const auto& cards = cardFile(count);
  const Stopwatch watch;
  importInto(store, kLocal, cards, count);
  return {watch.seconds(), {}};
}

Measured importAgain(std::size_t count) {
  const auto& there = imported(count);
  const Stopwatch watch;
  importInto(there.store, kLocal, cardFile(count), 0);
  return {watch.seconds(), {}};
}

Measured writePlainly(std::size_t count) {
  const auto& rows = imported(count).rows;
  const auto path = temporaryPath("plain.db");
  removeStore(path);
  const Stopwatch watch;
  plain::writeRows(rows, path);
  return {watch.seconds(), {}};
}

Measured findPlainly(std::size_t count) {
  const auto& there = imported(count);
  const Stopwatch watch;
  keep(plain::findByCardUid(there.rows, there.store));
  return {watch.seconds(), {}};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  return runFigures(argc, argv, [] {
    addFigure("import, empty store", {{"importFiles", importNew}, {"plain SQLite", writePlainly}});
    addFigure("import, all there", {{"importFiles", importAgain}, {"plain SQLite", findPlainly}});
  });
}
