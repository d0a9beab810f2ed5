#pragma once

#include "ox/base/json_writer.hpp"
#include "ox/formats/card/written_card.hpp"

// jCard: RFC 7095.

namespace ox::formats {

// ["vcard", [...]]: every line of the card is one property (section 3.2).
void writeJCard(const WrittenCard& card, JsonWriter& out);

// [name, parameters, type, value...] (section 3.3). A line that tells no type and whose name has
// none by default is "unknown", its value as it stands (section 5.1).
void writeJCardProperty(const vcard::ContentLine& line, JsonWriter& out);

}  // namespace ox::formats
