#include "tests/OxAddressBookSDK/general/random_book.hpp"

#include <array>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "tests/OxAddressBookSDK/general/loose_group.hpp"

namespace ox {
namespace {

using namespace std::string_view_literals;

constexpr std::array kTexts = {
    ""sv,
    "Ann"sv,
    "O'Neil-Smith"sv,
    "王小明"sv,
    "ひらがな カタカナ"sv,
    "김철수"sv,
    "Ångström"sv,
    "Дмитрий"sv,
    "שלום"sv,
    "محمد"sv,
    "👩‍👩‍👧 family"sv,
    R"(a"b\c/d)"sv,
    "one\ntwo\r\nthree\ttab"sv,
    "\0nul\x01\x1F\x7F"sv,
    "\xEF\xBB\xBF mark"sv,
    "\xE2\x80\xA8 line separator"sv,
    R"({"person":"x"})"sv,
    " blanks "sv,
};
constexpr std::array kLabels = {
    "_$!<Home>!$_"sv,
    "_$!<Work>!$_"sv,
    "_$!<Mobile>!$_"sv,
    "_$!<Main>!$_"sv,
    "_$!<iPhone>!$_"sv,
    "_$!<HomeFAX>!$_"sv,
    "_$!<WorkFAX>!$_"sv,
    "_$!<OtherFAX>!$_"sv,
    "_$!<Pager>!$_"sv,
    "_$!<Other>!$_"sv,
    "_$!<HomePage>!$_"sv,
    "_$!<Anniversary>!$_"sv,
    "_$!<Father>!$_"sv,
    "_$!<Mother>!$_"sv,
    "_$!<Spouse>!$_"sv,
    "_$!<Friend>!$_"sv,
    "Boat"sv,
    "船"sv,
    ""sv,
};
constexpr std::array kServices = {"AIM"sv, "QQ"sv, "Skype"sv, "own service"sv, ""sv};
constexpr std::array kIntegers = {std::int64_t{0}, std::int64_t{-1}, std::int64_t{42},
                                  std::numeric_limits<std::int64_t>::min(),
                                  std::numeric_limits<std::int64_t>::max()};
constexpr std::array kReals = {0.0,
                               1.0,
                               -2.5,
                               0.1,
                               1e300,
                               5e-324,
                               1.0 / 3.0,
                               123456789012345680.0,
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity()};
constexpr std::array kDates = {"1990-05-17"sv,
                               "--02-29"sv,
                               "---31"sv,
                               "1604-01-01"sv,
                               "2000"sv,
                               "1990-05"sv,
                               "--12"sv,
                               "0000-01-01"sv,
                               "9999-12-31"sv,
                               "1990-05-17T10:15:30Z"sv,
                               "1998-12-31T23:59:60-05:30"sv,
                               "2001-02-03T04:05:06"sv,
                               "T23:00:00+14:00"sv};

class Maker {
 public:
  explicit Maker(std::uint64_t seed) : random_(seed) {}

  std::shared_ptr<OxAddressBookGeneral> book();

 private:
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_() % count); }
  bool once(std::size_t inSo) { return below(inSo) == 0; }
  template <typename T, std::size_t N>
  const T& oneOf(const std::array<T, N>& choices) {
    return choices[below(N)];
  }

  std::string text() {
    std::string result(oneOf(kTexts));
    if (once(4)) result += oneOf(kTexts);
    return result;
  }
  Text part() { return once(4) ? std::nullopt : Text(text()); }
  Date date() { return Date::fromText(oneOf(kDates)).value(); }
  std::string bytes(std::size_t limit) {
    std::string result;
    for (auto left = below(limit); left > 0; --left) result += static_cast<char>(random_() & 0xFF);
    return result;
  }

  ImagePtr picture();
  Object address();
  Object anything(int depth);
  Object objectOf(std::int32_t type);
  std::shared_ptr<OxMutableSingleValue> single(std::int32_t type);
  OxValuePtr value(const OxProperty& property);
  std::shared_ptr<OxGeneralPerson> person(const std::string& identifier);
  std::shared_ptr<LooseGroup> group(const std::string& identifier, int level);

  std::mt19937_64 random_;
  std::vector<std::shared_ptr<OxGeneralPerson>> persons_;
  std::vector<std::shared_ptr<LooseGroup>> groups_;
};

ImagePtr Maker::picture() {
  const auto width = static_cast<std::uint32_t>(below(9));
  const auto height = static_cast<std::uint32_t>(below(9));
  Pixels pixels;
  const bool flat = once(2);
  for (auto left = width * height * 4; left > 0; --left) {
    pixels.push_back(static_cast<std::uint8_t>(flat ? 7 : random_() & 0xFF));
  }
  return std::make_shared<const Image>(width, height, std::move(pixels));
}

Object Maker::address() {
  auto result = OxObjectAddress::init();
  result->setCountryCode(part());
  for (const auto field : {OxAddressFieldCountryOrArea, OxAddressFieldState, OxAddressFieldCity,
                           OxAddressFieldStreet, OxAddressFieldZIP}) {
    result->setStringValue_forFieldName(part(), field);
  }
  return result;
}

