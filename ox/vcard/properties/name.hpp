#pragma once

#include <string>

#include "ox/vcard/values/card_draft.hpp"
#include "ox/vcard/values/property_writer.hpp"

namespace ox::vcard {

// Once all lines of a person's card are read: without N the formatted name gives the parts; beside
// N its line is preserved when it says something else.
void settleName(CardDraft& draft);
// The same for a group's card: its name, empty when the card tells none. An N that says something
// else is preserved.
std::string settleGroupName(CardDraft& draft);

// The lines that name a group: FN, which may be made of nothing, and N, which only 3.0 wants.
struct GroupNameLines {
  bool hasN = false;
  bool isFormatted = false;  // FN says the name
};
GroupNameLines groupNameLines(const PropertyWriter& card);
void writeGroupName(PropertyWriter& card);

}  // namespace ox::vcard
