#include "ox/formats/table/column_names.hpp"

#include <algorithm>
#include <array>

#include "ox/base/text/ascii_case.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::formats {
namespace {

using What = ColumnMeaning::What;
using Joined = ColumnMeaning::Joined;

struct NameRow {
  std::string_view name;  // lower case; # stands for a number
  ColumnMeaning meaning;
};

constexpr NameRow single(std::string_view name, Single which) {
  return {name, {.what = What::Single, .single = which}};
}
constexpr NameRow part(std::string_view name, Kind kind, Part which = Part::Value,
                       std::string_view label = {}, Joined joined = Joined::No) {
  return {name,
          {.what = What::Part, .kind = kind, .part = which, .label = label, .joined = joined}};
}
constexpr NameRow label(std::string_view name, Kind kind) {
  return {name, {.what = What::Label, .kind = kind}};
}
constexpr NameRow phone(std::string_view name, std::string_view label) {
  return part(name, Kind::Phone, Part::Value, label);
}
constexpr NameRow leftOut(std::string_view name) {
  return {name, {.what = What::LeftOut}};
}
constexpr NameRow tags(std::string_view name) {
  return {name, {.what = What::Tags}};
}
constexpr NameRow ofGoogle(NameRow row) {
  row.meaning.isOfGoogle = true;
  return row;
}

constexpr std::string_view kOtherFax = "_$!<OtherFAX>!$_";

constexpr std::array kNames = {
    // Our own, several of which others have too.
    single("full name", Single::FullName),
    single("prefix", Single::Prefix),
    single("first name", Single::First),
    single("middle name", Single::Middle),
    single("last name", Single::Last),
    single("suffix", Single::Suffix),
    single("phonetic first name", Single::FirstReading),
    single("phonetic middle name", Single::MiddleReading),
    single("phonetic last name", Single::LastReading),
    single("nickname", Single::Nickname),
    single("maiden name", Single::MaidenName),
    single("organization", Single::Organization),
    single("department", Single::Department),
    single("job title", Single::JobTitle),
    single("birthday", Single::Birthday),
    single("note", Single::Note),
    single("uid", Single::Uid),
    tags("tags"),
    label("email # - label", Kind::Email),
    part("email # - value", Kind::Email),
    label("phone # - label", Kind::Phone),
    part("phone # - value", Kind::Phone),
    label("address # - label", Kind::Address),
    part("address # - street", Kind::Address, Part::Street),
    part("address # - po box", Kind::Address, Part::Box),
    part("address # - extended", Kind::Address, Part::Extended),
    part("address # - city", Kind::Address, Part::City),
    part("address # - state", Kind::Address, Part::State),
    part("address # - zip", Kind::Address, Part::Zip),
    part("address # - country", Kind::Address, Part::Country),
    part("address # - country code", Kind::Address, Part::CountryCode),
    label("url # - label", Kind::Url),
    part("url # - value", Kind::Url),
    label("message # - label", Kind::Message),
    part("message # - service", Kind::Message, Part::Service),
    part("message # - user", Kind::Message, Part::User),
    label("profile # - label", Kind::Profile),
    part("profile # - service", Kind::Profile, Part::Service),
    part("profile # - user", Kind::Profile, Part::User),
    part("profile # - user id", Kind::Profile, Part::UserId),
    part("profile # - url", Kind::Profile, Part::Url),
    label("related # - label", Kind::Related),
    part("related # - name", Kind::Related),
    label("date # - label", Kind::Date),
    part("date # - value", Kind::Date),

    // Google's contacts, older and newer.
    single("name", Single::FullName),
    ofGoogle(single("given name", Single::First)),
    ofGoogle(single("additional name", Single::Middle)),
    ofGoogle(single("family name", Single::Last)),
    ofGoogle(single("given name yomi", Single::FirstReading)),
    ofGoogle(single("additional name yomi", Single::MiddleReading)),
    ofGoogle(single("family name yomi", Single::LastReading)),
    ofGoogle(leftOut("yomi name")),
    ofGoogle(single("name prefix", Single::Prefix)),
    ofGoogle(single("name suffix", Single::Suffix)),
    ofGoogle(single("organization name", Single::Organization)),
    ofGoogle(single("organization title", Single::JobTitle)),
    ofGoogle(single("organization department", Single::Department)),
    ofGoogle(single("organization 1 - name", Single::Organization)),
    ofGoogle(single("organization 1 - title", Single::JobTitle)),
    ofGoogle(single("organization 1 - department", Single::Department)),
    ofGoogle(leftOut("organization 1 - type")),
    ofGoogle(tags("labels")),
    ofGoogle(tags("group membership")),
    ofGoogle(label("e-mail # - type", Kind::Email)),
    ofGoogle(label("e-mail # - label", Kind::Email)),
    ofGoogle(part("e-mail # - value", Kind::Email)),
    ofGoogle(label("phone # - type", Kind::Phone)),
    ofGoogle(label("address # - type", Kind::Address)),
    ofGoogle(part("address # - formatted", Kind::Address, Part::Value, {}, Joined::Whole)),
    ofGoogle(part("address # - region", Kind::Address, Part::State)),
    ofGoogle(part("address # - postal code", Kind::Address, Part::Zip)),
    ofGoogle(part("address # - extended address", Kind::Address, Part::Extended)),
    ofGoogle(label("website # - type", Kind::Url)),
    ofGoogle(label("website # - label", Kind::Url)),
    ofGoogle(part("website # - value", Kind::Url)),
    ofGoogle(label("im # - type", Kind::Message)),
    ofGoogle(label("im # - label", Kind::Message)),
    ofGoogle(part("im # - service", Kind::Message, Part::Service)),
    ofGoogle(part("im # - value", Kind::Message, Part::User)),
    ofGoogle(label("relation # - type", Kind::Related)),
    ofGoogle(label("relation # - label", Kind::Related)),
    ofGoogle(part("relation # - value", Kind::Related)),
    ofGoogle(label("event # - type", Kind::Date)),
    ofGoogle(label("event # - label", Kind::Date)),
    ofGoogle(part("event # - value", Kind::Date)),
    leftOut("file as"),
    leftOut("initials"),

    // Outlook's, whose "Title" stands before the name.
    single("title", Single::Prefix),
    single("company", Single::Organization),
    single("notes", Single::Note),
    tags("categories"),
    part("e-mail address", Kind::Email),
    part("e-mail # address", Kind::Email),
    leftOut("e-mail type"),
    leftOut("e-mail # type"),
    leftOut("e-mail display name"),
    leftOut("e-mail # display name"),
    part("business street", Kind::Address, Part::Street, kABWorkLabel, Joined::Lines),
    part("business street #", Kind::Address, Part::Street, kABWorkLabel, Joined::Lines),
    part("business address po box", Kind::Address, Part::Box, kABWorkLabel),
    part("business city", Kind::Address, Part::City, kABWorkLabel),
    part("business state", Kind::Address, Part::State, kABWorkLabel),
    part("business postal code", Kind::Address, Part::Zip, kABWorkLabel),
    part("business country", Kind::Address, Part::Country, kABWorkLabel),
    part("business country/region", Kind::Address, Part::Country, kABWorkLabel),
    part("home street", Kind::Address, Part::Street, kABHomeLabel, Joined::Lines),
    part("home street #", Kind::Address, Part::Street, kABHomeLabel, Joined::Lines),
    part("home address po box", Kind::Address, Part::Box, kABHomeLabel),
    part("home city", Kind::Address, Part::City, kABHomeLabel),
    part("home state", Kind::Address, Part::State, kABHomeLabel),
    part("home postal code", Kind::Address, Part::Zip, kABHomeLabel),
    part("home country", Kind::Address, Part::Country, kABHomeLabel),
    part("home country/region", Kind::Address, Part::Country, kABHomeLabel),
    part("other street", Kind::Address, Part::Street, kABOtherLabel, Joined::Lines),
    part("other street #", Kind::Address, Part::Street, kABOtherLabel, Joined::Lines),
    part("other address po box", Kind::Address, Part::Box, kABOtherLabel),
    part("other city", Kind::Address, Part::City, kABOtherLabel),
    part("other state", Kind::Address, Part::State, kABOtherLabel),
    part("other postal code", Kind::Address, Part::Zip, kABOtherLabel),
    part("other country", Kind::Address, Part::Country, kABOtherLabel),
    part("other country/region", Kind::Address, Part::Country, kABOtherLabel),
    phone("assistant's phone", kABAssistantLabel),
    phone("business fax", kABPhoneWorkFAXLabel),
    phone("business phone", kABWorkLabel),
    phone("business phone #", kABWorkLabel),
    phone("callback", "Callback"),
    phone("car phone", "Car"),
    phone("company main phone", kABPhoneMainLabel),
    phone("home fax", kABPhoneHomeFAXLabel),
    phone("home phone", kABHomeLabel),
    phone("home phone #", kABHomeLabel),
    phone("isdn", "ISDN"),
    phone("mobile phone", kABPhoneMobileLabel),
    phone("other fax", kOtherFax),
    phone("other phone", kABOtherLabel),
    phone("pager", kABPhonePagerLabel),
    phone("primary phone", "Primary"),
    phone("radio phone", "Radio"),
    phone("tty/tdd phone", "TTY/TDD"),
    phone("telex", "Telex"),
    part("anniversary", Kind::Date, Part::Value, kABAnniversaryLabel),
    part("assistant's name", Kind::Related, Part::Value, kABAssistantLabel),
    part("manager's name", Kind::Related, Part::Value, kABManagerLabel),
    part("spouse", Kind::Related, Part::Value, kABSpouseLabel),
    part("children", Kind::Related, Part::Value, kABChildLabel),
    part("web page", Kind::Url),
    part("personal web page", Kind::Url, Part::Value, kABHomeLabel),
    leftOut("priority"),
    leftOut("private"),
    leftOut("sensitivity"),

    // What people call a column of their own.
    single("display name", Single::FullName),
    single("surname", Single::Last),
    part("email", Kind::Email),
    part("e-mail", Kind::Email),
    part("email address", Kind::Email),
    part("phone", Kind::Phone),
    part("phone number", Kind::Phone),
    phone("mobile", kABPhoneMobileLabel),
    part("website", Kind::Url),
    part("url", Kind::Url),
};

// The name with # for the last number in it that stands alone, and that number.
struct Numbered {
  std::string pattern;
  unsigned number = 0;
};

std::optional<Numbered> numbered(const std::string& name) {
  for (auto end = name.size(); end > 0; --end) {
    if (!vcard::isDigit(name[end - 1])) continue;
    auto start = end;
    while (start > 0 && vcard::isDigit(name[start - 1])) --start;
    if (end - start > 4) return std::nullopt;
    const auto number = static_cast<unsigned>(std::stoi(name.substr(start, end - start)));
    return Numbered{name.substr(0, start) + "#" + name.substr(end), number};
  }
  return std::nullopt;
}

const NameRow* rowOf(std::string_view name) {
  const auto* found = std::ranges::find(kNames, name, &NameRow::name);
  return found == kNames.end() ? nullptr : found;
}

}  // namespace

NamedColumn columnOfName(std::string_view name) {
  const auto lower = lowerCase(vcard::trimmed(name));
  if (const auto* row = rowOf(lower)) return {row->meaning, 0};
  const auto parted = numbered(lower);
  if (!parted) return {};
  const auto* row = rowOf(parted->pattern);
  if (row == nullptr) return {};
  return {row->meaning, parted->number};
}

}  // namespace ox::formats
