#include "ox/records/entry_identity.hpp"

#include <algorithm>
#include <vector>

namespace ox {
namespace {

// Every entry is compared with every other; lists beyond this are no longer edited entry by entry.
constexpr std::size_t kMostEntries = 512;

class Matching {
 public:
  Matching(const MultiValue& before, MultiValue& now)
      : before_(before), now_(now), taken_(before.entries.size()), given_(now.entries.size()) {}

  template <typename Same>
  void match(Same same) {
    for (std::size_t i = 0; i < now_.entries.size(); ++i) {
      for (std::size_t j = 0; j < before_.entries.size() && !given_[i]; ++j) {
        if (taken_[j] || !same(before_.entries[j], now_.entries[i])) continue;
        taken_[j] = given_[i] = true;
        give(now_.entries[i], before_.entries[j].identifier);
      }
    }
  }

 private:
  void give(MultiEntry& entry, std::uint64_t identifier) {
    if (now_.primary != 0 && now_.primary == entry.identifier) now_.primary = identifier;
    entry.identifier = identifier;
  }

  const MultiValue& before_;
  MultiValue& now_;
  std::vector<bool> taken_;
  std::vector<bool> given_;
};

}  // namespace

MultiValue withIdentifiersOf(const MultiValue& before, MultiValue now) {
  if (std::max(before.entries.size(), now.entries.size()) > kMostEntries) return now;
  Matching matching(before, now);
  matching.match([](const MultiEntry& old, const MultiEntry& entry) {
    return old.identifier == entry.identifier;
  });
  matching.match([](const MultiEntry& old, const MultiEntry& entry) {
    return old.label == entry.label && old.value == entry.value;
  });
  matching.match(
      [](const MultiEntry& old, const MultiEntry& entry) { return old.value == entry.value; });
  return now;
}

}  // namespace ox
