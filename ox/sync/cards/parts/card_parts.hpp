#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "ox/records/property_bag.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

namespace ox::sync {

// A line that has its place among others: so many of those stand before it.
using PlacedLine = std::pair<std::size_t, std::string>;

// What a record holds, sorted out by what a merge does with it.
struct CardParts {
  PropertyBag values;  // without UID and what is unmodelled
  Text uid;
  // Unmodelled lines as entries: the label is the name of the line in upper case, the value the
  // whole line.
  MultiValue lines;
  std::vector<vcard::PropertyDetail> details;  // of values
  // What tells of the card itself: REV and PRODID among the other lines, and the digests that REV
  // came with (ox/vcard/unmodelled/revision.hpp). No merge looks at it.
  std::vector<PlacedLine> cardLines;
  std::vector<vcard::PropertyDetail> cardDetails;
};

// Every property that one of the bags holds, by rising number.
std::vector<PropertyId> propertiesIn(const std::vector<const PropertyBag*>& bags);
// Missing, or a multi-value without entries.
bool isEmptyValue(const PropertyValue& value);

CardParts partsOf(const PropertyBag& properties);
PropertyBag bagOf(CardParts&& parts);

// The texts of property_id::kUnmodelledLines, and the bag with others of them.
std::vector<std::string> unmodelledTextsOf(const PropertyBag& properties);
void setUnmodelledTexts(PropertyBag& properties, const std::vector<std::string>& texts);

// The same with lines put back in their places.
std::vector<std::string> withPlacedLines(std::vector<std::string> lines,
                                         const std::vector<PlacedLine>& placed);

// Takes a preserved FN away that came with another name than the person has now: no card says it
// any more (docs/vcard-export.md).
void dropFormerName(PropertyBag& properties);

// The details of an entry, or of a single value (entry 0).
std::vector<vcard::PropertyDetail> detailsOf(const std::vector<vcard::PropertyDetail>& details,
                                             PropertyId property, std::uint64_t entry);
// Whether both tell the same, whatever entries they name.
bool tellTheSame(const std::vector<vcard::PropertyDetail>& a,
                 const std::vector<vcard::PropertyDetail>& b);

}  // namespace ox::sync
