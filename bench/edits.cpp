// What do edits of a book cost, and does the size of the book matter? Persons are made one by one,
// half or all of them are removed, or their account, and one is changed and saved at a time. Beside
// it: SQLite alone writing the same rows in the same transactions; of a removal it notes only whom
// it removed, and keeps nothing to take it back by.
#include <functional>
#include <stdexcept>
#include <string_view>

#include "bench/child.hpp"
#include "bench/figures.hpp"
#include "bench/plain_edits.hpp"
#include "bench/stores.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox::bench {
namespace {

constexpr std::size_t kSavedEdits = 200;
constexpr const char* kAccount = "bench-1:ABAccount";

// In the child. What the work was done to, counted when it is done, goes to the parent.
double makePersons(std::size_t count) {
  const auto container = CNContactStore::init()->containersMatchingPredicate_error({}, nullptr);
  const auto book = OxMacAddressBook::initWithContainer(container.at(0));
  std::size_t made = 0;
  const Stopwatch watch;
  for (std::size_t i = 0; i < count; ++i) made += book->newPerson() ? 1 : 0;
  const auto seconds = watch.seconds();
  tellParent("left", static_cast<double>(made));
  return seconds;
}

// Every so manieth.
double removePersons(std::size_t step) {
  const auto book = OxMacAddressBook::addressBookArray().element(0);
  const auto persons = book->allPersons()->snapshot();
  Persons removed;
  for (std::size_t i = 0; i < persons.size(); i += step) removed.push_back(persons[i]);
  const Stopwatch watch;
  book->removePersons(removed);
  book->save();
  const auto seconds = watch.seconds();
  tellParent("left", static_cast<double>(ABAddressBook::sharedAddressBook()->people().size()));
  return seconds;
}

double removeWholeAccount() {
  accounts();  // opens the store
  const Stopwatch watch;
  removeAccount(kAccount, WithRecords::Yes);
  const auto seconds = watch.seconds();
  tellParent("left", static_cast<double>(ABAddressBook::sharedAddressBook()->people().size()));
  return seconds;
}

double editAndSave() {
  const auto book = OxMacAddressBook::addressBookArray().element(0);
  const auto persons = book->allPersons()->snapshot();
  std::size_t changed = 0;
  const Stopwatch watch;
  for (std::size_t i = 0; i < kSavedEdits; ++i) {
    const auto person = recordOf(persons[i % persons.size()]);
    const Object note = "edit " + std::to_string(i);
    changed += person->setValue_forProperty(note, kABNoteProperty) ? 1 : 0;
    book->save();
  }
  const auto seconds = watch.seconds();
  tellParent("left", static_cast<double>(changed));
  return seconds;
}

double measure(std::string_view way, std::size_t size) {
  if (way == "new") return makePersons(size);
  if (way == "remove half") return removePersons(2);
  if (way == "remove all") return removePersons(1);
  if (way == "remove account") return removeWholeAccount();
  if (way == "edit") return editAndSave();
  const auto store = contactStorePath();
  if (way == "plain new") return plain::addPersons(store, size);
  if (way == "plain remove half") return plain::removePersons(store, 2);
  if (way == "plain remove all") return plain::removePersons(store, 1);
  if (way == "plain remove account") return plain::removeContainer(store, kAccount);
  if (way == "plain edit") return plain::editSynced(store, kSavedEdits);
  throw std::invalid_argument("no such way");
}

using Store = std::function<std::string()>;  // makes it when it is first asked for

// On a copy of a store; `left` is what the child has to count.
Way onCopy(const std::string& name, const std::string& way, const Store& original,
           std::size_t left) {
  return {name, [=](std::size_t size) -> Measured {
            const auto numbers = runChild(copyOf(original()), {way, std::to_string(size)});
            const auto counted = numbers.find("left");
            if (counted != numbers.end() && counted->second != static_cast<double>(left)) {
              throw std::runtime_error(way + " was not done");
            }
            return measuredBy(numbers);
          }};
}

void addFigures() {
  for (const auto size : sizes()) {
    const Store empty = [] { return storeOf(0); };
    const Store local = [size] { return localStoreOf(size); };
    const Store ofAccounts = [size] { return storeOf(size); };
    addFigure(
        "new persons",
        {onCopy("newPerson", "new", empty, size), onCopy("plain SQLite", "plain new", empty, 0)},
        {size});
    addFigure("remove half of a book",
              {onCopy("removePersons, save", "remove half", local, size - (size + 1) / 2),
               onCopy("plain SQLite", "plain remove half", local, 0)},
              {size});
    addFigure("remove all of a book",
              {onCopy("removePersons, save", "remove all", local, 0),
               onCopy("plain SQLite", "plain remove all", local, 0)},
              {size});
    addFigure("remove one account of four",
              {onCopy("removeAccount", "remove account", ofAccounts, size / 4 * 3),
               onCopy("plain SQLite", "plain remove account", ofAccounts, 0)},
              {size});
    addFigure("edit, save; of " + std::to_string(size),
              {onCopy("setValue, save", "edit", local, kSavedEdits),
               onCopy("plain SQLite", "plain edit", local, 0)},
              {kSavedEdits});
  }
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  if (argc == 4 && std::string_view(argv[1]) == "--child") {
    tellSeconds(measure(argv[2], std::stoul(argv[3])));
    return 0;
  }
  return runFigures(argc, argv, addFigures);
}
