// What does reading a property of a person cost when it was read just before? Beside it: SQLite
// alone reading that person's row again.
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "bench/figures.hpp"
#include "bench/plain_sqlite.hpp"
#include "bench/stores.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox::bench {
namespace {

constexpr const char* kCard =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Vos;Marijke;;;\r\nFN:Marijke Vos\r\nORG:Hazelaar B.V.;\r\n"
    "TEL;TYPE=CELL,pref:+31 6 1234567\r\nTEL;TYPE=HOME,VOICE:+31 20 7654321\r\n"
    "TEL;TYPE=WORK,FAX:+31 20 1112223\r\nEMAIL;TYPE=INTERNET,WORK:marijke@example.nl\r\n"
    "END:VCARD\r\n";

const std::string& store() {
  static const auto path = [] {
    const auto cards = temporaryPath("one.vcf");
    std::ofstream(cards, std::ios::binary) << kCard;
    auto made = temporaryPath("one.db");
    importInto(made, "_local:ABAccount", cards, 1);
    return made;
  }();
  return path;
}

const _ABPerson& person() {
  static const auto only = [] {
    store();
    return hostPerson(ABAddressBook::sharedAddressBook()->people().at(0));
  }();
  return *only;
}

template <typename Read>
Measured readAgain(std::size_t times, Read read) {
  const auto& one = person();
  if (!read(one)) throw std::runtime_error("there is no value");
  const Stopwatch watch;
  for (std::size_t i = 0; i < times; ++i) keep(read(one) ? 1 : 0);
  return {watch.seconds(), {}};
}

Way reading(const char* name, bool (*read)(const _ABPerson&)) {
  return {name, [read](std::size_t times) { return readAgain(times, read); }};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox;
  using namespace ox::bench;
  return runFigures(argc, argv, [] {
    addFigure("warm read of a person",
              {reading("three phones",
                       [](const _ABPerson& one) {
                         return one.valueByPropertyName(OxProPertyPhone) != nullptr;
                       }),
               reading("one text",
                       [](const _ABPerson& one) {
                         return one.valueByPropertyName(OxProPertyCompany) != nullptr;
                       }),
               reading("record's phones",
                       [](const _ABPerson& one) {
                         return !isMissing(one.valueForProperty(kABPhoneProperty));
                       }),
               reading("display name",
                       [](const _ABPerson& one) { return one.displayName().has_value(); }),
               {"plain SQLite",
                [](std::size_t times) -> Measured {
                  const auto& path = store();
                  const Stopwatch watch;
                  keep(plain::readOneAgain(path, times));
                  return {watch.seconds(), {}};
                }}},
              {100'000});
  });
}
