#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ox/base/uuid.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// What a copy of a tag file misses that was taken before the copy of its store. In between, other
// processes commit changes of tags, and whoever has followed them strikes them out of the store.
// Both throw StoreError; a store of an earlier version answers that there is nothing.

// The last act of the store at that path of which is known that the tag file has followed it, or
// had nothing to follow.
std::int64_t lastActWithoutDebt(const std::string& store);
struct MissedTags {
  Uuid store{};              // its name
  std::vector<TagAct> acts;  // in their order
  std::int64_t lastAct = 0;  // of all acts
};
// The acts after that one which changed tags, followed or not. A row that is damaged is left out:
// to be told by a check.
MissedTags tagActsAfter(const std::string& store, std::int64_t number);

}  // namespace ox
