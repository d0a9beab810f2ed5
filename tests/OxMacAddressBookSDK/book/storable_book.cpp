#include "tests/OxMacAddressBookSDK/book/storable_book.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/records/property_keys.hpp"
#include "tests/OxAddressBookSDK/general/loose_group.hpp"

namespace ox::test {
namespace {

using namespace std::string_view_literals;

constexpr std::array kLines = {
    "Ann"sv,
    "d'Été-Müller"sv,
    "Łukasz Ångström"sv,
    "李小龙"sv,
    "さくら サクラ"sv,
    "홍길동"sv,
    "Наталья"sv,
    "عبد الله"sv,
    "🎈👨‍👩‍👦"sv,
    "e\xCC\x81 decomposed"sv,
    " blanks\tand return\r"sv,
    R"(quote" back\slash ; , : =)"sv,
    "\0zero and \x1F\x7F"sv,
};
constexpr std::array kSeveralLines = {
    "first\nsecond"sv,
    "\n"sv,
    "第一行\r\n第二行\n\n"sv,
};

struct Label {
  std::string_view key;
  std::string_view word;
};
constexpr std::array kLabels = {
    Label{kABHomeLabel, "Home"},
    Label{kABWorkLabel, "Work"},
    Label{kABOtherLabel, "Other"},
    Label{kABMobileMeLabel, "Mobile"},
    Label{kABHomePageLabel, "Home Page"},
    Label{kABPhoneMobileLabel, "Mobile"},
    Label{kABPhoneiPhoneLabel, "iPhone"},
    Label{kABPhoneMainLabel, "Main"},
    Label{kABPhoneHomeFAXLabel, "Home Fax"},
    Label{kABPhoneWorkFAXLabel, "Work Fax"},
    Label{"_$!<OtherFAX>!$_", "Other Fax"},
    Label{kABPhonePagerLabel, "Pager"},
    Label{kABFatherLabel, "Father"},
    Label{kABMotherLabel, "Mother"},
    Label{kABParentLabel, "Parent"},
    Label{kABBrotherLabel, "Brother"},
    Label{kABSisterLabel, "Sister"},
    Label{kABChildLabel, "Child"},
    Label{kABFriendLabel, "Friend"},
    Label{kABSpouseLabel, "Spouse"},
    Label{kABPartnerLabel, "Partner"},
    Label{kABAssistantLabel, "Assistant"},
    Label{kABManagerLabel, "Manager"},
    Label{kABAnniversaryLabel, "Anniversary"},
    Label{"_$!<Nobody>!$_", "_$!<Nobody>!$_"},
    Label{"Boathouse", "Boathouse"},
    Label{"home", "home"},
    Label{"別荘", "別荘"},
    Label{"", ""},
};
constexpr std::array kServices = {
    kABInstantMessageServiceAIM,
    kABInstantMessageServiceJabber,
    kABInstantMessageServiceQQ,
    kABInstantMessageServiceYahoo,
    "своя сеть"sv,
};
constexpr std::array kDates = {"1984-02-29"sv,
                               "--02-29"sv,
                               "2024-12-31"sv,
                               "1604-06-07"sv,
                               "---15"sv,
                               "1970"sv,
                               "2001-09"sv,
                               "1999-12-31T23:59:59Z"sv,
                               "2010-10-10T10:10:10"sv,
                               "2020-01-02T03:04:05-09:30"sv,
                               "1815-12-10T00:00:00Z"sv,
                               "0001-01-01"sv};

class Maker {
 public:
  explicit Maker(std::uint64_t seed) : random_(seed) {}

  std::shared_ptr<OxAddressBookGeneral> book();

 private:
  struct Group {
    std::shared_ptr<LooseGroup> group;
    int level;
  };

  std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_() % count); }
  bool once(std::size_t inSo) { return below(inSo) == 0; }
  template <typename List>
  const auto& oneOf(const List& choices) {
    return choices[below(choices.size())];
  }
  template <typename T>
  void shuffle(std::vector<T>& list) {
    for (auto i = list.size(); i > 1; --i) std::swap(list[i - 1], list[below(i)]);
  }

  std::string filledLine() {
    std::string text(oneOf(kLines));
    if (once(5)) text += oneOf(kLines);
    return text;
  }
  std::string filledText() {
    return once(4) ? filledLine() + std::string(oneOf(kSeveralLines)) : filledLine();
  }
  std::string line() { return once(6) ? std::string() : filledLine(); }
  std::string text() { return once(6) ? std::string() : filledText(); }
  Text linePart() { return once(4) ? std::nullopt : Text(line()); }
  Text textPart() { return once(4) ? std::nullopt : Text(text()); }
  Object date() { return Date::fromText(oneOf(kDates)).value(); }

  ImagePtr picture();
  Object address();
  Object profile();
  Object account();
  Object objectOf(std::int32_t type);
  std::shared_ptr<OxLabel> label();
  OxValuePtr multiple(const OxProperty& property);
  OxValuePtr single(const OxProperty& property);
  std::shared_ptr<OxGeneralPerson> person(const std::string& identifier);
  void putBelowEarlierOnes(Group& group);
  void addGroup(const std::string& identifier);

  std::mt19937_64 random_;
  std::vector<std::shared_ptr<OxGeneralPerson>> persons_;
  std::vector<Group> groups_;
};

