// How fast is every value of every person read once, in a process whose caches are cold? As the
// host sees values, with and without pictures, and as the store's records give them. Beside it:
// SQLite alone reading the rows that hold them, each decoded once, and the bytes of the pictures.
// How fast are name and phones of all persons read, for the first and for the second time; and one
// value of persons that are asked for by their IDs in any order? Beside it: SQLite alone listing
// the records, and reading the row of each ID.
#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string_view>

#include "bench/child.hpp"
#include "bench/figures.hpp"
#include "bench/plain_database.hpp"
#include "bench/plain_sqlite.hpp"
#include "bench/stores.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/records/property_codec.hpp"

namespace ox::bench {
namespace {

using Persons = std::vector<std::shared_ptr<ABPerson>>;

std::vector<OxPropertyPtr> properties(bool withPictures) {
  std::vector<OxPropertyPtr> list;
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    if (withPictures || property->name() != OxProPertyThumbnail) list.push_back(property);
  }
  return list;
}

std::size_t readHostValues(const Persons& persons, bool withPictures) {
  const auto list = properties(withPictures);
  std::size_t found = 0;
  for (const auto& person : persons) {
    const auto host = hostPerson(person);
    for (const auto& property : list) found += host->valueByProperty(property) != nullptr ? 1 : 0;
  }
  return found;
}

std::size_t readRecordValues(const Persons& persons) {
  const auto names = ABPerson::properties();
  std::size_t found = 0;
  for (const auto& person : persons) {
    for (const auto& name : names) found += isMissing(person->valueForProperty(name)) ? 0 : 1;
  }
  return found;
}

std::size_t transcribeNames(const Persons& persons) {
  std::size_t bytes = 0;
  for (const auto& person : persons) bytes += hostPerson(person)->nameChineesPinyin()->size();
  return bytes;
}

// In the calling thread: the rows in their order, each picture behind its row.
std::size_t decodeRows(bool withPictures) {
  plain::Database database(contactStorePath());
  plain::Query query(database, withPictures ? "SELECT c.properties, i.data FROM content c "
                                              "LEFT JOIN image i ON i.id = c.image"
                                            : "SELECT properties FROM content");
  std::size_t found = 0;
  while (query.step()) {
    found += decodeProperties(query.view(0)).entries().size();
    if (withPictures) found += query.view(1).empty() ? 0 : 1;
  }
  return found;
}

std::size_t readNamesAndPhones(const Persons& persons) {
  std::size_t found = 0;
  for (const auto& person : persons) {
    const auto host = hostPerson(person);
    found += host->displayName() ? 1 : 0;
    found += host->valueByPropertyName(OxProPertyPhone) != nullptr ? 1 : 0;
  }
  return found;
}

// In an order of chance, which is the same every time. All of them are ours.
std::vector<std::string> storedIdentifiers() {
  plain::Database database(contactStorePath());
  plain::Query query(database, "SELECT uid FROM record WHERE kind = 0");
  std::vector<std::string> identifiers;
  while (query.step()) identifiers.push_back(query.bytes(0));
  std::ranges::shuffle(identifiers, std::mt19937_64(1));
  return identifiers;
}

std::string textOf(const std::string& identifier) {
  std::array<std::uint8_t, 16> bytes{};
  std::memcpy(bytes.data(), identifier.data(), bytes.size());
  return RecordKey::fromBytes(bytes).text();
}

std::size_t readById(const std::vector<std::string>& identifiers) {
  std::size_t found = 0;
  for (const auto& identifier : identifiers) {
    const auto record = ABAddressBook::sharedAddressBook()->recordForUniqueId(identifier);
    found += isMissing(record->valueForProperty(kABFirstNameProperty)) ? 1 : 2;
  }
  return found;
}

std::size_t findRows(const std::vector<std::string>& identifiers) {
  plain::Database database(contactStorePath());
  plain::Query query(database,
                     "SELECT c.properties FROM record r JOIN content c ON c.record = r.id "
                     "WHERE r.uid = ?1");
  std::size_t found = 0;
  for (const auto& identifier : identifiers) {
    query.bindBlob(1, identifier);
    if (query.step()) found += query.size(0) > 0 ? 1 : 0;
    query.reset();
  }
  return found;
}

// In the child.
int measureById(bool plainly) {
  auto identifiers = storedIdentifiers();
  if (!plainly) std::ranges::transform(identifiers, identifiers.begin(), textOf);
  const Stopwatch watch;
  const auto found = plainly ? findRows(identifiers) : readById(identifiers);
  tellSeconds(watch.seconds());
  tellParent("found", static_cast<double>(found));
  return 0;
}

// In the child. The records are at hand before the clock starts, their values are not.
int measure(std::string_view way) {
  if (way.ends_with("by ID")) return measureById(way.starts_with("plain"));
  const auto persons =
      way.starts_with("plain") ? Persons() : ABAddressBook::sharedAddressBook()->people();
  std::size_t found = way == "names again" ? readNamesAndPhones(persons) : 0;
  const Stopwatch watch;
  if (way.starts_with("names")) found = readNamesAndPhones(persons);
  if (way == "plain records") found = plain::listRecords(contactStorePath());
  if (way == "host") found = readHostValues(persons, true);
  if (way == "unpictured") found = readHostValues(persons, false);
  if (way == "records") found = readRecordValues(persons);
  if (way == "pinyin") found = transcribeNames(persons);
  if (way == "plain rows") found = decodeRows(true);
  if (way == "plain unpictured") found = decodeRows(false);
  if (way == "plain") found = plain::readProperties(contactStorePath());
  tellSeconds(watch.seconds());
  tellParent("found", static_cast<double>(found));
  return 0;
}

Way coldly(const std::string& name, const std::string& way) {
  return {name, [way](std::size_t count) -> Measured {
            const auto numbers = runChild(storeOf(count), {way});
            const auto each = numbers.at("found") / static_cast<double>(count);
            if (each < 1) throw std::runtime_error("nothing was read");
            return measuredBy(numbers, std::to_string(each).substr(0, 5) + " a person");
          }};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  if (argc == 3 && std::string_view(argv[1]) == "--child") return measure(argv[2]);
  return runFigures(argc, argv, [] {
    addFigure("every value, cold",
              {coldly("host values", "host"), coldly("rows decoded", "plain rows")});
    addFigure("every value, cold, no pictures",
              {coldly("host values", "unpictured"), coldly("record values", "records"),
               coldly("rows decoded", "plain unpictured")});
    addFigure("name and phones of all",
              {coldly("host values, cold", "names"), coldly("host values, again", "names again"),
               coldly("records listed", "plain records")});
    addFigure("get by ID, cold", {coldly("recordForUniqueId, a value", "by ID"),
                                  coldly("plain SQLite", "plain by ID")});
    addFigure("every name in Latin, cold",
              {coldly("nameChineesPinyin", "pinyin"), coldly("plain SQLite", "plain")});
  });
}
