#pragma once

#include <string>

#include "ox/base/export.hpp"

namespace ox {

// Refuses a path that another user of this machine leads elsewhere: over a link that she has put
// into a folder which is not hers, or to a pipe or device of hers there. Throws a
// std::system_error that names it. The user's own links and those of the system are followed as
// ever, and so, but for the superuser, are those that somebody has in a folder of her own.
OX_EXPORT void refusePlanted(const std::string& path);

}  // namespace ox
