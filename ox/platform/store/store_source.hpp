#pragma once

#include <memory>

#include "ox/base/store_location.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {

// A source over the store at that address. Nothing is touched before the first operation, which
// makes the file when it is absent; the folder is made too (0700, the file 0600).
std::shared_ptr<ContactSource> openStoreSource(const StoreAddress& address);

}  // namespace ox
