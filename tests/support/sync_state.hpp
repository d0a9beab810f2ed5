#pragma once

#include <functional>
#include <string>

#include "ox/platform/store/sync_source.hpp"

namespace ox::support {

// All that a store keeps of accounts that are in step with others, read in every way; empty when it
// keeps nothing. Records are called as the function says.
std::string syncState(SyncSource& source, const std::function<std::string(const RecordKey&)>& name);

}  // namespace ox::support
