// How fast is every value of every person read once, in a process whose caches are cold? As the
// host sees values, with and without pictures, and as the store's records give them. Beside it:
// SQLite alone reading the bytes that hold them.
#include <array>
#include <stdexcept>
#include <string_view>

#include "bench/child.hpp"
#include "bench/figures.hpp"
#include "bench/plain_sqlite.hpp"
#include "bench/stores.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

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

// In the child. The records are at hand before the clock starts, their values are not.
int measure(std::string_view way) {
  const auto persons = way == "plain" ? Persons() : ABAddressBook::sharedAddressBook()->people();
  std::size_t found = 0;
  const Stopwatch watch;
  if (way == "host") found = readHostValues(persons, true);
  if (way == "unpictured") found = readHostValues(persons, false);
  if (way == "records") found = readRecordValues(persons);
  if (way == "pinyin") found = transcribeNames(persons);
  if (way == "plain") found = plain::readProperties(contactStorePath());
  tellParent("seconds", watch.seconds());
  tellParent("found", static_cast<double>(found));
  return 0;
}

Way coldly(const std::string& name, const std::string& way) {
  return {name, [way](std::size_t count) -> Measured {
            const auto numbers = runChild(storeOf(count), {way});
            const auto each = numbers.at("found") / static_cast<double>(count);
            if (each < 1) throw std::runtime_error("nothing was read");
            return {numbers.at("seconds"), std::to_string(each).substr(0, 5) + " a person"};
          }};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  if (argc == 3 && std::string_view(argv[1]) == "--child") return measure(argv[2]);
  return runFigures(argc, argv, [] {
    addFigure("every value, cold",
              {coldly("host values", "host"), coldly("host values, no pictures", "unpictured"),
               coldly("record values", "records"), coldly("plain SQLite", "plain")});
    addFigure("every name in Latin, cold",
              {coldly("nameChineesPinyin", "pinyin"), coldly("plain SQLite", "plain")});
  });
}
