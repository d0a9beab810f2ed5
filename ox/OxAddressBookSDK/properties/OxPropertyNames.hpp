#pragma once

#include <string_view>

// The model's own names of person properties and address fields. Each is its own spelling, so none
// can be taken for a name of a store.

namespace ox {

inline constexpr std::string_view OxProPertyName = "OxProPertyName";
inline constexpr std::string_view OxProPertyThumbnail = "OxProPertyThumbnail";
inline constexpr std::string_view OxProPertyTags = "OxProPertyTags";
inline constexpr std::string_view OxProPertyPhone = "OxProPertyPhone";
inline constexpr std::string_view OxProPertyEmail = "OxProPertyEmail";
inline constexpr std::string_view OxProPertyTitle = "OxProPertyTitle";
inline constexpr std::string_view OxProPertySuffix = "OxProPertySuffix";
inline constexpr std::string_view OxProPertyMaidenName = "OxProPertyMaidenName";
inline constexpr std::string_view OxProPertyNickname = "OxProPertyNickname";
inline constexpr std::string_view OxProPertyCompany = "OxProPertyCompany";
inline constexpr std::string_view OxProPertyDepartment = "OxProPertyDepartment";
inline constexpr std::string_view OxProPertyJobTitle = "OxProPertyJobTitle";
inline constexpr std::string_view OxProPertyBirthday = "OxProPertyBirthday";
inline constexpr std::string_view OxProPertyFirstNamePhonetic = "OxProPertyFirstNamePhonetic";
inline constexpr std::string_view OxProPertyLastNamePhonetic = "OxProPertyLastNamePhonetic";
inline constexpr std::string_view OxProPertyURLs = "OxProPertyURLs";
inline constexpr std::string_view OxProPertyInstantMessage = "OxProPertyInstantMessage";
inline constexpr std::string_view OxProPertySocialProfile = "OxProPertySocialProfile";
inline constexpr std::string_view OxProPertyAddress = "OxProPertyAddress";
inline constexpr std::string_view OxProPertyRelatedNames = "OxProPertyRelatedNames";
inline constexpr std::string_view OxProPertyNote = "OxProPertyNote";
inline constexpr std::string_view OxProPertyOther = "OxProPertyOther";
inline constexpr std::string_view OxProPertyDate = "OxProPertyDate";

// The custom property of a store that holds the entries of OxProPertyOther.
inline constexpr std::string_view OxMacOtherProperty = "OxMacOtherProperty";

// Fields of a postal address.
inline constexpr std::string_view OxAddressFieldCountryOrArea = "OxAddressFieldCountryOrArea";
inline constexpr std::string_view OxAddressFieldState = "OxAddressFieldState";
inline constexpr std::string_view OxAddressFieldCity = "OxAddressFieldCity";
inline constexpr std::string_view OxAddressFieldStreet = "OxAddressFieldStreet";
inline constexpr std::string_view OxAddressFieldZIP = "OxAddressFieldZIP";

}  // namespace ox
