#include "ox/vcard/properties/property_names.hpp"

#include <array>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/name_table.hpp"

namespace ox::vcard {
namespace {

using enum Meaning;

constexpr std::array kRows = {
    PropertyRow{"VERSION", Version},
    PropertyRow{"N", Name},
    PropertyRow{"FN", FullName},
    PropertyRow{"NICKNAME", Text, property_id::kNickname},
    PropertyRow{"TITLE", Text, property_id::kJobTitle},
    PropertyRow{"X-MAIDENNAME", Text, property_id::kMaidenName},
    PropertyRow{"X-PHONETIC-FIRST-NAME", Text, property_id::kFirstPhonetic},
    PropertyRow{"X-PHONETIC-MIDDLE-NAME", Text, property_id::kMiddlePhonetic},
    PropertyRow{"X-PHONETIC-LAST-NAME", Text, property_id::kLastPhonetic},
    PropertyRow{"ORG", Organization},
    PropertyRow{"NOTE", Note},
    PropertyRow{"BDAY", Birthday},
    PropertyRow{"ANNIVERSARY", Date, 0, kABAnniversaryLabel},
    PropertyRow{"X-ANNIVERSARY", Date, 0, kABAnniversaryLabel},
    PropertyRow{"X-EVOLUTION-ANNIVERSARY", Date, 0, kABAnniversaryLabel},
    PropertyRow{"X-MS-ANNIVERSARY", Date, 0, kABAnniversaryLabel},
    PropertyRow{"X-ABDATE", Date},
    PropertyRow{"TEL", Phone},
    PropertyRow{"EMAIL", Email},
    PropertyRow{"URL", Url},
    PropertyRow{"ADR", Address},
    PropertyRow{"IMPP", MessageUri},
    PropertyRow{"X-AIM", Message, 0, kABInstantMessageServiceAIM},
    PropertyRow{"X-ICQ", Message, 0, kABInstantMessageServiceICQ},
    PropertyRow{"X-JABBER", Message, 0, kABInstantMessageServiceJabber},
    PropertyRow{"X-MSN", Message, 0, kABInstantMessageServiceMSN},
    PropertyRow{"X-YAHOO", Message, 0, kABInstantMessageServiceYahoo},
    PropertyRow{"X-SKYPE", Message, 0, kABInstantMessageServiceSkype},
    PropertyRow{"X-SKYPE-USERNAME", Message, 0, kABInstantMessageServiceSkype},
    PropertyRow{"X-GADUGADU", Message, 0, kABInstantMessageServiceGaduGadu},
    PropertyRow{"X-QQ", Message, 0, kABInstantMessageServiceQQ},
    PropertyRow{"X-GTALK", Message, 0, kABInstantMessageServiceGoogleTalk},
    PropertyRow{"X-GOOGLE-TALK", Message, 0, kABInstantMessageServiceGoogleTalk},
    PropertyRow{"X-FACEBOOK", Message, 0, kABInstantMessageServiceFacebook},
    PropertyRow{"X-SOCIALPROFILE", SocialProfile},
    PropertyRow{"X-ABRELATEDNAMES", Related},
    PropertyRow{"X-SPOUSE", Related, 0, kABSpouseLabel},
    PropertyRow{"X-EVOLUTION-SPOUSE", Related, 0, kABSpouseLabel},
    PropertyRow{"X-MS-SPOUSE", Related, 0, kABSpouseLabel},
    PropertyRow{"X-MANAGER", Related, 0, kABManagerLabel},
    PropertyRow{"X-EVOLUTION-MANAGER", Related, 0, kABManagerLabel},
    PropertyRow{"X-MS-MANAGER", Related, 0, kABManagerLabel},
    PropertyRow{"X-ASSISTANT", Related, 0, kABAssistantLabel},
    PropertyRow{"X-EVOLUTION-ASSISTANT", Related, 0, kABAssistantLabel},
    PropertyRow{"X-MS-ASSISTANT", Related, 0, kABAssistantLabel},
    PropertyRow{"RELATED", RelatedTyped},
    PropertyRow{"SOUND", Sound},
    PropertyRow{"PHOTO", Photo},
    PropertyRow{"UID", Uid},
    PropertyRow{"KIND", Kind},
    PropertyRow{"X-ADDRESSBOOKSERVER-KIND", Kind},
    PropertyRow{"MEMBER", Member},
    PropertyRow{"X-ADDRESSBOOKSERVER-MEMBER", Member},
    PropertyRow{"X-ABLABEL", Label},
    PropertyRow{"X-ABADR", CountryCode},
    PropertyRow{"X-OX-PROPERTY", ExactValues},
    PropertyRow{"X-OX-LINE", KeptLine},
};

constexpr PropertyRow kUnknown{"", Unmodelled};
constexpr NameTable kTable(kRows);

}  // namespace

const PropertyRow& propertyRow(std::string_view name) {
  const auto* row = kTable.find(name);
  return row != nullptr ? *row : kUnknown;
}

}  // namespace ox::vcard
