// How fast are vCards imported into an empty store, and again when all of them are there already?
// Beside it: SQLite alone writing the same rows, ready made; and finding each by its card's UID.
#include <cstdio>
#include <map>

#include "bench/figures.hpp"
#include "bench/machine.hpp"
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

// Does the work and tells what it took of the processor and of the disk.
template <typename Job>
Measured measure(Job job) {
  const auto before = usedSoFar();
  const Stopwatch watch;
  job();
  const auto seconds = watch.seconds();
  const auto after = usedSoFar();
  char note[80];
  std::snprintf(note, sizeof note, "%.0f ms processor, %.0f MB written",
                (after.processor - before.processor) * 1e3, (after.written - before.written) / 1e6);
  return {seconds, note};
}

Measured importNew(std::size_t count) {
  const auto store = temporaryPath("new.db");
  removeStore(store);
  const auto& cards = cardFile(count);
  return measure([&] { importInto(store, kLocal, cards, count); });
}

Measured importAgain(std::size_t count) {
  const auto& there = imported(count);
  const auto& cards = cardFile(count);
  return measure([&] { importInto(there.store, kLocal, cards, 0); });
}

Measured writePlainly(std::size_t count) {
  const auto& rows = imported(count).rows;
  const auto path = temporaryPath("plain.db");
  removeStore(path);
  return measure([&] { plain::writeRows(rows, path); });
}

Measured findPlainly(std::size_t count) {
  const auto& there = imported(count);
  return measure([&] { keep(plain::findByCardUid(there.rows, there.store)); });
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
