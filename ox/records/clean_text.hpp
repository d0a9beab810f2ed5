#pragma once

#include "ox/records/property_bag.hpp"

namespace ox {

// Replaces invalid UTF-8 by U+FFFD in every text of the value, labels and dictionary keys included.
// Values that are clean are left as they are, shared ones too.
void cleanText(PropertyValue& value);
// True when something had to be replaced.
bool cleanText(PropertyBag& properties);

}  // namespace ox
