#include "ox/formats/person/stored_fields.hpp"

#include <algorithm>
#include <array>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/properties/card_address.hpp"

namespace ox::formats {
namespace {

using namespace property_id;

constexpr std::array kStoredSingles = {
    StoredSingle{Single::Prefix, kTitle},
    StoredSingle{Single::First, kFirst},
    StoredSingle{Single::Middle, kMiddle},
    StoredSingle{Single::Last, kLast},
    StoredSingle{Single::Suffix, kSuffix},
    StoredSingle{Single::FirstReading, kFirstPhonetic},
    StoredSingle{Single::MiddleReading, kMiddlePhonetic},
    StoredSingle{Single::LastReading, kLastPhonetic},
    StoredSingle{Single::Nickname, kNickname},
    StoredSingle{Single::MaidenName, kMaidenName},
    StoredSingle{Single::Organization, kOrganization},
    StoredSingle{Single::Department, kDepartment},
    StoredSingle{Single::JobTitle, kJobTitle},
    StoredSingle{Single::Note, kNote},
    StoredSingle{Single::Uid, kCardUid},
};

constexpr std::array kStoredKinds = {
    StoredKind{Kind::Email, kEmail},
    StoredKind{Kind::Phone, kPhone},
    StoredKind{Kind::Address, kAddress},
    StoredKind{Kind::Url, kURLs},
    StoredKind{Kind::Message, kInstantMessage},
    StoredKind{Kind::Profile, kSocialProfile},
    StoredKind{Kind::Related, kRelatedNames},
    StoredKind{Kind::Date, kOtherDates},
};

constexpr std::array kAddressParts = {
    StoredPart{Part::Street, kABAddressStreetKey},
    StoredPart{Part::City, kABAddressCityKey},
    StoredPart{Part::State, kABAddressStateKey},
    StoredPart{Part::Zip, kABAddressZIPKey},
    StoredPart{Part::Country, kABAddressCountryKey},
    StoredPart{Part::Box, vcard::kAddressPostOfficeBoxKey},
    StoredPart{Part::Extended, vcard::kAddressExtendedKey},
    StoredPart{Part::CountryCode, kABAddressCountryCodeKey},
};

constexpr std::array kMessageParts = {
    StoredPart{Part::User, kABInstantMessageUsernameKey},
    StoredPart{Part::Service, kABInstantMessageServiceKey},
};

constexpr std::array kProfileParts = {
    StoredPart{Part::Service, kABSocialProfileServiceKey},
    StoredPart{Part::User, kABSocialProfileUsernameKey},
    StoredPart{Part::Url, kABSocialProfileURLKey},
    StoredPart{Part::UserId, kABSocialProfileUserIdentifierKey},
};

bool isNothing(const std::string& text) {
  return text.empty();
}

}  // namespace

std::span<const StoredSingle> storedSingles() {
  return kStoredSingles;
}

std::optional<PropertyId> propertyOf(Single single) {
  if (single == Single::Birthday) return kBirthday;
  const auto* row = std::ranges::find(kStoredSingles, single, &StoredSingle::single);
  const bool isThere = row != kStoredSingles.end() && single != Single::Uid;
  return isThere ? std::optional(row->property) : std::nullopt;
}

PropertyId propertyOf(Kind kind) {
  return std::ranges::find(kStoredKinds, kind, &StoredKind::kind)->property;
}

std::span<const StoredKind> storedKinds() {
  return kStoredKinds;
}

std::span<const StoredPart> partsOf(Kind kind) {
  if (kind == Kind::Address) return kAddressParts;
  if (kind == Kind::Message) return kMessageParts;
  if (kind == Kind::Profile) return kProfileParts;
  return {};
}

bool FieldEntry::isEmpty() const {
  return std::ranges::all_of(parts, isNothing);
}

bool PersonFields::isEmpty() const {
  return std::ranges::all_of(singles, isNothing) && entries.empty() && tags.empty() &&
         others.empty() && !photo;
}

}  // namespace ox::formats
