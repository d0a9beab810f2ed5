#pragma once

#include <cstdint>
#include <random>

#include "cards.hpp"

namespace ox::sync {

// Edits of what cards say, as people make them: of single values, entries, tags, pictures and
// unmodelled lines. The same seed makes the same edits.
class RandomChanges {
 public:
  explicit RandomChanges(std::uint32_t seed) : random_(seed) {}

  // So many of them.
  CardContent of(CardContent content, std::size_t count);
  std::size_t below(std::size_t limit) { return random_() % limit; }

 private:
  void change(CardContent& content);
  void changeEntries(CardContent& content);
  void changeLines(CardContent& content);
  std::string text();

  std::mt19937 random_;
};

}  // namespace ox::sync
