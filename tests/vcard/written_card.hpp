#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {

// The properties of one card of that version with the given lines, which end in line feeds.
PropertyBag propertiesOf(std::string_view version, std::string_view lines);

// What is written between VERSION and END: unfolded, with line feeds.
std::string linesOf(const PropertyBag& bag, WriteOptions options, const Data& photo = nullptr);

struct WrittenRow {
  PropertyBag bag;
  std::string in30;
  std::string in40;
};

// Expects linesOf of each row to be what the row says.
void expectWritten(const std::vector<WrittenRow>& rows);

// A card's lines, and those that are written of it in each version. The lines of its names go
// before: "N:Ray;Al;;;" and "FN:Al Ray".
struct ThroughRow {
  std::string version;
  std::string lines;
  std::string in30;
  std::string in40;
};

// Expects that, and that what is written reads back so that it is written again as it was.
void expectThrough(const std::vector<ThroughRow>& rows);

}  // namespace ox::vcard
