#include "ox/vcard/properties/property_index.hpp"

#include <array>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/name_table.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/properties/original_line.hpp"

namespace ox::vcard {
namespace {

using namespace property_id;

template <WriteEntry* writeEntry>
void eachEntry(const PropertyRow& row, PropertyWriter& card) {
  writeEntries(card, row.property, writeEntry);
  card.writeRepeated();
}

// The same of a property that is also read under other names.
template <WriteEntry* writeEntry>
bool writeAsItCame(EntryWriter& entry) {
  const bool isExact = writeOriginalLine(entry) || writeEntry(entry);
  writeRepeatedLines(entry);
  return isExact;
}

// Reads a line of such a name.
template <ReadProperty* read, LineHolds holds>
bool readOtherName(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  const auto& entries = draft.values.multi(row.property).entries;
  const auto before = entries.size();
  if (!read(row, line, draft)) return false;
  if (entries.size() > before) preserveOriginalLine(row.property, line, draft, holds);
  return true;
}

constexpr PropertyRow textRow(std::string_view name, PropertyId property) {
  return {name, readSingleText, writeSingleText, property, {}, lacksSingleText};
}

// A name of a date, an account or a relation that we read and do not write.
constexpr PropertyRow dateRow(std::string_view name, std::string_view label) {
  return {name, readOtherDate, nullptr, kOtherDates, label};
}
constexpr PropertyRow messageRow(std::string_view name, std::string_view service) {
  return {name, readOtherName<readMessageUser, LineHolds::Text>, nullptr, kInstantMessage, service};
}
constexpr PropertyRow relationRow(std::string_view name, std::string_view label) {
  return {name, readOtherName<readRelation, LineHolds::Text>, nullptr, kRelatedNames, label};
}

// A property of the card as a whole.
constexpr PropertyRow cardRow(std::string_view name, ReadProperty* read, CardsWith in) {
  return {name, read, nullptr, 0, {}, nullptr, in};
}

// A card is written in the order of the rows.
constexpr std::array kRows = {
    PropertyRow{"N", readName, writeName, 0, {}, lacksName, CardsWith::Both},
    PropertyRow{"FN", readFormattedName, nullptr, 0, {}, nullptr, CardsWith::Both},
    textRow("NICKNAME", kNickname),
    textRow("X-MAIDENNAME", kMaidenName),
    textRow("X-PHONETIC-FIRST-NAME", kFirstPhonetic),
    textRow("X-PHONETIC-MIDDLE-NAME", kMiddlePhonetic),
    textRow("X-PHONETIC-LAST-NAME", kLastPhonetic),
    PropertyRow{"SOUND", readSound, nullptr, 0, {}, lacksReadings},
    PropertyRow{"ORG", readOrganization, writeOrganization, kOrganization, {}, lacksOrganization},
    textRow("TITLE", kJobTitle),
    PropertyRow{"BDAY", readBirthday, writeBirthday, kBirthday},
    PropertyRow{"TEL", readPhone, eachEntry<writePhone>, kPhone},
    PropertyRow{"EMAIL", readEmail, eachEntry<writeEmail>, kEmail},
    PropertyRow{"URL", readUrl, eachEntry<writeUrl>, kURLs},
    PropertyRow{"IMPP", readMessageUri, eachEntry<writeAsItCame<writeMessage>>, kInstantMessage},
    messageRow("X-AIM", kABInstantMessageServiceAIM),
    messageRow("X-ICQ", kABInstantMessageServiceICQ),
    messageRow("X-JABBER", kABInstantMessageServiceJabber),
    messageRow("X-MSN", kABInstantMessageServiceMSN),
    messageRow("X-YAHOO", kABInstantMessageServiceYahoo),
    messageRow("X-SKYPE", kABInstantMessageServiceSkype),
    messageRow("X-SKYPE-USERNAME", kABInstantMessageServiceSkype),
    messageRow("X-GADUGADU", kABInstantMessageServiceGaduGadu),
    messageRow("X-QQ", kABInstantMessageServiceQQ),
    messageRow("X-GTALK", kABInstantMessageServiceGoogleTalk),
    messageRow("X-GOOGLE-TALK", kABInstantMessageServiceGoogleTalk),
    messageRow("X-GOOGLE TALK", kABInstantMessageServiceGoogleTalk),
    messageRow("X-GOOGLETALK", kABInstantMessageServiceGoogleTalk),
    messageRow("X-FACEBOOK", kABInstantMessageServiceFacebook),
    messageRow("X-GROUPWISE", "GroupWise"),
    messageRow("X-IRC", "IRC"),
    messageRow("X-MATRIX", "Matrix"),
    messageRow("X-SIGNAL", "Signal"),
    messageRow("X-SIP", "SIP"),
    messageRow("X-TELEGRAM", "Telegram"),
    messageRow("X-TWITTER", "Twitter"),
    messageRow("X-WHATSAPP", "WhatsApp"),
    messageRow("X-KADDRESSBOOK-X-IMADDRESS", {}),
    messageRow("X-MS-IMADDRESS", {}),
    PropertyRow{"X-SOCIALPROFILE", readSocialProfile, eachEntry<writeAsItCame<writeSocialProfile>>,
                kSocialProfile},
    PropertyRow{"SOCIALPROFILE", readOtherName<readStandardProfile, LineHolds::Other>, nullptr,
                kSocialProfile},
    PropertyRow{"ADR", readAddress, eachEntry<writeAddress>, kAddress},
    PropertyRow{"X-ABADR", readCountryCode, nullptr, kAddress},
    PropertyRow{"LABEL", readAddressLabel, nullptr, kAddress, {}, lacksAddress},
    PropertyRow{"RELATED", readRelated, eachEntry<writeAsItCame<writeRelated>>, kRelatedNames},
    PropertyRow{"X-ABRELATEDNAMES", readRelation, nullptr, kRelatedNames},
    relationRow("X-SPOUSE", kABSpouseLabel),
    relationRow("X-EVOLUTION-SPOUSE", kABSpouseLabel),
    relationRow("X-MS-SPOUSE", kABSpouseLabel),
    relationRow("X-MANAGER", kABManagerLabel),
    relationRow("X-EVOLUTION-MANAGER", kABManagerLabel),
    relationRow("X-MS-MANAGER", kABManagerLabel),
    relationRow("X-ASSISTANT", kABAssistantLabel),
    relationRow("X-EVOLUTION-ASSISTANT", kABAssistantLabel),
    relationRow("X-MS-ASSISTANT", kABAssistantLabel),
    relationRow("X-MS-CHILD", kABChildLabel),
    relationRow("X-KADDRESSBOOK-X-SPOUSESNAME", kABSpouseLabel),
    relationRow("X-KADDRESSBOOK-X-MANAGERSNAME", kABManagerLabel),
    relationRow("X-KADDRESSBOOK-X-ASSISTANTSNAME", kABAssistantLabel),
    PropertyRow{"X-ABDATE", readDate, eachEntry<writeAsItCame<writeDate>>, kOtherDates},
    PropertyRow{"ANNIVERSARY", readAnniversary, nullptr, kOtherDates, kABAnniversaryLabel},
    dateRow("X-ANNIVERSARY", kABAnniversaryLabel),
    dateRow("X-EVOLUTION-ANNIVERSARY", kABAnniversaryLabel),
    dateRow("X-MS-ANNIVERSARY", kABAnniversaryLabel),
    dateRow("X-KADDRESSBOOK-X-ANNIVERSARY", kABAnniversaryLabel),
    PropertyRow{"X-ANDROID-CUSTOM", readAndroidCustom},
    PropertyRow{"NOTE", readNote, writeSingleText, kNote, {}, lacksNote},
    PropertyRow{"PHOTO", readPhoto, writePhoto, 0, {}, lacksPhoto},
    PropertyRow{"UID", readUid, writeUid, 0, {}, nullptr, CardsWith::Both},
    cardRow("MEMBER", readMember, CardsWith::Groups),
    cardRow("X-ADDRESSBOOKSERVER-MEMBER", readMember, CardsWith::Groups),
    cardRow("KIND", readNothing, CardsWith::Groups),
    cardRow("X-ADDRESSBOOKSERVER-KIND", readNothing, CardsWith::Groups),
    cardRow("VERSION", readNothing, CardsWith::Both),
    cardRow("X-ABLABEL", readLabel, CardsWith::Persons),
    cardRow("X-OX-PROPERTY", readStoredValues, CardsWith::Persons),
    cardRow("X-OX-LINE", readWrappedLine, CardsWith::Both),
};

constexpr NameTable kTable(kRows);

}  // namespace

const PropertyRow* findProperty(std::string_view name) {
  return kTable.find(name);
}

void writeProperties(PropertyWriter& card) {
  for (const auto& row : kRows) {
    if (row.write != nullptr) row.write(row, card);
  }
}

}  // namespace ox::vcard
