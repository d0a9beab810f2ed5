#include "random_card.hpp"

#include <array>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/properties/card_address.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

using namespace std::string_view_literals;

namespace ox::vcard {
namespace {

constexpr std::array kPieces = {
    "a"sv,         "Ann"sv,         "Lee"sv,      " "sv,
    ","sv,         ";"sv,           ":"sv,        R"(\)"sv,
    "\n"sv,        R"(")"sv,        "'"sv,        "^"sv,
    "="sv,         "%41"sv,         "."sv,        "\t"sv,
    "山田"sv,      "太郎"sv,        "김"sv,       "Ж"sv,
    "ي"sv,         "é"sv,           "e\u0301"sv,  "👨‍👩‍👧"sv,
    "🇩🇪"sv,        "\u00A0"sv,      "\u2028"sv,   "+1 555"sv,
    "END:VCARD"sv, "BEGIN:VCARD"sv, "tel:"sv,     "mailto:"sv,
    "http://x/"sv, "urn:uuid:"sv,   "x-apple:"sv, "a@b.example"sv,
    R"(\n)"sv,     R"(\,)"sv,       "item1."sv,   "long word without any end to it "sv,
};
constexpr std::array kOddPieces = {"\r"sv, "\r\n"sv, "\0"sv, "\x01"sv, "\x1B"sv, "\x7F"sv, "\v"sv};

constexpr std::array kLabels = {
    kABHomeLabel,         kABWorkLabel,         kABOtherLabel,       kABMobileMeLabel,
    kABHomePageLabel,     kABPhoneMobileLabel,  kABPhoneiPhoneLabel, kABPhoneMainLabel,
    kABPhoneHomeFAXLabel, kABPhoneWorkFAXLabel, kABPhonePagerLabel,  kABFatherLabel,
    kABFriendLabel,       kABSpouseLabel,       kABManagerLabel,     kABAnniversaryLabel,
    "_$!<OtherFAX>!$_"sv,
};

constexpr std::array kServices = {"AIM"sv,   "Facebook"sv, "GaduGadu"sv, "GoogleTalk"sv,
                                  "ICQ"sv,   "Jabber"sv,   "MSN"sv,      "QQ"sv,
                                  "Skype"sv, "Yahoo"sv};

constexpr std::array kKept = {";X-SHARED=yes"sv, ";TYPE=MODEM"sv, R"(;PID=1.1;X-A="b;c:d")"sv,
                              R"(;X-BAD=5")"sv};

// With the identifiers that the reader gives, which kept parameters name.
std::uint64_t add(MultiValue& values, Object value, Text label) {
  const auto number = values.entries.size() + 1;
  values.entries.push_back({number, std::move(label), std::move(value)});
  return number;
}

}  // namespace

std::string RandomCards::text() {
  std::string text;
  if (oneIn(40)) return text;
  std::size_t pieces = 1 + below(oneIn(12) ? 60 : 4);
  const bool odd = oneIn(12);
  while (pieces-- > 0) {
    text += odd && oneIn(3) ? kOddPieces[below(kOddPieces.size())] : kPieces[below(kPieces.size())];
  }
  return text;
}

Text RandomCards::label(PropertyId property) {
  if (oneIn(4)) return std::nullopt;
  if (oneIn(4)) return text();
  if (oneIn(2)) return std::string(below(2) == 0 ? kABHomeLabel : kABWorkLabel);
  if (property == property_id::kOtherDates && oneIn(2)) return std::string(kABAnniversaryLabel);
  return std::string(kLabels[below(kLabels.size())]);
}

Date RandomCards::date() {
  while (true) {
    Date date;
    if (!oneIn(3)) date.year = static_cast<std::int16_t>(oneIn(8) ? 1604 : below(2100));
    if (!oneIn(8)) date.month = static_cast<std::uint8_t>(1 + below(12));
    if (date.month ? !oneIn(8) : !date.year) date.day = static_cast<std::uint8_t>(1 + below(28));
    if (oneIn(4)) date.secondOfDay = static_cast<std::int32_t>(below(86401));
    if (oneIn(6))
      date.utcOffsetMinutes = static_cast<std::int16_t>(static_cast<int>(below(1600)) - 800);
    // Others are never held.
    if (Date::fromText(date.toText()) == date) return date;
  }
}

