#pragma once

#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "oxcontacts/output/json.hpp"

namespace ox::program {

// What a value holds: text, date ("1990-05-17"), list and dictionary as such, objects of the model
// as objects of their parts, a picture as its size.
Json jsonOf(const Object& object);

// {"value"} of a single value, {"values": [{"type","label","labelDisplayName","value","main"}]} of
// a multiple one.
Json jsonOf(const OxValue& value);

// The same on one line, for readers.
std::string readableText(const Object& object);

}  // namespace ox::program
