#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ox::sync {

// How a login shows that it may.
enum class Scheme : std::uint8_t { Unknown, Basic, Digest, Bearer };

// basic, digest, bearer; empty and Unknown for each other.
std::string nameOf(Scheme scheme);
Scheme schemeNamed(const std::string& name);

// The scheme to answer a 401 by, for a user and a password: Digest where it can be computed (RFC
// 7616; with the body untouched), else Basic. What names no scheme at all means Basic. Missing
// where others alone are offered. Header names in lower case.
std::optional<Scheme> schemeAskedFor(
    const std::vector<std::pair<std::string, std::string>>& headers);

}  // namespace ox::sync
