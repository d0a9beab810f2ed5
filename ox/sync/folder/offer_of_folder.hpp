#pragma once

#include <string>

#include "ox/sync/logins.hpp"

namespace ox::sync {

// The books that a folder leads to: itself when it holds cards, or no folders; else those of its
// folders that hold cards. A book is the user's own when its folder is. Throws RemoteError: what is
// no folder, or holds folders without cards alone, is NoBook.
Offer offerOfFolder(const std::string& path);

}  // namespace ox::sync
