#include "ox/records/entry_match.hpp"

#include <algorithm>
#include <functional>
#include <string>

#include "ox/records/fingerprint.hpp"

namespace ox {

void EntryMatch::offer(const MultiEntry& entry, std::size_t place) {
  offers_[keyOf(entry)].list.push_back({&entry, place});
}

std::optional<std::size_t> EntryMatch::take(const MultiEntry& entry) {
  const auto found = offers_.find(keyOf(entry));
  if (found == offers_.end()) return std::nullopt;
  auto& [list, taken] = found->second;
  // All under one key are equal, but for the rare ones that share it by chance.
  for (auto at = taken; at < list.size(); ++at) {
    if (!isEqual(*list[at].entry, entry)) continue;
    const auto place = list[at].place;
    std::rotate(list.begin() + static_cast<std::ptrdiff_t>(taken),
                list.begin() + static_cast<std::ptrdiff_t>(at),
                list.begin() + static_cast<std::ptrdiff_t>(at) + 1);
    ++taken;
    return place;
  }
  return std::nullopt;
}

std::uint64_t EntryMatch::keyOf(const MultiEntry& entry) const {
  const auto value = valueFingerprint(entry.value);
  if (by_ == By::Value || !entry.label) return value;
  return value ^ (std::hash<std::string>{}(*entry.label) + 1);
}

bool EntryMatch::isEqual(const MultiEntry& a, const MultiEntry& b) const {
  return (by_ == By::Value || a.label == b.label) && a.value == b.value;
}

}  // namespace ox
