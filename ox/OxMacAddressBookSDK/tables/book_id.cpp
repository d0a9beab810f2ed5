#include "ox/OxMacAddressBookSDK/tables/book_id.hpp"

#include <cassert>
#include <deque>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace ox {
namespace {

class BookIdTexts {
 public:
  std::uint32_t numberOf(std::string_view text) {
    if (const std::uint32_t number = find(text); number != 0) return number;
    const std::unique_lock lock(mutex_);
    if (const auto found = numbers_.find(text); found != numbers_.end()) return found->second;
    texts_.emplace_back(text);
    const auto number = static_cast<std::uint32_t>(texts_.size());
    numbers_.emplace(texts_.back(), number);
    return number;
  }

  std::string textOf(std::uint32_t number) {
    const std::shared_lock lock(mutex_);
    assert(number != 0 && number <= texts_.size());
    return texts_[number - 1];
  }

 private:
  std::uint32_t find(std::string_view text) {
    const std::shared_lock lock(mutex_);
    const auto found = numbers_.find(text);
    return found == numbers_.end() ? 0 : found->second;
  }

  std::shared_mutex mutex_;
  std::deque<std::string> texts_;  // a deque: the views below stay valid
  std::unordered_map<std::string_view, std::uint32_t> numbers_;
};

BookIdTexts& bookIdTexts() {
  static auto& texts = *new BookIdTexts;
  return texts;
}

}  // namespace

BookId BookId::of(std::string_view text) {
  return BookId(bookIdTexts().numberOf(text));
}

std::string BookId::text() const {
  return isNone() ? std::string() : bookIdTexts().textOf(number_);
}

}  // namespace ox
