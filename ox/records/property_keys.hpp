#pragma once

#include <string_view>

// The store's own names of properties, labels and dictionary entries, as records hold them.

namespace ox {

// Properties of a person.
inline constexpr std::string_view kABFirstNameProperty = "First";
inline constexpr std::string_view kABMiddleNameProperty = "Middle";
inline constexpr std::string_view kABLastNameProperty = "Last";
inline constexpr std::string_view kABFirstNamePhoneticProperty = "FirstPhonetic";
inline constexpr std::string_view kABMiddleNamePhoneticProperty = "MiddlePhonetic";
inline constexpr std::string_view kABLastNamePhoneticProperty = "LastPhonetic";
inline constexpr std::string_view kABTitleProperty = "Title";
inline constexpr std::string_view kABSuffixProperty = "Suffix";
inline constexpr std::string_view kABMaidenNameProperty = "MaidenName";
inline constexpr std::string_view kABNicknameProperty = "Nickname";
inline constexpr std::string_view kABOrganizationProperty = "Organization";
inline constexpr std::string_view kABDepartmentProperty = "Department";
inline constexpr std::string_view kABJobTitleProperty = "JobTitle";
inline constexpr std::string_view kABBirthdayProperty = "Birthday";
inline constexpr std::string_view kABNoteProperty = "Note";
inline constexpr std::string_view kABPhoneProperty = "Phone";
inline constexpr std::string_view kABEmailProperty = "Email";
inline constexpr std::string_view kABURLsProperty = "URLs";
inline constexpr std::string_view kABInstantMessageProperty = "InstantMessage";
inline constexpr std::string_view kABSocialProfileProperty = "SocialProfile";
inline constexpr std::string_view kABAddressProperty = "Address";
inline constexpr std::string_view kABRelatedNamesProperty = "RelatedNames";
inline constexpr std::string_view kABOtherDatesProperty = "OtherDates";

// Properties of a group.
inline constexpr std::string_view kABGroupNameProperty = "GroupName";

// Labels of multi-value entries.
inline constexpr std::string_view kABHomeLabel = "_$!<Home>!$_";
inline constexpr std::string_view kABWorkLabel = "_$!<Work>!$_";
inline constexpr std::string_view kABOtherLabel = "_$!<Other>!$_";
inline constexpr std::string_view kABMobileMeLabel = "_$!<MobileMe>!$_";
inline constexpr std::string_view kABHomePageLabel = "_$!<HomePage>!$_";
inline constexpr std::string_view kABPhoneMobileLabel = "_$!<Mobile>!$_";
inline constexpr std::string_view kABPhoneiPhoneLabel = "_$!<iPhone>!$_";
inline constexpr std::string_view kABPhoneMainLabel = "_$!<Main>!$_";
inline constexpr std::string_view kABPhoneHomeFAXLabel = "_$!<HomeFAX>!$_";
inline constexpr std::string_view kABPhoneWorkFAXLabel = "_$!<WorkFAX>!$_";
inline constexpr std::string_view kABPhonePagerLabel = "_$!<Pager>!$_";
inline constexpr std::string_view kABFatherLabel = "_$!<Father>!$_";
inline constexpr std::string_view kABMotherLabel = "_$!<Mother>!$_";
inline constexpr std::string_view kABParentLabel = "_$!<Parent>!$_";
inline constexpr std::string_view kABBrotherLabel = "_$!<Brother>!$_";
inline constexpr std::string_view kABSisterLabel = "_$!<Sister>!$_";
inline constexpr std::string_view kABChildLabel = "_$!<Child>!$_";
inline constexpr std::string_view kABFriendLabel = "_$!<Friend>!$_";
inline constexpr std::string_view kABSpouseLabel = "_$!<Spouse>!$_";
inline constexpr std::string_view kABPartnerLabel = "_$!<Partner>!$_";
inline constexpr std::string_view kABAssistantLabel = "_$!<Assistant>!$_";
inline constexpr std::string_view kABManagerLabel = "_$!<Manager>!$_";
inline constexpr std::string_view kABAnniversaryLabel = "_$!<Anniversary>!$_";

// Entries of an address dictionary.
inline constexpr std::string_view kABAddressStreetKey = "Street";
inline constexpr std::string_view kABAddressCityKey = "City";
inline constexpr std::string_view kABAddressStateKey = "State";
inline constexpr std::string_view kABAddressZIPKey = "ZIP";
inline constexpr std::string_view kABAddressCountryKey = "Country";
inline constexpr std::string_view kABAddressCountryCodeKey = "CountryCode";
// The address as its card has it written on an envelope; no field of the model.
inline constexpr std::string_view kAddressLabelKey = "Label";

// Entries of an instant-message dictionary.
inline constexpr std::string_view kABInstantMessageUsernameKey = "InstantMessageUsername";
inline constexpr std::string_view kABInstantMessageServiceKey = "InstantMessageService";

// Services of an instant-message dictionary.
inline constexpr std::string_view kABInstantMessageServiceAIM = "AIM";
inline constexpr std::string_view kABInstantMessageServiceFacebook = "Facebook";
inline constexpr std::string_view kABInstantMessageServiceGaduGadu = "GaduGadu";
inline constexpr std::string_view kABInstantMessageServiceGoogleTalk = "GoogleTalk";
inline constexpr std::string_view kABInstantMessageServiceICQ = "ICQ";
inline constexpr std::string_view kABInstantMessageServiceJabber = "Jabber";
inline constexpr std::string_view kABInstantMessageServiceMSN = "MSN";
inline constexpr std::string_view kABInstantMessageServiceQQ = "QQ";
inline constexpr std::string_view kABInstantMessageServiceSkype = "Skype";
inline constexpr std::string_view kABInstantMessageServiceYahoo = "Yahoo";

// Entries of a social-profile dictionary.
inline constexpr std::string_view kABSocialProfileServiceKey = "serviceName";
inline constexpr std::string_view kABSocialProfileUsernameKey = "username";
inline constexpr std::string_view kABSocialProfileURLKey = "url";
inline constexpr std::string_view kABSocialProfileUserIdentifierKey = "identifier";

}  // namespace ox
