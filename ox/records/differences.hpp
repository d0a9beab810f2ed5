#pragma once

#include "ox/records/property_bag.hpp"

namespace ox {

// The properties in which two bags differ, as each has them.
struct Differences {
  PropertyBag before;
  PropertyBag after;

  bool empty() const { return before.empty() && after.empty(); }
};

Differences differences(const PropertyBag& before, const PropertyBag& after);

}  // namespace ox
