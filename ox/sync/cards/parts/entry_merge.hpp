#pragma once

#include <cstdint>
#include <vector>

#include "ox/records/property_bag.hpp"

namespace ox::sync {

// Four lists of one property: what each side held when they last agreed, and holds.
struct FourLists {
  MultiValue ourBase;
  MultiValue ours;
  MultiValue theirBase;
  MultiValue theirs;
};

// An entry of a merge. `from` is what it is remembered by where it comes from: its identifier in
// the list of that side.
struct MergedEntry {
  enum class Side : std::uint8_t { Ours, Theirs };
  MultiEntry entry;
  Side side = Side::Ours;
  std::uint64_t from = 0;
};

struct MergedList {
  std::vector<MergedEntry> entries;
  std::uint64_t primary = 0;
  bool isChanged = false;  // it is not what that side has

  MultiValue value() const;
};

// An entry that both sides have made another of.
struct EntryConflict {
  MultiEntry theirs;
  MultiEntry ours;
  MultiEntry base;  // of ours; no value: there was none
};

struct MergedEntries {
  MergedList forUs;    // ours with what they have changed, under the identifiers of ours
  MergedList forThem;  // theirs with what we have changed, under the identifiers of theirs
  std::vector<EntryConflict> conflicts;
};

// Entries are known by label and value, those of ours by their identifiers besides; one that is
// gone and one in its place under the same label are the same, changed. `firstFree` is an
// identifier that no list and nothing else has used.
MergedEntries mergedEntries(const FourLists& lists, std::uint64_t firstFree);

// Whether both hold the same entries, in any order, and the same one of them is primary.
bool haveSameEntries(const MultiValue& a, const MultiValue& b);

// By place in `before`, for each entry of `now`: the entry that it is, however it has changed.
inline constexpr auto kNewEntry = static_cast<std::size_t>(-1);
enum class Identifiers : std::uint8_t { Tell, TellNothing };
std::vector<std::size_t> originsOf(const MultiValue& before, const MultiValue& now,
                                   Identifiers identifiers);

}  // namespace ox::sync
