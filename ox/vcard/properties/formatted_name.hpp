#pragma once

#include "ox/vcard/properties/full_name.hpp"
#include "ox/vcard/values/property_writer.hpp"

namespace ox::vcard {

// FN of a person whose name has these parts.
void writeFormattedName(const NameParts& parts, PropertyWriter& card);

}  // namespace ox::vcard
