#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// The order of texts for readers of one language, by the Unicode Collation Algorithm (UTS #10) with
// that language's own rules. Used by one thread at a time.
class OX_EXPORT Collation {
 public:
  // Of the user's language: the first of LC_ALL, LC_COLLATE and LANG that is set and not empty; the
  // order that fits no language in particular when that is none, "C" or "POSIX".
  Collation();
  ~Collation();
  Collation(const Collation&) = delete;
  Collation& operator=(const Collation&) = delete;

  // Bytes that compare as the texts do. Texts that no reader tells apart have the same ones.
  std::string keyOf(std::string_view text) const;
  // The same for texts of which the second decides where the first differs at most in accents and
  // case: a family's name and the first names in it.
  std::string keyOf(std::string_view first, std::string_view second) const;
  // The heading under which an index lists the text: "A", in Chinese the letter that its reading
  // begins with; "…" or "#" for what stands before or behind all letters.
  std::string indexLetterOf(std::string_view text) const;

 private:
  struct Icu;
  std::unique_ptr<Icu> icu_;
};

}  // namespace ox
