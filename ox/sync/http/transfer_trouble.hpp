#pragma once

#include <string_view>

#include "ox/sync/http/transfer.hpp"

namespace ox::sync {

// What one of libcurl's codes comes to, with the reason that stands beside it: the one list of
// them.
Transfer::Trouble troubleOf(int code, std::string_view reason);

}  // namespace ox::sync
