#pragma once

#include <cstdint>
#include <random>

#include "ox/vcard/read/card.hpp"

namespace ox::vcard {

// Persons as no program writes them: every property, with texts of all scripts, control characters,
// emoji, everything that cards escape, long ones and empty ones. The same seed gives the same
// persons. Dictionaries have their entries in the order in which the reader gives them.
class RandomCards {
 public:
  explicit RandomCards(std::uint32_t seed) : random_(seed) {}

  Card next();

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }
  bool oneIn(std::size_t count) { return below(count) == 0; }
  std::string text();
  Text label(PropertyId property);
  Date date();
  Object address();
  Object message();
  Object socialProfile();
  Object entryOf(PropertyId property);
  void addMulti(PropertyId property, PropertyBag& bag, Array& kept);

  std::mt19937 random_;
};

}  // namespace ox::vcard
