#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"

// REV says when a card was changed last (RFC 6350, section 6.7.4). A card that we read keeps its
// REV together with a number for what the record said then: with other content it is not true any
// more.

namespace ox::vcard {

// For everything but the UID and what is kept.
std::string digestOfValues(const PropertyBag& properties);
// For the picture, null without one.
std::string digestOfPicture(const Data& photo);
// For a group's members, in any order.
std::string digestOfMembers(const std::vector<std::string>& members);

}  // namespace ox::vcard
