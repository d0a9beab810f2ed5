#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace ox {

class OxMacAddressBook;
using OxMacAddressBookPtr = std::shared_ptr<OxMacAddressBook>;

// Discovered address books in order. Never changes once made, so any thread may walk it. Discovery
// gives a copy: keep the pointer for as long as the list is walked.
class BookList {
 public:
  explicit BookList(std::vector<OxMacAddressBookPtr> books) : books_(std::move(books)) {}

  std::size_t size() const { return books_.size(); }
  // Null when the index is out of range.
  OxMacAddressBookPtr element(std::size_t index) const {
    return index < books_.size() ? books_[index] : nullptr;
  }
  auto begin() const { return books_.begin(); }
  auto end() const { return books_.end(); }

 private:
  std::vector<OxMacAddressBookPtr> books_;
};

using BookListPtr = std::shared_ptr<const BookList>;

}  // namespace ox
