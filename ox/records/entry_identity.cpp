#include "ox/records/entry_identity.hpp"

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "ox/records/entry_match.hpp"

namespace ox {
namespace {

// Gives identifiers of the old list to entries of the new one, each at most once.
class Matching {
 public:
  Matching(const MultiValue& before, MultiValue& now)
      : before_(before),
        now_(now),
        givenTo_(before.entries.size(), kNobody),
        from_(now.entries.size(), kNobody) {}

  void matchIdentifiers() {
    std::unordered_map<std::uint64_t, std::size_t> places;
    for (std::size_t j = 0; j < before_.entries.size(); ++j) {
      places.emplace(before_.entries[j].identifier, j);
    }
    for (std::size_t i = 0; i < now_.entries.size(); ++i) {
      const auto found = places.find(now_.entries[i].identifier);
      if (found != places.end() && givenTo_[found->second] == kNobody) give(i, found->second);
    }
  }

  void match(EntryMatch::By by) {
    EntryMatch open(by);
    for (std::size_t j = 0; j < before_.entries.size(); ++j) {
      if (givenTo_[j] == kNobody) open.offer(before_.entries[j], j);
    }
    for (std::size_t i = 0; i < now_.entries.size(); ++i) {
      if (from_[i] != kNobody) continue;
      if (const auto place = open.take(now_.entries[i])) give(i, *place);
    }
  }

  void matchPlaces() {
    std::size_t j = 0;
    for (std::size_t i = 0; i < now_.entries.size(); ++i) {
      if (from_[i] != kNobody) {
        j = from_[i] + 1;
        continue;
      }
      const bool isOpen = j < before_.entries.size() && givenTo_[j] == kNobody;
      if (isOpen && before_.entries[j].label == now_.entries[i].label) give(i, j++);
    }
  }

 private:
  static constexpr std::size_t kNobody = SIZE_MAX;

  void give(std::size_t i, std::size_t j) {
    auto& entry = now_.entries[i];
    const auto identifier = before_.entries[j].identifier;
    if (now_.primary != 0 && now_.primary == entry.identifier) now_.primary = identifier;
    entry.identifier = identifier;
    givenTo_[j] = i;
    from_[i] = j;
  }

  const MultiValue& before_;
  MultiValue& now_;
  std::vector<std::size_t> givenTo_;  // of each old entry, the place of the new one
  std::vector<std::size_t> from_;     // of each new entry, the place of the old one
};

}  // namespace

MultiValue withIdentifiersOf(const MultiValue& before, MultiValue now) {
  Matching matching(before, now);
  matching.matchIdentifiers();
  matching.match(EntryMatch::By::LabelAndValue);
  matching.match(EntryMatch::By::Value);
  return now;
}

MultiValue withIdentifiersOfPlaces(const MultiValue& before, MultiValue now) {
  Matching matching(before, now);
  matching.matchIdentifiers();
  matching.matchPlaces();
  return now;
}

}  // namespace ox
