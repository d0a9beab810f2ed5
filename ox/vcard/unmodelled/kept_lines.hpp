#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ox/records/property_types.hpp"

// What stands in property_id::kUnmodelledLines, one text each, so that a writer can give back what
// no property models:
//
// - a content line: unfolded, UTF-8, its group kept, quoted-printable and CHARSET undone;
// - a nested card: the AGENT line that holds it and all its lines, parted by line feeds (no other
//   form contains one);
// - a detail of a modelled property: a semicolon first, see KeptDetail.

namespace ox::vcard {

// What a card says of one property beside its value. The first character tells what it is:
//
// - ';' parameters that no label stands for: ";16#2;TYPE=MODEM;X-SHARED=yes" belongs to the entry 2
//   of the phones;
// - ':' how the card spelt the value, when a writer would spell it otherwise: ";20#1:sip:a@b". It
//   counts for as long as the record holds what a reader makes of it. That of the last name spells
//   all of N, and what the card said in FN counts as long as it does.
// - '.' the group that it shares with lines that were kept: ";16#2.item1".
//
// ";16#2;PREF=3" is the rank of an entry, when being the primary one does not say it.
// ";97#0:..." is what the record said as a whole when its REV was true, see revision.hpp.
// ";14#0;SORT-AS=..." is the parameter of N that gave the readings of the names.
struct KeptDetail {
  PropertyId property = 0;
  std::uint64_t entry = 0;  // its identifier in the multi-value; 0 for a single value
  std::string_view said;    // from the character on that tells what it is

  bool isSpelling() const { return !said.empty() && said.front() == ':'; }
  bool isGroup() const { return !said.empty() && said.front() == '.'; }
  bool isSortAs() const;
  // Of ";PREF=3"; 0 when it is anything else.
  unsigned rank() const;
  std::string text() const;
};

// What groups of lines are compared by.
std::string groupKey(std::string_view group);

// The photo has no property number of its own; its parameters are kept under this one, and the
// media type that the card gave when the bytes do not tell it: ";0#0:image/x-own".
inline constexpr PropertyId kPhotoParameters = 0;

// The detail that such a text keeps, borrowed from it; missing when it is of another form.
std::optional<KeptDetail> readKeptDetail(std::string_view kept);

}  // namespace ox::vcard
