#pragma once

#include "ox/vcard/source/card_slicer.hpp"
#include "ox/vcard/values/card_draft.hpp"

namespace ox::vcard {

// Looks through a card for what has to be known before its first line is read.
CardFacts factsOf(const RawCard& card);

}  // namespace ox::vcard
