#pragma once

#include <string>

#include "ox/sync/http/http_client.hpp"
#include "ox/sync/remote/remote_book.hpp"

namespace ox::sync {

// What an answer to PUT or DELETE says became of the card. The href is the one that the answer
// names (Location, not looked at any closer), else the one that was asked. Throws nothing: a 207
// that cannot be read is an outcome that nobody knows.
Pushed pushedOf(Push::Kind kind, const std::string& href, const HttpAnswer& answer);

}  // namespace ox::sync
