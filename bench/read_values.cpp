// How fast is every value of every person read once, in a process whose caches are cold? As the
// host sees values, with and without pictures, and as the store's records give them. Beside it:
// SQLite alone reading the rows that hold them, each decoded once, and the bytes of the pictures.
#include <array>
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

// In the child. The records are at hand before the clock starts, their values are not.
int measure(std::string_view way) {
  const auto persons =
      way.starts_with("plain") ? Persons() : ABAddressBook::sharedAddressBook()->people();
  std::size_t found = 0;
  const Stopwatch watch;
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
    addFigure("every name in Latin, cold",
              {coldly("nameChineesPinyin", "pinyin"), coldly("plain SQLite", "plain")});
  });
}
