#pragma once

#include "ox/vcard/properties/property_index.hpp"
#include "ox/vcard/values/entry_writer.hpp"

// Both directions of every property, as the index names them; each pair lives in the file that is
// named in its comment.

namespace ox::vcard {

// name.cpp: N, its readings
ReadProperty readName, readSound;
WriteProperty writeName;  // FN too
LacksProperty lacksReadings, lacksName;

// formatted_name.cpp: FN
ReadProperty readFormattedName;

// single_text.cpp: NICKNAME, TITLE, X-MAIDENNAME, X-PHONETIC-..., NOTE
ReadProperty readSingleText, readNote;
WriteProperty writeSingleText;
LacksProperty lacksSingleText;
LacksProperty lacksNote;

// organization.cpp: ORG
ReadProperty readOrganization;
WriteProperty writeOrganization;
LacksProperty lacksOrganization;

// dates.cpp: BDAY, ANNIVERSARY, X-ABDATE
ReadProperty readBirthday, readDate, readOtherDate, readAnniversary;
WriteProperty writeBirthday;
WriteEntry writeDate;

// phone_email_url.cpp: TEL, EMAIL, URL
ReadProperty readPhone, readEmail, readUrl;
WriteEntry writePhone, writeEmail, writeUrl;

// card_address.cpp: ADR, X-ABADR, LABEL
ReadProperty readAddress, readCountryCode, readAddressLabel;
WriteEntry writeAddress;
LacksProperty lacksAddress;

// card_message.cpp: IMPP, X-AIM and its like
ReadProperty readMessageUri, readMessageUser;
WriteEntry writeMessage;

// social_profile.cpp: X-SOCIALPROFILE, SOCIALPROFILE
ReadProperty readSocialProfile, readStandardProfile;
WriteEntry writeSocialProfile;

// related.cpp: RELATED, X-ABRELATEDNAMES, X-SPOUSE and its like
ReadProperty readRelated, readRelation;
WriteEntry writeRelated;

// android_custom.cpp: X-ANDROID-CUSTOM
ReadProperty readAndroidCustom;

// card_photo.cpp: PHOTO
ReadProperty readPhoto;
WriteProperty writePhoto;
LacksProperty lacksPhoto;

// uid.cpp: UID, MEMBER
ReadProperty readUid, readMember;
WriteProperty writeUid;

// frame_properties.cpp: VERSION, KIND, X-ABLabel; X-OX-PROPERTY and X-OX-LINE, which only we write
ReadProperty readLabel, readNothing, readStoredValues, readWrappedLine;

}  // namespace ox::vcard
