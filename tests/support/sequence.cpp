#include "tests/support/sequence.hpp"

#include <array>
#include <charconv>

namespace ox::support {

std::string shortest(double number) {
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), end};
}

ProgressCallback Sequence::callback() {
  return [this](double progress, bool finished) {
    const std::scoped_lock hold(lock_);
    if (!text_.empty()) text_ += ' ';
    text_ += shortest(progress);
    if (finished) text_ += '!';
  };
}

std::string Sequence::text() const {
  const std::scoped_lock hold(lock_);
  return text_;
}

void Sequence::clear() {
  const std::scoped_lock hold(lock_);
  text_.clear();
}

}  // namespace ox::support
