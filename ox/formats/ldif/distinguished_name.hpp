#pragma once

#include <string>
#include <string_view>

// Names of entries in a directory (RFC 4514) and the UIDs that stand for them.

namespace ox::formats {

// "uid=" and the plain UID, escaped: how our own entries are named.
std::string nameOfUid(std::string_view uid);
// The UID of a name of our own; of any other an LDAP URL (RFC 4516), the same for every spelling of
// the name in case and blanks. Empty for an empty name.
std::string uidOfName(std::string_view name);
// Whether the name is one of our own, which says nothing but the UID.
bool isNameOfUid(std::string_view name);

}  // namespace ox::formats
