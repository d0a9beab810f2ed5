#include "ox/platform/store/store_source.hpp"

#include "ox/platform/store/source/locked_source.hpp"

namespace ox {

std::shared_ptr<ContactSource> openStoreSource(const StoreAddress& address) {
  return std::make_shared<LockedSource>(address);
}

}  // namespace ox
