#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "ox/sync/http/http_client.hpp"
#include "ox/sync/remote/remote_book.hpp"

namespace ox::sync {

// GET of one card, in no other coding than its own: the ETag matters. A card may be larger than
// what the client keeps of an answer, so the text comes through a sink; `done` finds it in the
// body.
HttpClient::Job cardGet(std::string url, std::function<void(const HttpAnswer&)> done,
                        std::function<void(const std::string& why)> failed);

// What the answer to that says of the card; its href is left empty. The ETag is the one it was
// listed with. Throws RemoteError (Protocol) for a page that stands between us and the server.
FetchedCard cardOf(const HttpAnswer& answer, const std::string& listedEtag);

// An ETag without "W/", for comparing as RFC 7232, section 2.3.2 does it weakly.
std::string_view opaqueTag(std::string_view etag);
bool isWeak(std::string_view etag);

}  // namespace ox::sync
