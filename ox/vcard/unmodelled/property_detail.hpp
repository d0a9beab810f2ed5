#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ox/records/property_types.hpp"

namespace ox::vcard {

// What a detail tells of its property.
enum class DetailKind : std::uint8_t {
  Parameters,  // parameters that no label stands for: ";TYPE=MODEM;X-SHARED=yes"
  SortAs,      // the parameter of N that gave the readings of the names: ";SORT-AS=Lee"
  Group,       // the group that the entry shares with unmodelled lines: "item1"
  Verbatim,    // the value as the card wrote it, where a writer would write it otherwise
  Preference,  // the rank of an entry, when being the primary one does not tell it: ";PREF=3"
  Line,        // a line of another name that gave the value (properties/original_line.hpp)
};

// What a card says of one property beside its value, so that a writer can say it again. A verbatim
// value counts for as long as the record holds what a reader makes of it. That of the last name is
// the whole of N, and FN counts as long as it does. That of the unmodelled lines themselves holds
// the digests of what the card held that REV came with (revision.hpp).
template <typename TextOfDetail>
struct Detail {
  PropertyId property = 0;
  std::uint64_t entry = 0;  // its identifier in the multi-value; 0 for a single value
  DetailKind kind = DetailKind::Parameters;
  TextOfDetail text = {};
};
using PropertyDetail = Detail<std::string>;
using DetailView = Detail<std::string_view>;  // borrowed

inline DetailView viewOf(const PropertyDetail& detail) {
  return {detail.property, detail.entry, detail.kind, detail.text};
}

// The photo has no property number of its own; its details have this one. Its verbatim value is the
// media type that the card gave when the bytes do not tell it.
inline constexpr PropertyId kPhotoDetails = 0;

// The stored form, which starts with a semicolon as no content line does: ";16#2;TYPE=MODEM" for
// the parameters of the entry 2 of the phones, ";20#1:sip:a@b" for a value, ";16#2.item1" for a
// group, ";20#1=3=X-AIM:ann" for a line. Stores hold it: never change it.
std::string encodeDetail(const DetailView& detail);
// The detail that a stored text holds, borrowed from it; missing when it is of another form.
std::optional<DetailView> decodeDetail(std::string_view stored);

// The detail that gives an entry's rank of preference.
PropertyDetail preferenceDetail(PropertyId property, std::uint64_t entry, unsigned rank);
// The rank, from 1 to 100; 0 for a detail of another kind.
unsigned rankOf(const DetailView& detail);

// Where the detail stands among those of its entry.
unsigned placeOf(DetailKind kind);

}  // namespace ox::vcard
