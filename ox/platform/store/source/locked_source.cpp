#include "ox/platform/store/source/locked_source.hpp"

namespace ox {

LockedSource::LockedSource(const StoreAddress& address)
    : store_(address),
      committed_(store_.committed()),
      search_(store_.file()),
      journal_(mutex_, store_),
      overlay_(committed_) {}

StoreJournal& LockedSource::journal() {
  return journal_;
}

void LockedSource::letGo() {
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock) return;
  search_.letGo();
  store_.letGo();
}

}  // namespace ox
