#pragma once

#include <optional>

#include "ox/vcard/read/card.hpp"
#include "ox/vcard/read/card_builder.hpp"
#include "ox/vcard/source/card_lines.hpp"
#include "ox/vcard/source/card_slicer.hpp"
#include "ox/vcard/source/charset_evidence.hpp"

namespace ox::vcard {

// Makes cards of what was cut off a source, one after the other, so that its buffers are made once.
// Each thread has one of its own.
class CardMaker {
 public:
  // The evidence is borrowed.
  explicit CardMaker(CharsetEvidence& evidence)
      : lines_([&evidence](const RawCard& card) { return evidence.charsetFor(card); },
               evidence.given()) {}

  // Whether all cards that stand before this one are made. Custom properties are numbered in the
  // order in which the process meets them, so a card that may bring some has to wait.
  enum class Before { Made, Unknown };
  // Missing for a card that has to wait: `raw` is then as it was. `trustBytes` as CardLines has it.
  std::optional<CardResult> make(RawCard& raw, bool trustBytes, Before before);

 private:
  CardLines lines_;
  CardBuilder builder_;
};

}  // namespace ox::vcard
