#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ox/base/text.hpp"

namespace ox::program {

// What the user typed as a name, to be found however its accents are stored.
class WantedName {
 public:
  explicit WantedName(const std::string& typed);
  bool isNameOf(const Text& name) const;
  // But for case, accents and the like.
  bool isNearlyNameOf(const Text& name) const;
  bool hasWords() const { return folded_.find_first_not_of(" \t") != std::string::npos; }
  // Every word of it occurs in the name, in any order; no word does in none.
  bool isPartOf(const Text& name) const;

 private:
  std::string typed_;
  std::string composed_;
  std::string folded_;
};

// Both throw a CommandError.
[[noreturn]] void throwNotFound(const char* what, const std::string& text);
// The candidates as the user may name them: the first ones of so many.
inline constexpr std::size_t kListedCandidates = 10;
[[noreturn]] void throwAmbiguous(const char* what, const std::string& text,
                                 const std::vector<std::string>& candidates, std::size_t count);

}  // namespace ox::program
