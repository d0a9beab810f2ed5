#pragma once

#include <cstddef>

#include "ox/vcard/read/card.hpp"
#include "ox/vcard/values/card_draft.hpp"

namespace ox::vcard {

// Makes a Card of content lines: feed every line, then finish. Used for one card after the other,
// so that its buffers are made once.
class CardBuilder {
 public:
  void start(std::size_t line, const CardFacts& facts);
  void add(const ContentLine& line);
  // The card, without the repairs that the lines themselves made. Leaves the builder empty.
  Card finish();

 private:
  void preserve(const ContentLine& line);
  void preserveDigest(const Card& card);

  CardDraft draft_;
  std::size_t line_ = 0;  // of BEGIN
};

}  // namespace ox::vcard
