#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/base/export.hpp"

namespace ox {

// The tags of persons that are about to be removed other than by their book, which would forget the
// tags itself. Whose they are must be asked while the persons are there, after the books were
// discovered; taken away they must be when the persons are gone, for tags are removed at once. Used
// by one thread at a time.
class OX_EXPORT TagsToRemove {
 public:
  explicit TagsToRemove(const std::vector<std::shared_ptr<_ABPerson>>& persons);

  enum class Outcome : std::uint8_t {
    Removed,     // and a power cut would not bring them back
    Incomplete,  // some of them could not be removed; the failure is noticed
    NotDurable,  // all are removed, but a power cut may bring them back; the failure is noticed
  };
  [[nodiscard]] Outcome remove() const;

 private:
  std::vector<std::pair<Text, Text>> booksAndPersons_;
};

}  // namespace ox
