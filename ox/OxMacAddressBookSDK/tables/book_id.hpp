#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace ox {

// The ID of an address book in four bytes: a number into a list of texts that is kept for the life
// of the process. Books are few, records many. Equal numbers stand for equal texts. A value; safe
// from any thread.
class BookId {
 public:
  BookId() = default;  // no book

  static BookId of(std::string_view text);

  // Empty for no book.
  std::string text() const;
  bool isNone() const { return number_ == 0; }

  bool operator==(const BookId&) const = default;

 private:
  friend struct std::hash<BookId>;
  explicit BookId(std::uint32_t number) : number_(number) {}

  std::uint32_t number_ = 0;
};

}  // namespace ox

template <>
struct std::hash<ox::BookId> {
  std::size_t operator()(const ox::BookId& id) const noexcept { return id.number_; }
};
