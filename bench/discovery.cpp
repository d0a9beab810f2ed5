// How fast are all books found and all their persons listed, in a process that has just begun, and
// how much memory does a person take? Beside it: SQLite alone reading the same rows into memory.
// Both open the store themselves.
#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "bench/child.hpp"
#include "bench/figures.hpp"
#include "bench/plain_sqlite.hpp"
#include "bench/stores.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/base/store_location.hpp"

namespace ox::bench {
namespace {

std::size_t discover() {
  std::size_t persons = 0;
  const auto books = OxMacAddressBook::addressBookArrayWithProgressBlock({});
  for (const auto& book : books) {
    if (const auto list = book->allPersons()) persons += list->size();
  }
  return persons;
}

// In the child.
int measure(std::string_view way) {
  const Stopwatch watch;
  const auto persons = way == "plain" ? plain::listRecords(contactStorePath()) : discover();
  tellSeconds(watch.seconds());
  tellParent("persons", static_cast<double>(persons));
  return 0;
}

Measured listCold(std::size_t count, const std::string& way) {
  static const auto empty = runChild(storeOf(0), {way}).at("memory");
  const auto numbers = runChild(storeOf(count), {way});
  if (numbers.at("persons") != static_cast<double>(count))
    throw std::runtime_error("not all listed");
  const auto memory = (numbers.at("memory") - empty) / static_cast<double>(count);
  return measuredBy(numbers, std::to_string(static_cast<int>(memory)) + " B/person");
}

Way coldly(const std::string& name, const std::string& way) {
  return {name, [way](std::size_t count) { return listCold(count, way); }};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  if (argc == 3 && std::string_view(argv[1]) == "--child") return measure(argv[2]);
  return runFigures(argc, argv, [] {
    addFigure("discovery, all persons",
              {coldly("books and persons", "books"), coldly("plain SQLite", "plain")});
  });
}
