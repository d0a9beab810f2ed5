#pragma once

#include <string_view>

namespace ox {

// The ID of the local book, and the tag store of a book without an ID.
inline constexpr std::string_view OxMacAddressBookID = "_local";
inline constexpr std::string_view OxMacAddressBookTagsID = "mac_addressbookTagsID";

// Names of the services' books.
inline constexpr std::string_view OxAddressBookQQName = "QQ";
inline constexpr std::string_view OxAddressGoogleName = "Google";
inline constexpr std::string_view OxAddressFaceBookName = "FaceBook";
inline constexpr std::string_view OxAddressYahooName = "Yahoo";
inline constexpr std::string_view OxAddressLinkedinName = "Linkedin";
inline constexpr std::string_view OxAddressAolName = "Aol";
inline constexpr std::string_view OxAddressExchangeName = "Exchange";
inline constexpr std::string_view OxAddressICloudName = "iCloud";
// For hosts: a book of any other service keeps its container's name.
inline constexpr std::string_view OxAddressOtherName = "Other";

}  // namespace ox
