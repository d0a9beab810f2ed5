#include "ox/records/merged_keys.hpp"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <utility>

namespace ox {
namespace {

constexpr std::size_t kNone = SIZE_MAX;

// The place of each number in the list; kNone where it is not there.
std::vector<std::size_t> placesIn(const EntryKeys& list, std::size_t count) {
  std::vector<std::size_t> places(count, kNone);
  for (std::size_t i = 0; i < list.size(); ++i) {
    assert(list[i] < count && places[list[i]] == kNone);
    places[list[i]] = i;
  }
  return places;
}

class Order {
 public:
  Order(const KeyLists& lists, const std::vector<bool>& keptByMine)
      : base_(placesIn(lists.base, lists.count)),
        mine_(placesIn(lists.mine, lists.count)),
        theirs_(placesIn(lists.theirs, lists.count)),
        keptByMine_(keptByMine) {}

  bool stands(std::size_t key) const {
    const bool inMine = mine_[key] != kNone;
    if (inMine && theirs_[key] != kNone) return true;
    return base_[key] == kNone || (inMine && keptByMine_[key]);
  }

  bool isMoved(const EntryKeys& list) const {
    std::size_t last = 0;
    return !std::all_of(list.begin(), list.end(), [&](std::size_t key) {
      if (base_[key] == kNone) return true;
      return std::exchange(last, base_[key]) <= base_[key];
    });
  }

  // `first` gives the order. What only the other list has follows the last one before it there that
  // both have, behind those that only `first` has at that place; what is last there is last here.
  EntryKeys merged(const EntryKeys& first, const EntryKeys& other) const {
    const auto start = base_.size();  // the place before all entries
    std::vector<EntryKeys> behind(base_.size() + 1);
    auto neighbour = start;
    for (const auto key : other) {
      if (!stands(key)) continue;
      if (isInBoth(key)) {
        neighbour = key;
      } else {
        behind[neighbour].push_back(key);
      }
    }
    const auto last = std::exchange(behind[neighbour], {});
    EntryKeys result;
    const auto append = [&](const EntryKeys& keys) {
      result.insert(result.end(), keys.begin(), keys.end());
    };
    neighbour = start;
    for (const auto key : first) {
      if (!stands(key)) continue;
      if (isInBoth(key)) append(behind[std::exchange(neighbour, key)]);
      result.push_back(key);
    }
    append(behind[neighbour]);
    append(last);
    return result;
  }

 private:
  bool isInBoth(std::size_t key) const { return mine_[key] != kNone && theirs_[key] != kNone; }

  std::vector<std::size_t> base_;
  std::vector<std::size_t> mine_;
  std::vector<std::size_t> theirs_;
  const std::vector<bool>& keptByMine_;
};

}  // namespace

EntryKeys mergedKeys(const KeyLists& lists, const std::vector<bool>& keptByMine) {
  assert(keptByMine.size() == lists.count);
  const Order order(lists, keptByMine);
  const bool onlyMineMoved = order.isMoved(lists.mine) && !order.isMoved(lists.theirs);
  return onlyMineMoved ? order.merged(lists.mine, lists.theirs)
                       : order.merged(lists.theirs, lists.mine);
}

}  // namespace ox
