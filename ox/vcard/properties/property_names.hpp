#pragma once

#include <cstdint>
#include <string_view>

#include "ox/records/property_types.hpp"

namespace ox::vcard {

// What the reader does with a property. Several names may mean the same.
enum class Meaning : std::uint8_t {
  Unmodelled,
  Version,
  Name,
  FullName,
  Text,  // a single text: the row names the store's property
  Organization,
  Note,
  Birthday,
  Date,  // one entry of the other dates
  Phone,
  Email,
  Url,
  Address,
  Message,     // an account at the service of the row
  MessageUri,  // IMPP
  SocialProfile,
  Related,       // the row may name the relation
  RelatedTyped,  // RELATED of vCard 4.0
  Sound,
  Photo,
  Uid,
  Kind,
  Member,
  Label,        // X-ABLabel
  CountryCode,  // X-ABADR
  ExactValues,  // X-OX-PROPERTY, see exact_values.hpp
  KeptLine,     // X-OX-LINE
};

struct PropertyRow {
  std::string_view name;  // upper case
  Meaning meaning = Meaning::Unmodelled;
  PropertyId property = 0;         // of Meaning::Text
  std::string_view argument = {};  // a service, or a label
};

// The row of that property name, in any case. The row of an unknown name is Meaning::Unmodelled.
const PropertyRow& propertyRow(std::string_view name);

}  // namespace ox::vcard
