#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ox/records/property_bag.hpp"

// The line X-OX-PROPERTY of a card that we wrote: values that no other line of it gives exactly.
// Custom properties are there; so are control characters, empty texts, dates of which vCard 3.0
// knows no form. Its value is base64 of encodeProperties (ox/records/property_codec.hpp).

namespace ox::vcard {

inline constexpr std::string_view kStoredValuesName = "X-OX-PROPERTY";

std::string storedTextOf(const PropertyBag& properties);

// Missing when the text is no such value, or would make more custom properties known than a process
// should hold.
std::optional<PropertyBag> valuesOfStoredText(std::string_view text);

// The value with its entries numbered from 1 on, as a reader of a card counts them: the details
// that stand beside a value name its entries so.
PropertyValue asNumbered(const PropertyValue& value);

// Puts such values into what was read of the card's other lines. A value counts as long as those
// lines still say what we wrote of it; when another program has changed them, they win. `details`
// are those that the card gives, as records hold them: they shape what a writer makes of a value.
void takeStoredValues(const PropertyBag& stored, Array details, PropertyBag& properties);

}  // namespace ox::vcard
