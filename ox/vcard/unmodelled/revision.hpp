#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"

// REV tells when a card was changed last (RFC 6350, section 6.7.4). The record of a card keeps it
// together with digests of what the card held: once the record holds something else, REV is not
// true any more, and no card is written with it.

namespace ox::vcard {

// Of all properties but the UID and what is unmodelled.
std::string digestOfValues(const PropertyBag& properties);
// Of the picture, null without one.
std::string digestOfPicture(const Data& photo);
// Of a group's members, in any order.
std::string digestOfMembers(const std::vector<std::string>& members);

}  // namespace ox::vcard
