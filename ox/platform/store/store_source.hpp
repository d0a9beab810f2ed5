#pragma once

#include <memory>
#include <string>

#include "ox/platform/store/contact_source.hpp"

namespace ox {

// A source over the store file at that path. Nothing is touched before the first operation, which
// makes the file when it is absent; the folder is made too (0700, the file 0600).
std::shared_ptr<ContactSource> openStoreSource(const std::string& path);

}  // namespace ox
