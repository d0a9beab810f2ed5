// Lists every address book of the contact store with its persons and groups.
#include <cstdio>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"

// Lists of persons are of one type, wherever they come from.
void print(const ox::Persons& persons) {
  for (const auto& person : persons) {
    std::printf("  %s\n", person->displayName().value_or("").c_str());
  }
}

int main() {
  const auto books = ox::OxMacAddressBook::addressBookArrayWithProgressBlock(
      [](double percent, bool) { std::fprintf(stderr, "\r%3.0f %%", percent); });
  for (const auto& book : books) {
    std::printf("%s\n", book->name().value_or("").c_str());
    if (const auto persons = book->allPersons()) print(persons->snapshot());
    for (const auto& group : book->rootGroups()) {
      std::printf(" %s\n", group->displayName().value_or("").c_str());
      print(group->includePersons());
    }
  }
}
