#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"

namespace ox::vcard {

// Something that was mended, passed over or refused, with the 1-based line of the file.
struct Problem {
  std::size_t line = 0;
  std::string reason;

  bool operator==(const Problem&) const = default;
};

// One card, decoded into what records hold. A value.
struct Card {
  // KIND:group or X-ADDRESSBOOKSERVER-KIND:group: `properties` then holds a group's name
  // (property_id::kGroupName), its UID and its unmodelled lines only.
  bool isGroup = false;
  // Multi-values number their entries 1, 2, 3... in the order of the card, so that equal cards give
  // equal properties. property_id::kUnmodelledLines holds what kept_lines.hpp describes.
  PropertyBag properties;
  // The picture's own bytes, decoded from the transport encoding only; null when the card has none.
  Data photo;
  // Of a group: the UIDs of its members as uidKey gives them, in order.
  std::vector<std::string> members;
  // What was mended while reading, in order; empty for a clean card.
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

// Entries of an address dictionary beside the public ones: the first two components of ADR (RFC
// 6350, section 6.3.1) exactly as the card gave them. They also stand as the first lines of the
// street, where a reader of the record sees them; a writer takes them off there again.
inline constexpr std::string_view kAddressPostOfficeBoxKey = "POBox";
inline constexpr std::string_view kAddressExtendedKey = "Extended";

}  // namespace ox::vcard
