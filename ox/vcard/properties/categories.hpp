#pragma once

#include <string>
#include <vector>

#include "ox/records/property_bag.hpp"

// CATEGORIES (RFC 2426, section 3.6.1; RFC 6350, section 6.7.1) of a person. No property holds
// them: the lines are preserved, and whoever holds tags makes tags of what they say.

namespace ox::vcard {

// What the preserved lines say, in their order, none twice, without blanks at the ends.
std::vector<std::string> categoriesOf(const PropertyBag& properties);

// Whether the categories of the record are held as tags: then these count and not the lines, which
// are only how a card wrote them. A record of an older store has the lines alone.
bool areCategoriesTags(const PropertyBag& properties);
// Does nothing when no line says a category.
void noteCategoriesAreTags(PropertyBag& properties);

}  // namespace ox::vcard
