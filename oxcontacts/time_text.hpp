#pragma once

#include <cstdint>
#include <string>

namespace ox::program {

// A time, in milliseconds since 1970, as "2026-12-31T23:59:59Z".
std::string utcTime(std::int64_t milliseconds);
// The same as the user's clock shows it: "2026-12-31 23:59:59".
std::string localTime(std::int64_t milliseconds);

// The last millisecond of what the user wrote: "2026-12-31", with a time "2026-12-31 23:59" or
// "2026-12-31T23:59:59", in the user's time zone or, with a Z behind it, in UTC. A CommandError of
// kUsage when it is none of these.
std::int64_t endOfTime(const std::string& text);

}  // namespace ox::program
