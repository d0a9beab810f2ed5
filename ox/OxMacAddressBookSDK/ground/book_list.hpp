#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace ox {

class OxMacAddressBook;
using OxMacAddressBookPtr = std::shared_ptr<OxMacAddressBook>;

// Discovered address books in order. A cheap handle on a list that never changes: copied freely,
// walked from any thread, and safe to walk straight from the call that gave it. Equal when both are
// handles on the same list.
class BookList {
 public:
  BookList() : BookList(std::vector<OxMacAddressBookPtr>()) {}
  BookList(std::vector<OxMacAddressBookPtr> books)
      : books_(std::make_shared<const std::vector<OxMacAddressBookPtr>>(std::move(books))) {}

  std::size_t size() const { return books_->size(); }
  // Null when the index is out of range.
  OxMacAddressBookPtr element(std::size_t index) const {
    return index < size() ? (*books_)[index] : nullptr;
  }
  auto begin() const { return books_->begin(); }
  auto end() const { return books_->end(); }

  // A list of its own with the same books.
  BookList copy() const { return BookList(*books_); }

  friend bool operator==(const BookList&, const BookList&) = default;

 private:
  std::shared_ptr<const std::vector<OxMacAddressBookPtr>> books_;
};

}  // namespace ox
