// The books found by walking the persons, and then the groups.
#include <string>
#include <unordered_map>

#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/ground/containers.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/OxMacAddressBookSDK/registry/builds.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_stamp_table.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox::registry {
namespace {

// One walk over the records. Each record is stamped with the ID of its container's book, so that
// nobody has to ask the store again which book holds it. The containers met are kept by identifier,
// and the last one is kept at hand, because the records of a container tend to follow one another.
class RecordWalk {
 public:
  RecordWalk(LocalBookRule rule, Caches caches) : found_(rule), caches_(caches) {}

  void walkPerson(std::shared_ptr<_ABPerson> person) {
    const auto container = containerOf(*store_, *person);
    if (!container) return;
    const Met& met = meet(container, Listed::ById);
    _ABPerson::dictionarySave().set(person->key(), met.bookId);
    if (caches_ == Caches::Fill) {
      booksById_.at(met.bookId)->allPersonArray()->append(std::move(person));
    }
  }

  void walkGroup(const _ABGroup& group) {
    const auto container = containerOf(*store_, group);
    if (!container) return;
    _ABGroup::dictionarySave().set(group.key(), meet(container, Listed::No).bookId);
  }

  // An empty local book is listed too; of several the one listed last comes first.
  Books finish() {
    if (found_.localBookMissing()) {
      for (const auto& container : store_->containersMatchingPredicate_error({}, nullptr)) {
        if (isLocal(*container))
          found_.add(OxMacAddressBook::initWithContainer(container), *container);
      }
    }
    return found_.books();
  }

 private:
  enum class Listed { No, ById };
  struct Met {
    CNContainerPtr container;
    BookId bookId;
  };

  // The container among those met; when it is new, with a book of its own in the list.
  const Met& meet(const CNContainerPtr& container, Listed listed) {
    if (last_ != nullptr && *last_->container == *container) return *last_;
    const auto [place, isNew] = met_.try_emplace(container->identifier().value_or(""));
    Met& met = place->second;
    if (isNew) {
      const auto book = OxMacAddressBook::initWithContainer(container);
      met = {container, BookId::of(book->ID().value_or(""))};
      found_.add(book, *container);
      if (listed == Listed::ById) booksById_[met.bookId] = book;
    }
    last_ = &met;
    return met;
  }

  BookCollector found_;
  Caches caches_;
  std::shared_ptr<CNContactStore> store_ = CNContactStore::init();
  std::unordered_map<std::string, Met> met_;
  const Met* last_ = nullptr;
  // The books of those containers that were met through a person. Where two containers share a
  // standard id, the persons of both go into the book that was made last.
  std::unordered_map<BookId, OxMacAddressBookPtr> booksById_;
};

}  // namespace

Books booksByRecords(LocalBookRule rule, Caches caches, const ProgressCallback& progress) {
  RecordWalk walk(rule, caches);
  const auto records = ABAddressBook::sharedAddressBook();
  const auto groups = records->groups();
  auto people = records->people();
  const std::size_t total = groups.size() + people.size() + 1;
  _ABPerson::dictionarySave().reserve(people.size());
  std::size_t done = 0;
  for (auto& person : people) {
    walk.walkPerson(hostPerson(std::move(person)));
    progress::report(progress, progress::percent(++done, total));
  }
  for (const auto& group : groups) {
    walk.walkGroup(*hostGroup(group));
    progress::report(progress, progress::percent(++done, total));
  }
  auto books = walk.finish();
  progress::report(progress, progress::kDone);
  return books;
}

}  // namespace ox::registry
