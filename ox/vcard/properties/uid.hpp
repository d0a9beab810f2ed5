#pragma once

#include <string>
#include <string_view>

// UID is any text in vCard 3.0; in 4.0 UID is a URI by default and MEMBER always (RFC 6350,
// sections 6.7.6 and 6.6.5), so that both name a record alike.

namespace ox::vcard {

// The parameter of a UID in 4.0 that is a UUID without "urn:uuid:" in the record.
inline constexpr std::string_view kBareUid = "X-OX-BARE";

// True for the 36 characters of RFC 4122, section 3.
bool isUuid(std::string_view text);

// A UID as a URI: as it is when it is one, "urn:uuid:" before a UUID, else "x-ox-uid:" and its text
// with percent escapes.
std::string uriOfUid(std::string_view uid);
// The UID that a value of UID or MEMBER means: undoes "x-ox-uid:" and takes any other as it is.
std::string uidOfValue(std::string_view value);

}  // namespace ox::vcard
