// How the entries of two lists stand for each other: originsOf of entry_merge.hpp.

#include <algorithm>
#include <unordered_map>

#include "ox/records/entry_match.hpp"
#include "ox/sync/cards/parts/entry_merge.hpp"

namespace ox::sync {
namespace {

class Origins {
 public:
  Origins(const MultiValue& before, const MultiValue& now)
      : before_(before),
        now_(now),
        isTaken_(before.entries.size()),
        origins_(now.entries.size(), kNewEntry) {}

  void match(EntryMatch::By by) {
    EntryMatch open(by);
    for (std::size_t j = 0; j < before_.entries.size(); ++j) {
      if (!isTaken_[j]) open.offer(before_.entries[j], j);
    }
    for (std::size_t i = 0; i < now_.entries.size(); ++i) {
      if (origins_[i] != kNewEntry) continue;
      if (const auto place = open.take(now_.entries[i])) take(i, *place);
    }
  }

  void matchIdentifiers() {
    std::unordered_map<std::uint64_t, std::size_t> places;
    for (std::size_t j = 0; j < before_.entries.size(); ++j) {
      if (!isTaken_[j]) places.emplace(before_.entries[j].identifier, j);
    }
    for (std::size_t i = 0; i < now_.entries.size(); ++i) {
      if (origins_[i] != kNewEntry) continue;
      const auto found = places.find(now_.entries[i].identifier);
      if (found != places.end() && !isTaken_[found->second]) take(i, found->second);
    }
  }

  // One under the same label behind the same neighbour.
  void matchPlaces() {
    std::size_t j = 0;
    for (std::size_t i = 0; i < now_.entries.size(); ++i) {
      if (origins_[i] != kNewEntry) {
        j = origins_[i] + 1;
        continue;
      }
      const bool isOpen = j < before_.entries.size() && !isTaken_[j];
      if (isOpen && before_.entries[j].label == now_.entries[i].label) take(i, j++);
    }
  }

  std::vector<std::size_t> all() && { return std::move(origins_); }

 private:
  void take(std::size_t i, std::size_t j) {
    isTaken_[j] = true;
    origins_[i] = j;
  }

  const MultiValue& before_;
  const MultiValue& now_;
  std::vector<bool> isTaken_;
  std::vector<std::size_t> origins_;
};

}  // namespace

std::vector<std::size_t> originsOf(const MultiValue& before, const MultiValue& now,
                                   Identifiers identifiers) {
  Origins origins(before, now);
  origins.match(EntryMatch::By::LabelAndValue);
  if (identifiers == Identifiers::Tell) origins.matchIdentifiers();
  origins.match(EntryMatch::By::Value);
  origins.matchPlaces();
  return std::move(origins).all();
}

bool haveSameEntries(const MultiValue& a, const MultiValue& b) {
  if (a.entries.size() != b.entries.size()) return false;
  EntryMatch open(EntryMatch::By::LabelAndValue);
  const auto isPrimary = [](const MultiValue& values, std::size_t i) {
    return values.primary != 0 && values.entries[i].identifier == values.primary;
  };
  // The primary ones first, so that they are held against each other where some are equal.
  const auto offer = [&](bool primary) {
    for (std::size_t i = 0; i < b.entries.size(); ++i) {
      if (isPrimary(b, i) == primary) open.offer(b.entries[i], i);
    }
  };
  offer(true);
  offer(false);
  for (const bool primary : {true, false}) {
    for (std::size_t i = 0; i < a.entries.size(); ++i) {
      if (isPrimary(a, i) != primary) continue;
      const auto place = open.take(a.entries[i]);
      if (!place || isPrimary(b, *place) != primary) return false;
    }
  }
  return true;
}

}  // namespace ox::sync
