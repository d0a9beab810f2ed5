#pragma once

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/vcard/lines/problem.hpp"

namespace ox::vcard {

// One card, decoded into what records hold. A value.
struct Card {
  // KIND:group or X-ADDRESSBOOKSERVER-KIND:group: `properties` then holds a group's name
  // (property_id::kGroupName), its UID and its unmodelled lines only.
  bool isGroup = false;
  // Multi-values number their entries 1, 2, 3... in the order of the card, so that equal cards give
  // equal properties. property_id::kUnmodelledLines holds what collected_unmodelled.hpp describes.
  PropertyBag properties;
  // The picture's own bytes, decoded from the transport encoding only; null when the card has none.
  Data photo;
  // Of a group: the UIDs of its members as uidKey gives them, in order.
  std::vector<std::string> members;
  // What text that is no UTF-8 and names no charset was taken to be in; empty when there is none.
  std::string charset;
  // What was repaired while reading, in order; empty for a clean card.
  std::vector<Problem> repairs;
  // Where its BEGIN stands.
  std::size_t line = 0;
};

// A card that could not be read, or not without guessing.
struct Refusal {
  std::size_t line = 0;  // of its BEGIN
  std::string reason;

  bool operator==(const Refusal&) const = default;
};

using CardResult = std::variant<Card, Refusal>;

}  // namespace ox::vcard
