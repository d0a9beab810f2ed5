#include "ox/sync/remote/remote_error.hpp"

#include "ox/sync/remote/remote_book.hpp"

namespace ox::sync {}