Object Maker::anything(int depth) {
  switch (below(depth > 0 ? 10 : 8)) {
    case 0:
      return {};
    case 1:
      return oneOf(kIntegers);
    case 2:
      return oneOf(kReals);
    case 3:
      return date();
    case 4:
      return makeData(bytes(20));
    case 5:
      return picture();
    case 6:
      return OxObjectPhone::initWithPhoneNumber(part());
    case 7:
      return text();
    case 8: {
      Array array;
      for (auto left = below(4); left > 0; --left) array.push_back(anything(depth - 1));
      return array;
    }
    default: {
      Dictionary dictionary;
      for (auto left = below(5); left > 0; --left) dictionary.set(text(), anything(depth - 1));
      return dictionary;
    }
  }
}

Object Maker::objectOf(std::int32_t type) {
  switch (type) {
    case value_type::kPersonName:
      return OxObjectPersonName::initWithFirst_middle_last(part(), part(), part());
    case value_type::kImage:
      return picture();
    case value_type::kTags: {
      Array tags;
      for (auto left = below(4); left > 0; --left) tags.emplace_back(text());
      return tags;
    }
    case value_type::kDate:
    case value_type::kDateElement:
      return date();
    case value_type::kPhone:
      return OxObjectPhone::initWithPhoneNumber(part());
    case value_type::kEmail:
      return OxObjectEmail::initWithEmail(part());
    case value_type::kAddress:
      return address();
    case value_type::kDictionaryElement:
      return Dictionary{{"url", text()}, {text(), anything(2)}, {"", part()}};
    case value_type::kInstantMessage: {
      auto server = once(4) ? nullptr : OxInstantMessageServer::serverWithName(oneOf(kServices));
      return OxObjectInstantMessage::initWithUserName_server(part(), std::move(server));
    }
    default:
      return text();
  }
}

std::shared_ptr<OxMutableSingleValue> Maker::single(std::int32_t type) {
  auto result = OxMutableSingleValue::init();
  result->setType(type);
  if (!once(10)) result->setValue(once(12) ? anything(3) : objectOf(type));
  if (once(8)) return result;
  auto label = OxLabel::init();
  if (!once(6)) label->setName(std::string(oneOf(kLabels)));
  label->setDisplayName(part());
  result->setLabel(std::move(label));
  return result;
}

OxValuePtr Maker::value(const OxProperty& property) {
  if (property.valueType() != value_type::kMultiple) return single(property.valueType());
  auto result = OxMutableMultipleValue::init();
  for (auto left = below(5); left > 0; --left) result->addValue(single(property.subValueType()));
  if (result->count() > 0 && !once(3)) {
    result->setMainValue(result->valueAtIndex(below(result->count())));
  }
  return result;
}

std::shared_ptr<OxGeneralPerson> Maker::person(const std::string& identifier) {
  auto result = OxGeneralPerson::make(identifier);
  if (once(8)) return result;
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    if (!once(3)) result->setValue_byProperty(value(*property), property);
  }
  return result;
}

std::shared_ptr<LooseGroup> Maker::group(const std::string& identifier, int level) {
  auto result = std::make_shared<LooseGroup>(identifier, part());
  groups_.push_back(result);
  for (const auto& member : persons_) {
    if (once(3)) result->members.push_back(member);
  }
  for (std::size_t i = level < 3 ? below(3) : 0; i > 0; --i) {
    result->below.push_back(group(identifier + "." + std::to_string(i), level + 1));
  }
  return result;
}

std::shared_ptr<OxAddressBookGeneral> Maker::book() {
  const auto prefix = once(3) ? std::string(oneOf(kTexts)) : std::string();
  for (auto left = below(6); left > 0; --left) {
    persons_.push_back(person(prefix + std::to_string(left) + ":ABPerson"));
  }
  for (auto left = below(3); left > 0; --left) group(prefix + std::to_string(left), 1);
  auto result = OxAddressBookGeneral::init();
  for (const auto& group : groups_) result->addGroup(group);
  for (const auto& person : persons_) result->addPerson(person);
  return result;
}

bool haveSameValues(const OxGeneralPerson& a, const OxGeneralPerson& b) {
  const auto same = [](const auto& x, const auto& y) {
    return x.first->name() == y.first->name() && x.second->equals(*y.second);
  };
  return std::equal(a.values().begin(), a.values().end(), b.values().begin(), b.values().end(),
                    same);
}

}  // namespace

std::shared_ptr<OxAddressBookGeneral> randomBook(std::uint64_t seed) {
  return Maker(seed).book();
}

testing::AssertionResult haveSameContent(const OxAddressBookGeneral& a,
                                         const OxAddressBookGeneral& b) {
  if (a.groupsDic().count() != b.groupsDic().count() ||
      a.personsDic().count() != b.personsDic().count()) {
    return testing::AssertionFailure() << "other counts";
  }
  auto otherGroup = b.groupsDic().begin();
  for (const auto& [key, group] : a.groupsDic()) {
    const auto& [otherKey, other] = *otherGroup++;
    if (key != otherKey || group->title() != other->title() ||
        group->subArray() != other->subArray() || group->persons() != other->persons()) {
      return testing::AssertionFailure() << "group " << key;
    }
  }
  auto otherPerson = b.personsDic().begin();
  for (const auto& [key, person] : a.personsDic()) {
    const auto& [otherKey, other] = *otherPerson++;
    if (key != otherKey || person->ID() != other->ID() || !haveSameValues(*person, *other)) {
      return testing::AssertionFailure() << "person " << key;
    }
  }
  return testing::AssertionSuccess();
}

}  // namespace ox
