#pragma once

#include <string_view>

#include "ox/vcard/values/property_writer.hpp"

// UID is any text in vCard 3.0; in 4.0 it is a URI, or a text that says so, and MEMBER is a URI
// always (RFC 6350, sections 6.7.6 and 6.6.5). Both name a record alike once uidKey is taken.

namespace ox::vcard {

// UID of the record, else the one that it is given when it came from no card.
void writeUidLine(PropertyWriter& card);
// The line of a group that names one of its members by its UID.
void writeMember(std::string_view member, PropertyWriter& card);

}  // namespace ox::vcard
