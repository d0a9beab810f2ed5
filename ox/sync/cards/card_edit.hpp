#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ox/sync/cards/card_content.hpp"

namespace ox::sync {

// What is written of REV (RFC 6350, section 6.7.4): the time in UTC, as 20261123T060700Z.
struct EditOptions {
  std::string revision;
};

// Their text edited so that it says `wanted` instead of `said` (what readCard gave of it): lines of
// properties that do not differ keep their bytes and their order, new ones are written as our
// exports write them, in the version of the text. Reading the result gives `wanted`, as far as that
// version can say it; REV is written, UID, FN and N are not missing. CRLF, one card.
std::string editedCard(std::string_view text, const CardContent& said, const CardContent& wanted,
                       const EditOptions& options);

// A card for what no text stands for yet.
std::string newCard(const CardContent& content, std::string_view uid, vcard::CardVersion version,
                    const EditOptions& options);

// The text with CRLF line ends and a final one, otherwise untouched: how a base is kept.
std::string withCrlf(std::string_view text);

// A name for a card's file: the UID where it can be one (A-Z a-z 0-9 - _ . alone, no dot in front,
// at most 100 long), else a new UUID.
std::string fileNameFor(std::string_view uid);

}  // namespace ox::sync
