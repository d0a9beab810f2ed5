// The books found by walking the containers, and then the contacts of each.
#include <deque>
#include <stdexcept>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/ground/containers.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/OxMacAddressBookSDK/registry/builds.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox::registry {
namespace {

struct BookOfContacts {
  OxMacAddressBookPtr book;
  std::vector<CNContactPtr> contacts;
};

struct Listing {
  std::deque<BookOfContacts> books;  // local ones at the front
  std::size_t contactCount = 0;
  std::size_t containerCount = 0;
};

// The first phase: one percent for each container. The contacts of a book come into its cache in
// the second phase. A local book that was not accepted is listed all the same, and its persons are
// loaded at once.
Listing listContainers(const std::shared_ptr<CNContactStore>& store,
                       const ProgressCallback& progress) {
  const auto records = ABAddressBook::sharedAddressBook();
  Listing listing;
  CNContainerPtr local;
  bool localBookMissing = true;
  for (const auto& container : store->containersMatchingPredicate_error({}, nullptr)) {
    if (OxMacAddressBook::needAddAdreessBook_ab_store(container, records, store)) {
      BookOfContacts found{OxMacAddressBook::initWithContainer(container),
                           contactsIn(*store, *container)};
      listing.contactCount += found.contacts.size();
      if (isLocal(*container)) {
        localBookMissing = false;
        listing.books.push_front(std::move(found));
      } else {
        listing.books.push_back(std::move(found));
      }
    }
    if (isLocal(*container)) local = container;
    progress::report(progress, static_cast<double>(++listing.containerCount));
  }
  if (local && localBookMissing) {
    auto book = OxMacAddressBook::initWithContainer(local);
    book->allPersons();
    listing.books.push_front({std::move(book), {}});
  }
  return listing;
}

// The second phase: the contacts share the percents that the first one has left. With a hundred
// containers or more nothing is left, and the values stand still or fall. Required.
void fillCaches(const Listing& listing, const ProgressCallback& progress) {
  const auto records = ABAddressBook::sharedAddressBook();
  const std::size_t spent = listing.containerCount + 1;
  const auto base = static_cast<double>(spent);
  const double share = progress::shareLeft(spent);
  std::size_t done = 0;
  for (const auto& [book, contacts] : listing.books) {
    const Text bookID = book->ID();
    for (const auto& contact : contacts) {
      if (auto person = hostPerson(records->recordForKey(contact->key()))) {
        person->setAddressID(bookID);
        book->allPersonArray()->append(std::move(person));
      }
      const double percent = progress::percent(++done, listing.contactCount);
      progress::report(progress, percent * share + base);
    }
  }
}

}  // namespace

Books booksByContainers(const ProgressCallback& progress) {
  if (!progress) throw std::invalid_argument("building this list needs a progress callback");
  const auto store = CNContactStore::init();
  const Listing listing = listContainers(store, progress);
  progress::report(progress, static_cast<double>(listing.containerCount + 1));
  fillCaches(listing, progress);
  progress::report(progress, progress::kDone, true);
  Books books;
  for (const auto& [book, contacts] : listing.books) books.push_back(book);
  return books;
}

Books booksByPreloadedContainers() {
  const auto store = CNContactStore::init();
  const auto records = ABAddressBook::sharedAddressBook();
  BookCollector found(LocalBookRule::LocalOrICloudBook);
  CNContainerPtr local;
  const auto list = [&found](const CNContainerPtr& container) {
    const auto book = OxMacAddressBook::initWithContainer(container);
    book->allPersons();
    found.add(book, *container);
  };
  for (const auto& container : store->containersMatchingPredicate_error({}, nullptr)) {
    if (OxMacAddressBook::needAddAdreessBook_ab_store(container, records, store)) list(container);
    if (isLocal(*container)) local = container;
  }
  if (local && found.localBookMissing()) list(local);
  return found.books();
}

}  // namespace ox::registry
