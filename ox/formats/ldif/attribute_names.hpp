#pragma once

#include <array>
#include <string_view>

#include "ox/formats/person/person_fields.hpp"
#include "ox/records/property_keys.hpp"

// The attributes of a person that hold one of our values each: both ways through one table. What
// wants more thought than a table has (names, addresses, dates) stands in the reader and writer.

namespace ox::formats {

struct SingleAttribute {
  std::string_view name;
  Single single;
};
// Of several names for one value the first is written.
inline constexpr std::array kSingleAttributes = {
    SingleAttribute{"sn", Single::Last},
    SingleAttribute{"surname", Single::Last},
    SingleAttribute{"givenName", Single::First},
    SingleAttribute{"gn", Single::First},
    SingleAttribute{"mozillaNickname", Single::Nickname},
    SingleAttribute{"xmozillanickname", Single::Nickname},
    SingleAttribute{"o", Single::Organization},
    SingleAttribute{"organizationName", Single::Organization},
    SingleAttribute{"company", Single::Organization},
    SingleAttribute{"ou", Single::Department},
    SingleAttribute{"organizationalUnitName", Single::Department},
    SingleAttribute{"department", Single::Department},
    SingleAttribute{"title", Single::JobTitle},
    SingleAttribute{"description", Single::Note},
    SingleAttribute{"notes", Single::Note},
};

struct EntryAttribute {
  std::string_view name;
  Kind kind;
  std::string_view label;  // that the attribute says; empty: none
  std::string_view service = {};
};
// An entry whose label no row of its kind has is written under the first name of the kind.
inline constexpr std::array kEntryAttributes = {
    EntryAttribute{"mail", Kind::Email, {}},
    EntryAttribute{"mozillaSecondEmail", Kind::Email, {}},
    EntryAttribute{"xmozillasecondemail", Kind::Email, {}},
    EntryAttribute{"rfc822Mailbox", Kind::Email, {}},
    EntryAttribute{"telephoneNumber", Kind::Phone, kABWorkLabel},
    EntryAttribute{"homePhone", Kind::Phone, kABHomeLabel},
    EntryAttribute{"homeTelephoneNumber", Kind::Phone, kABHomeLabel},
    EntryAttribute{"mobile", Kind::Phone, kABPhoneMobileLabel},
    EntryAttribute{"mobile", Kind::Phone, kABPhoneiPhoneLabel},
    EntryAttribute{"mobileTelephoneNumber", Kind::Phone, kABPhoneMobileLabel},
    EntryAttribute{"cellPhone", Kind::Phone, kABPhoneMobileLabel},
    EntryAttribute{"facsimileTelephoneNumber", Kind::Phone, kABPhoneWorkFAXLabel},
    EntryAttribute{"facsimileTelephoneNumber", Kind::Phone, kABPhoneHomeFAXLabel},
    EntryAttribute{"facsimileTelephoneNumber", Kind::Phone, "_$!<OtherFAX>!$_"},
    EntryAttribute{"fax", Kind::Phone, kABPhoneWorkFAXLabel},
    EntryAttribute{"pager", Kind::Phone, kABPhonePagerLabel},
    EntryAttribute{"pagerTelephoneNumber", Kind::Phone, kABPhonePagerLabel},
    EntryAttribute{"labeledURI", Kind::Url, {}},
    EntryAttribute{"mozillaWorkUrl", Kind::Url, kABWorkLabel},
    EntryAttribute{"workurl", Kind::Url, kABWorkLabel},
    EntryAttribute{"mozillaHomeUrl", Kind::Url, kABHomeLabel},
    EntryAttribute{"homeurl", Kind::Url, kABHomeLabel},
    EntryAttribute{"nsAIMid", Kind::Message, {}, kABInstantMessageServiceAIM},
    EntryAttribute{"nscpaimscreenname", Kind::Message, {}, kABInstantMessageServiceAIM},
};

struct AddressAttribute {
  std::string_view name;
  std::string_view label;
  Part part;
};
// Two names of one part are lines of it.
inline constexpr std::array kAddressAttributes = {
    AddressAttribute{"street", kABWorkLabel, Part::Street},
    AddressAttribute{"streetAddress", kABWorkLabel, Part::Street},
    AddressAttribute{"mozillaWorkStreet2", kABWorkLabel, Part::Street},
    AddressAttribute{"postOfficeBox", kABWorkLabel, Part::Box},
    AddressAttribute{"l", kABWorkLabel, Part::City},
    AddressAttribute{"locality", kABWorkLabel, Part::City},
    AddressAttribute{"localityName", kABWorkLabel, Part::City},
    AddressAttribute{"st", kABWorkLabel, Part::State},
    AddressAttribute{"region", kABWorkLabel, Part::State},
    AddressAttribute{"stateOrProvinceName", kABWorkLabel, Part::State},
    AddressAttribute{"postalCode", kABWorkLabel, Part::Zip},
    AddressAttribute{"co", kABWorkLabel, Part::Country},
    AddressAttribute{"friendlyCountryName", kABWorkLabel, Part::Country},
    AddressAttribute{"c", kABWorkLabel, Part::CountryCode},
    AddressAttribute{"countryName", kABWorkLabel, Part::CountryCode},
    AddressAttribute{"postalAddress", kABWorkLabel, Part::Value},
    AddressAttribute{"mozillaHomeStreet", kABHomeLabel, Part::Street},
    AddressAttribute{"mozillaHomeStreet2", kABHomeLabel, Part::Street},
    AddressAttribute{"mozillaHomeLocalityName", kABHomeLabel, Part::City},
    AddressAttribute{"mozillaHomeState", kABHomeLabel, Part::State},
    AddressAttribute{"mozillaHomePostalCode", kABHomeLabel, Part::Zip},
    AddressAttribute{"mozillaHomeCountryName", kABHomeLabel, Part::Country},
    AddressAttribute{"homePostalAddress", kABHomeLabel, Part::Value},
};

}  // namespace ox::formats
