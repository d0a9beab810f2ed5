#pragma once

#include <string>

#include "ox/vcard/values/card_draft.hpp"
#include "ox/vcard/values/property_writer.hpp"

namespace ox::vcard {

// Once all lines of a person's card are read: without N the formatted name gives the parts; beside
// N its line is preserved when it says something else.
void settleName(CardDraft& draft);
// The same for a group's card: an N that says something else than the name is preserved.
void settleGroupName(CardDraft& draft);
// The name of a group's card, empty when it tells none.
std::string groupNameOf(CardDraft& draft);

// The lines that name a group: FN, which may be made of nothing, and N, which only 3.0 wants.
struct GroupNameLines {
  bool hasN = false;
  bool isFormatted = false;  // FN says the name
};
GroupNameLines groupNameLines(const PropertyWriter& card);
void writeGroupName(PropertyWriter& card);

}  // namespace ox::vcard
