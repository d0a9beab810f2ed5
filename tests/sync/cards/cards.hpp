#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/cards/card_edit.hpp"
#include "ox/sync/cards/card_merge.hpp"

namespace ox::sync {

// A card of that version with the given lines, which end in line feeds: with CRLF.
std::string cardText(std::string_view lines, std::string_view version = "3.0");

// What the text says; a failure of the test when it is no card.
CardContent contentOf(std::string_view text);

// The first entry with that value; a failure when there is none.
MultiEntry& entryOf(MultiValue& values, std::string_view value);

// The content with one property changed.
void setText(CardContent& content, PropertyId property, std::string_view value);
MultiValue listOf(const CardContent& content, PropertyId property);
void setList(CardContent& content, PropertyId property, MultiValue values);
// One entry of another value, added, and taken away.
void changeEntry(CardContent& content, PropertyId property, std::string_view value,
                 std::string_view now);
void addEntry(CardContent& content, PropertyId property, std::string_view value, Text label);
void removeEntry(CardContent& content, PropertyId property, std::string_view value);

// The values of a list as "label=value", "*" at the primary one; "-" for no label.
std::vector<std::string> textsOf(const CardContent& content, PropertyId property);

}  // namespace ox::sync
