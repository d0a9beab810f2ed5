// Prints whom the words of the command line find: find_people lee bern, find_people 030 1234.
#include <cstdio>
#include <string>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

int main(int argc, char** argv) {
  std::string words;
  for (int i = 1; i < argc; ++i) words += (i > 1 ? " " : "") + std::string(argv[i]);
  const ox::failures::Watch watch;
  const auto found = ox::ABAddressBook::sharedAddressBook()->peopleMatching(words);
  for (const auto& record : found) {
    const auto person = ox::hostPerson(record);
    const auto phone = person->mainPhone();
    std::printf("%s  %s\n", person->displayName().value_or("").c_str(),
                phone ? phone->phoneNumber().value_or("").c_str() : "");
  }
  if (watch.hasFailures()) std::fprintf(stderr, "%s\n", watch.lastReason().c_str());
  return watch.hasFailures() ? 1 : found.empty() ? 4 : 0;
}
