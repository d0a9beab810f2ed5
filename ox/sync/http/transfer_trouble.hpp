#pragma once

#include "ox/sync/http/transfer.hpp"

namespace ox::sync {

// What one of libcurl's codes comes to: the one list of them.
Transfer::Trouble troubleOf(int code);

}  // namespace ox::sync
