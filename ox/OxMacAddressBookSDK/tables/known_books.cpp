#include "ox/OxMacAddressBookSDK/tables/known_books.hpp"

#include <mutex>
#include <utility>
#include <vector>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"

namespace ox {
namespace {

struct KnownBooks {
  std::mutex mutex;
  std::vector<std::shared_ptr<OxMacAddressBook>> books;
};

KnownBooks& known() {
  static auto& books = *new KnownBooks;
  return books;
}

}  // namespace

std::shared_ptr<OxMacAddressBook> knownBook(TextView id) {
  const std::lock_guard lock(known().mutex);
  for (const auto& book : known().books) {
    if (book->ID() == id) return book;
  }
  return nullptr;
}

void keepKnownBook(std::shared_ptr<OxMacAddressBook> book) {
  const std::lock_guard lock(known().mutex);
  known().books.push_back(std::move(book));
}

}  // namespace ox
