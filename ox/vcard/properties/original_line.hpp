#pragma once

#include <cstdint>
#include <string_view>

#include "ox/vcard/values/card_draft.hpp"
#include "ox/vcard/values/entry_writer.hpp"

// Lines whose values we write under another name: X-AIM, which is IMPP, for one. A record keeps the
// line beside the value, and for as long as it gives that value it is written instead of ours: in
// 3.0 each that came by 2.1 or 3.0 and every extension, in 4.0 those that came by 4.0, which has
// properties of its own for the others. One that repeats another line of the card stands behind it.

namespace ox::vcard {

enum class Repeats : std::uint8_t { No, Yes };
enum class LineHolds : std::uint8_t { Text, Other };

// Preserves the line of the last entry of a property, or of its single value. Where that is a text
// the line is written with its escapes, otherwise as it stands.
void preserveOriginalLine(PropertyId property, const ContentLine& line, CardDraft& draft,
                          LineHolds holds, Repeats repeats = Repeats::No);

// Once all lines are read: what two lines say is one entry, and the other line repeats it.
void joinRepeatedEntries(CardDraft& draft);

// False when the entry has none, or none that gives the entry in this version.
bool writeOriginalLine(EntryWriter& entry);
// Has them written behind all entries of the property.
void writeRepeatedLines(EntryWriter& entry);
// The same of a single text.
bool writeOriginalLine(PropertyId property, std::string_view text, PropertyWriter& card);
void writeRepeatedLines(PropertyId property, std::string_view text, PropertyWriter& card);

}  // namespace ox::vcard
