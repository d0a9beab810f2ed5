// Lists every address book of the contact store with its persons.
#include <cstdio>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

int main() {
  const auto books = ox::OxMacAddressBook::addressBookArrayWithProgressBlock(
      [](double percent, bool) { std::fprintf(stderr, "\r%3.0f %%", percent); });
  for (const auto& book : books) {
    std::printf("%s\n", book->name().value_or("").c_str());
    const auto persons = book->allPersons();
    if (!persons) continue;
    for (const auto& person : persons->snapshot()) {
      std::printf("  %s\n", person->displayName().value_or("").c_str());
    }
  }
}
