#pragma once

#include "ox/OxAddressBookSDK/general/json_tree.hpp"
#include "ox/base/json_writer.hpp"
#include "ox/base/object.hpp"

namespace ox::book_format {

// Writes what a value of a neutral person holds, its pictures packed. Throws Unwritable when the
// file form has no room for it: a foreign host object, an impossible date, a picture that could not
// be packed, too deep a nesting.
void writeObject(JsonWriter& out, const Object& object);

// Reads what writeObject wrote, pictures still packed; takes the texts out of the node. Throws
// Unreadable.
Object readObject(JsonNode& node);

}  // namespace ox::book_format
