#pragma once

#include <string>
#include <string_view>

#include "ox/base/record_key.hpp"

// How the UIDs of cards (RFC 6350, section 6.7.6) and the identifiers of records stand for each
// other.

namespace ox {

inline constexpr std::string_view kUrnPrefix = "urn:uuid:";

// The UID without a leading "urn:uuid:" and blanks at its ends: what UIDs and members are compared
// by.
std::string_view uidKey(std::string_view uid);

// The UID that a record of that identifier bears when no card gave it one: "urn:uuid:" and the UUID
// of one of our own, else the identifier itself.
std::string uidOfRecord(const RecordKey& key);
// The identifier that such a UID was made from, as far as the UID tells.
std::string recordOfUid(std::string_view uid, RecordKind kind);

}  // namespace ox
