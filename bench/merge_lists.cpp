// Does bringing two lists of entries together cost time by the entry, or by the pair? Beside it: a
// copy of both lists. Compare the column "an item" between the sizes.
#include "bench/figures.hpp"
#include "ox/records/entry_identity.hpp"
#include "ox/records/merge.hpp"

namespace ox::bench {
namespace {

// Every second entry says what all the others of these do.
MultiValue halfOfThemEqual(std::size_t count, std::uint64_t firstIdentifier) {
  MultiValue list;
  for (std::size_t i = 0; i < count; ++i) {
    list.entries.push_back(
        {firstIdentifier + i, "l", i % 2 == 0 ? std::string("x") : std::to_string(i)});
  }
  return list;
}

Measured merge(std::size_t count) {
  const auto base = halfOfThemEqual(count, 1);
  const auto mine = halfOfThemEqual(2 * count, 10 * count);
  const auto theirs = halfOfThemEqual(2 * count, 20 * count);
  std::vector<MultiEntry> overtaken;
  const Stopwatch watch;
  const auto merged = mergedEntries(base, mine, theirs, overtaken);
  const auto seconds = watch.seconds();
  keep(merged.entries.size());
  return {seconds, {}};
}

Measured identify(std::size_t count) {
  const auto before = halfOfThemEqual(count, 1);
  auto now = halfOfThemEqual(count, 10 * count);
  const Stopwatch watch;
  const auto given = withIdentifiersOf(before, std::move(now));
  const auto seconds = watch.seconds();
  keep(given.entries.size());
  return {seconds, {}};
}

Measured copyBoth(std::size_t count) {
  const auto mine = halfOfThemEqual(count, 1);
  const auto theirs = halfOfThemEqual(count, 10 * count);
  const Stopwatch watch;
  auto copies = std::vector<MultiValue>{mine, theirs};
  const auto seconds = watch.seconds();
  keep(copies.size());
  return {seconds, {}};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  return runFigures(argc, argv, [] {
    addFigure("lists rewritten on both sides",
              {{"mergedEntries", merge}, {"a copy of both", copyBoth}});
    addFigure("a list written anew",
              {{"withIdentifiersOf", identify}, {"a copy of both", copyBoth}});
  });
}
