#pragma once

#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/source/card_slicer.hpp"

namespace ox::vcard {

// What has to be known of a card before its first line is read.
struct CardFacts {
  Dialect dialect = Dialect::V30;
  bool hasVersion = false;
  bool is40 = false;
  bool isGroup = false;
};

CardFacts factsOf(const RawCard& card);

}  // namespace ox::vcard
