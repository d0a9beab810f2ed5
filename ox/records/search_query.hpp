#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/records/search_text.hpp"

namespace ox {

// What somebody types to find persons: words, each of which has to occur in the person, in any
// order, whatever the case and the accents. `town:bern` looks into one field alone, "two words"
// between quotes are one, and digits find a telephone number whatever stands between them, with and
// without the prefix of its country. A value.
class SearchQuery {
 public:
  // Where a word is looked for that names no field: in those that a person is known by, or in names
  // alone, where quotes and colons are what a name may hold.
  enum class In : std::uint8_t { KnownFields, Names };

  explicit SearchQuery(std::string_view typed, In in = In::KnownFields);

  // No word at all: finds nobody.
  bool empty() const { return terms_.empty(); }
  // Whether the text, as searchText() gives it, is that of a person who is sought.
  bool matches(std::string_view text) const;

  // For an index: every text that matches has, of each list, all grams of one of its members.
  using Grams = std::vector<std::size_t>;
  std::vector<std::vector<Grams>> grams() const;

 private:
  // Its number or all of its texts.
  struct Term {
    std::vector<std::string> texts;  // folded
    std::string number;              // as searchedDigits() gives it; empty where none is meant
    std::vector<SearchField> fields;

    bool operator==(const Term&) const = default;
  };

  void add(Term term);
  void addWord(const std::string& word);
  static bool holdsNumber(const Term& term, std::string_view text);
  static bool holdsText(const Term& term, const std::string& sought, std::string_view text);

  std::vector<Term> terms_;
};

}  // namespace ox
