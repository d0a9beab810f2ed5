#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace ox::sync {

// How long a server wants to be left alone: Retry-After (RFC 9110, section 10.2.3) in seconds, or a
// date by the clock of the answer's own Date; without one by ours (milliseconds since 1970). At
// least one second and at most a day, since a slip of the other side must not silence us for ever.
// Missing for what is neither. Both headers may be null.
std::optional<std::chrono::seconds> askedPause(const std::string* retryAfter,
                                               const std::string* date, std::int64_t now);

}  // namespace ox::sync
