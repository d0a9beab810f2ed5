#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "ox/sync/http/http_client.hpp"

// The requests of WebDAV and CardDAV that ask, none of which changes anything. Those that change a
// card stand in dav_push.cpp.

namespace ox::sync {

enum class Depth : std::uint8_t { Itself, Members };  // 0 and 1; never infinity

// PROPFIND (RFC 4918, section 9.1) for named properties, each "{namespace}local".
HttpRequest propfind(const std::string& url, Depth depth,
                     std::span<const std::string_view> properties);

// REPORT sync-collection (RFC 6578) of a collection's own members: their ETags, everything where
// the token is empty. No limit: some servers answer 500 to one.
HttpRequest syncCollection(const std::string& url, std::string_view token);

// REPORT addressbook-multiget (RFC 6352, section 8.7), with each href as it is spelled.
HttpRequest multiget(const std::string& url, std::span<const std::string> hrefs);

}  // namespace ox::sync
