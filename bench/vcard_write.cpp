// How fast are stored persons written as vCards that nobody takes? Beside it: the same bytes
// copied, ready made; and SQLite alone reading what the cards are made of.
#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "bench/figures.hpp"
#include "bench/plain_edits.hpp"
#include "bench/stores.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/transfer/exporter.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::bench {
namespace {

// The persons of a store that was just opened; their values are not at hand yet.
RecordKeys personsOf(std::size_t size) {
  const auto& store = localStoreOf(size);
  installContactSource(openStoreSource(store));
  return contactSource().records(RecordKind::Person);
}

Measured writeCards(std::size_t size, vcard::CardVersion version) {
  const auto persons = personsOf(size);
  std::size_t bytes = 0;
  const Stopwatch watch;
  const auto report = vcard::exportCards(persons, {}, version, [&](std::string_view card) {
    bytes += card.size();
    return true;
  });
  const auto seconds = watch.seconds();
  if (report.persons != size) throw std::runtime_error("not all written");
  return {seconds,
          std::to_string(static_cast<int>(static_cast<double>(bytes) / seconds / 1e6)) + " MB/s"};
}

Measured readPlainly(std::size_t size) {
  return {plain::readContent(localStoreOf(size)), {}};
}

Measured copyCards(std::size_t size) {
  std::vector<std::string> cards;
  vcard::exportCards(personsOf(size), {}, vcard::CardVersion::V30, [&](std::string_view card) {
    cards.emplace_back(card);
    return true;
  });
  std::vector<char> buffer(1 << 20);
  std::size_t sum = 0;
  const Stopwatch watch;
  for (const auto& card : cards) {
    std::memcpy(buffer.data(), card.data(), std::min(card.size(), buffer.size()));
    sum += static_cast<unsigned char>(buffer[card.size() / 2 % buffer.size()]);
  }
  keep(sum);
  return {watch.seconds(), {}};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox;
  using namespace ox::bench;
  return runFigures(argc, argv, [] {
    addFigure("write vCards",
              {{"exportCards, 3.0",
                [](std::size_t size) { return writeCards(size, vcard::CardVersion::V30); }},
               {"exportCards, 4.0",
                [](std::size_t size) { return writeCards(size, vcard::CardVersion::V40); }},
               {"memcpy", copyCards},
               {"plain SQLite, reading", readPlainly}});
  });
}