Object RandomCards::address() {
  Dictionary address;
  auto street = text();
  const auto box = oneIn(4) ? text() : std::string();
  const auto extended = oneIn(6) ? text() : std::string();
  if (!oneIn(5)) {
    if (!extended.empty()) street = street.empty() ? extended : extended + "\n" + street;
    if (!box.empty()) street = street.empty() ? box : box + "\n" + street;
  }
  if (!oneIn(10)) address.set(kABAddressStreetKey, street);
  for (const auto key :
       {kABAddressCityKey, kABAddressStateKey, kABAddressZIPKey, kABAddressCountryKey}) {
    if (!oneIn(3)) address.set(key, text());
  }
  if (!box.empty()) address.set(kAddressPostOfficeBoxKey, box);
  if (!extended.empty()) address.set(kAddressExtendedKey, extended);
  if (oneIn(4)) address.set(kAddressLabelKey, text());
  if (oneIn(2)) address.set(kABAddressCountryCodeKey, oneIn(5) ? text() : std::string("de"));
  if (oneIn(30)) address.set("Planet", std::int64_t{3});
  return address;
}

Object RandomCards::message() {
  Dictionary account;
  if (!oneIn(20)) account.set(kABInstantMessageUsernameKey, text());
  if (!oneIn(4)) {
    account.set(kABInstantMessageServiceKey,
                oneIn(3) ? text() : std::string(kServices[below(kServices.size())]));
  }
  return account;
}

Object RandomCards::socialProfile() {
  Dictionary profile;
  const std::array<std::string, 4> values = {oneIn(2) ? "twitter" : text(), text(),
                                             oneIn(2) ? "https://x.example/a,b;c" : text(), text()};
  const std::array keys = {kABSocialProfileServiceKey, kABSocialProfileUsernameKey,
                           kABSocialProfileURLKey, kABSocialProfileUserIdentifierKey};
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (!oneIn(3)) profile.set(keys[i], values[i]);
  }
  return profile;
}

Object RandomCards::entryOf(PropertyId property) {
  if (oneIn(200)) return std::int64_t{7};
  switch (property) {
    case property_id::kAddress:
      return address();
    case property_id::kInstantMessage:
      return message();
    case property_id::kSocialProfile:
      return socialProfile();
    case property_id::kOtherDates:
      return date();
    default:
      return text();
  }
}

void RandomCards::addMulti(PropertyId property, PropertyBag& bag, Array& kept) {
  auto values = std::make_shared<MultiValue>();
  const auto count = below(4) + (oneIn(20) ? 0 : 1);
  for (std::size_t i = 0; i < count; ++i) {
    auto value = entryOf(property);
    if (oneIn(10) && property == property_id::kPhone) {
      const auto number = add(*values, "+1 555 0100", Text(kABWorkLabel));
      const auto words = kKept[below(kKept.size())];
      kept.emplace_back(encodeDetail({property, number, DetailKind::Parameters, words}));
    }
    // A value of another type is never held.
    if (!fitsType(std::make_shared<const MultiValue>(MultiValue{{{1, {}, value}}, 0}),
                  property_table::typeOf(property))) {
      continue;
    }
    add(*values, std::move(value), label(property));
  }
  if (oneIn(2) && !values->entries.empty()) {
    values->primary = values->entries[below(values->entries.size())].identifier;
  }
  bag.set(property, MultiValuePtr(std::move(values)));
}

Card RandomCards::next() {
  Card card;
  auto& bag = card.properties;
  Array kept;
  for (PropertyId id = property_id::kFirst; id <= property_id::kLastSingle; ++id) {
    if (!oneIn(3)) bag.set(id, id == property_id::kBirthday ? Object(date()) : Object(text()));
  }
  for (PropertyId id = property_id::kFirstMulti; id <= property_id::kLastMulti; ++id) {
    if (oneIn(2)) addMulti(id, bag, kept);
  }
  if (oneIn(2)) kept.insert(kept.begin(), Object("X-OWN;X-P=q:a\\,b"));
  if (oneIn(4)) kept.insert(kept.begin(), Object("item7.X-LONG_NAME;BARE:" + std::string(90, 'x')));
  if (oneIn(4)) kept.insert(kept.begin(), Object("AGENT:BEGIN:VCARD\nN:a\\;b\nEND:VCARD"));
  if (!kept.empty()) bag.set(property_id::kUnmodelledLines, Object(std::move(kept)));
  if (oneIn(2)) {
    const auto id = property_table::add("OxMacRandomProperty", kABMultiStringProperty);
    auto values = std::make_shared<MultiValue>();
    add(*values, text(), label(id));
    bag.set(id, MultiValuePtr(std::move(values)));
  }
  if (oneIn(3)) {
    std::string bytes = oneIn(2) ? "\xFF\xD8\xFF" : "";
    for (std::size_t i = below(400) + 1; i > 0; --i) bytes += static_cast<char>(below(256));
    card.photo = makeData(std::move(bytes));
  }
  return card;
}

}  // namespace ox::vcard
