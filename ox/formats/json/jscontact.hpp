#pragma once

#include "ox/base/json_writer.hpp"
#include "ox/formats/card/written_card.hpp"

namespace ox::formats {

// The card as a Card object of JSContact (RFC 9553), converted as RFC 9555 says; lines that have no
// place in it are its vCardProps, parameters its vCardParams.
void writeJsContact(const WrittenCard& card, JsonWriter& out);

}  // namespace ox::formats
