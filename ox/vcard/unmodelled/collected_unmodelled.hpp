#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/base/object.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

namespace ox::vcard {

// What the lines of a card have given so far that no property models: on the way into a record.
// property_id::kUnmodelledLines then holds one text each for
//
// - an unmodelled content line: unfolded, UTF-8, with its group, without quoted-printable and
//   CHARSET;
// - a nested card: the AGENT line that holds it and all its lines, parted by line feeds, which no
//   other form contains;
// - a detail of a modelled property, encoded (property_detail.hpp).
struct CollectedUnmodelled {
  std::vector<std::string> lines;       // in the order of the card
  std::vector<PropertyDetail> details;  // in any order
  // Those that lines of ours gave, which name entries by the places that these have in the end.
  std::vector<PropertyDetail> wrappedDetails;

  bool empty() const { return lines.empty() && details.empty() && wrappedDetails.empty(); }
  void clear();
  // Takes back what encoded() gave, be it a line or a detail.
  void addEncoded(std::string stored);
  // The details alone, in the order of encoded().
  Array encodedDetails() const;
  // The lines, then the details by what they belong to and what they tell, so that a card and the
  // one that is written of it give the same. Leaves nothing behind.
  Array encoded();
};

}  // namespace ox::vcard