ImagePtr Maker::picture() {
  const auto width = static_cast<std::uint32_t>(1 + below(6));
  const auto height = static_cast<std::uint32_t>(1 + below(6));
  Pixels pixels;
  const bool opaque = once(2);
  for (auto left = width * height; left > 0; --left) {
    for (int channel = 0; channel < 3; ++channel) {
      pixels.push_back(static_cast<std::uint8_t>(random_() & 0xFF));
    }
    pixels.push_back(static_cast<std::uint8_t>(opaque ? 0xFF : random_() & 0xFF));
  }
  return std::make_shared<const Image>(width, height, std::move(pixels));
}

Object Maker::address() {
  auto result = OxObjectAddress::init();
  result->setCountryCode(line());
  for (const auto field : {OxAddressFieldCountryOrArea, OxAddressFieldState, OxAddressFieldCity,
                           OxAddressFieldStreet, OxAddressFieldZIP}) {
    result->setStringValue_forFieldName(textPart(), field);
  }
  return result;
}

Object Maker::profile() {
  Dictionary result{{std::string(kABSocialProfileServiceKey), text()},
                    {std::string(kABSocialProfileUsernameKey), text()}};
  if (once(2)) result.set(kABSocialProfileURLKey, text());
  if (once(4)) result.set(text(), Array{text(), std::int64_t{-7}, 0.1, date()});
  if (once(8)) result.set("limits", std::numeric_limits<std::int64_t>::min());
  return once(10) ? Dictionary() : result;
}

Object Maker::account() {
  auto server = once(4) ? nullptr : OxInstantMessageServer::serverWithName(oneOf(kServices));
  return OxObjectInstantMessage::initWithUserName_server(text(), std::move(server));
}

Object Maker::objectOf(std::int32_t type) {
  switch (type) {
    case value_type::kPersonName:
      return OxObjectPersonName::initWithFirst_middle_last(linePart(), linePart(), linePart());
    case value_type::kDate:
    case value_type::kDateElement:
      return date();
    case value_type::kPhone:
      return OxObjectPhone::initWithPhoneNumber(line());
    case value_type::kEmail:
      return OxObjectEmail::initWithEmail(line());
    case value_type::kURL:
      return text();
    case value_type::kAddress:
      return address();
    case value_type::kDictionaryElement:
      return profile();
    case value_type::kInstantMessage:
      return account();
    default:
      return filledText();
  }
}

std::shared_ptr<OxLabel> Maker::label() {
  auto result = OxLabel::init();
  if (once(10)) return result;
  const auto& chosen = oneOf(kLabels);
  result->setName(std::string(chosen.key));
  result->setDisplayName(std::string(chosen.word));
  return result;
}

OxValuePtr Maker::multiple(const OxProperty& property) {
  auto result = OxMutableMultipleValue::init();
  for (auto left = 1 + below(3); left > 0; --left) {
    auto element = OxMutableSingleValue::init();
    element->setType(property.subValueType());
    element->setValue(objectOf(property.subValueType()));
    element->setLabel(label());
    result->addValue(std::move(element));
  }
  if (!once(3)) result->setMainValue(result->valueAtIndex(below(result->count())));
  return result;
}

OxValuePtr Maker::single(const OxProperty& property) {
  auto label = OxLabel::init();
  label->setName(property.displayName());
  label->setDisplayName(property.displayName());
  auto result = OxMutableSingleValue::init();
  result->setType(property.valueType());
  result->setValue(objectOf(property.valueType()));
  result->setLabel(std::move(label));
  return result;
}

std::shared_ptr<OxGeneralPerson> Maker::person(const std::string& identifier) {
  auto result = OxGeneralPerson::make(identifier);
  if (once(8)) return result;
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    if (once(2)) continue;
    if (property->valueType() == value_type::kImage) {
      result->setThumbnail(picture());
    } else if (property->valueType() == value_type::kTags) {
      for (auto left = below(4); left > 0; --left) result->addTag(text());
    } else if (property->valueType() == value_type::kMultiple) {
      result->setValue_byProperty(multiple(*property), property);
    } else {
      result->setValue_byProperty(single(*property), property);
    }
  }
  return result;
}

// Below up to two groups, so that it lies on the third level at most.
void Maker::putBelowEarlierOnes(Group& group) {
  for (auto left = below(3); left > 0 && !groups_.empty(); --left) {
    const auto& parent = oneOf(groups_);
    auto& siblings = parent.group->below;
    const bool isThere = std::find(siblings.begin(), siblings.end(), group.group) != siblings.end();
    if (parent.level == 3 || isThere) continue;
    siblings.push_back(group.group);
    group.level = std::max(group.level, parent.level + 1);
  }
}

void Maker::addGroup(const std::string& identifier) {
  Group group{std::make_shared<LooseGroup>(identifier, text()), 1};
  for (const auto& person : persons_) {
    if (!person->values().empty() && once(2)) group.group->members.push_back(person);
  }
  shuffle(group.group->members);
  putBelowEarlierOnes(group);
  groups_.push_back(std::move(group));
}

std::shared_ptr<OxAddressBookGeneral> Maker::book() {
  for (auto left = below(7); left > 0; --left) {
    persons_.push_back(person("p" + std::to_string(left)));
  }
  for (auto left = below(6); left > 0; --left) addGroup("g" + std::to_string(left));
  shuffle(groups_);
  auto result = OxAddressBookGeneral::init();
  for (const auto& each : groups_) result->addGroup(each.group);
  for (const auto& each : persons_) result->addPerson(each);
  return result;
}

}  // namespace

std::shared_ptr<OxAddressBookGeneral> storableBook(std::uint64_t seed) {
  return Maker(seed).book();
}

}  // namespace ox::test
