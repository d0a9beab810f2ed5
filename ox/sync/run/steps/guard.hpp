#pragma once

#include <cstddef>

namespace ox::sync {

// How much of a book one side would lose.
struct Deletions {
  std::size_t deletions = 0;
  std::size_t cards = 0;  // of the book, before
};

// Whether so many deletions are more than anybody means to do at once: more than ten that are also
// more than a fifth of the book, or all of a book of more than two.
bool isTooMuch(const Deletions& side);

}  // namespace ox::sync
