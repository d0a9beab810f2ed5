#include "oxcontacts/edit/assignment.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/person_entries.hpp"
#include "ox/base/text/ascii_case.hpp"
#include "ox/base/text/joined.hpp"
#include "ox/records/property_keys.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/edit/value_parts.hpp"

namespace ox::program {
namespace {

[[noreturn]] void misused(const std::string& what) {
  throw CommandError(kUsage, what);
}

std::string shortName(const OxProperty& property) {
  return lowerCase(std::string_view(property.name()).substr(std::string_view("OxProPerty").size()));
}

// Pictures and tags have commands of their own.
bool isAssigned(const OxProperty& property) {
  return property.valueType() != value_type::kImage && property.valueType() != value_type::kTags;
}

OxPropertyPtr propertyNamed(const std::string& name) {
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    if (shortName(*property) != name) continue;
    if (isAssigned(*property)) return property;
    misused(property->valueType() == value_type::kImage ? "a picture is set by `photo`"
                                                        : "tags are set by `tag`");
  }
  misused("there is no property \"" + name + "\"; there are " + propertyNames());
}

std::int32_t elementType(const OxProperty& property) {
  const bool multiple = property.valueType() == value_type::kMultiple;
  return multiple ? property.subValueType() : property.valueType();
}

// The last word is the last name.
Object nameOf(const std::string& text) {
  const auto end = text.find_last_not_of(' ');
  const auto blank = text.find_last_of(' ', end);
  if (end == std::string::npos || blank == std::string::npos) {
    return OxObjectPersonName::initWithFirst_middle_last(text, {}, {});
  }
  return OxObjectPersonName::initWithFirst_middle_last(
      text.substr(0, text.find_last_not_of(' ', blank) + 1), {},
      text.substr(blank + 1, end - blank));
}

Object dateOf(const std::string& text) {
  const auto date = Date::fromText(text);
  if (!date || !date->month || !date->day || date->secondOfDay) {
    misused("\"" + text + "\" is no date; write 1990-05-17, or --05-17 without a year");
  }
  return *date;
}

// A service and the user's name there, both not empty.
std::pair<std::string, std::string> accountOf(const std::string& text) {
  const auto colon = text.find(':');
  if (colon == 0 || colon == std::string::npos || colon + 1 == text.size()) {
    misused("\"" + text + "\" is no account; write SERVICE:NAME, as in Skype:ann");
  }
  return {text.substr(0, colon), text.substr(colon + 1)};
}

Object instantMessageOf(const std::string& text) {
  const auto [service, user] = accountOf(text);
  return OxObjectInstantMessage::initWithUserName_server(
      user, OxInstantMessageServer::serverWithName(service));
}

Object profileOf(const std::string& text) {
  const auto [service, user] = accountOf(text);
  return Dictionary{{std::string(kABSocialProfileServiceKey), service},
                    {std::string(kABSocialProfileUsernameKey), user}};
}

Object wholeValue(const std::string& text, std::int32_t type) {
  switch (type) {
    case value_type::kPersonName:
      return nameOf(text);
    case value_type::kDate:
    case value_type::kDateElement:
      return dateOf(text);
    case value_type::kPhone:
      return OxObjectPhone::initWithPhoneNumber(text);
    case value_type::kEmail:
      return OxObjectEmail::initWithEmail(text);
    case value_type::kInstantMessage:
      return instantMessageOf(text);
    case value_type::kDictionaryElement:
      return profileOf(text);
    case value_type::kAddress:
      misused(
          "an address is given by its parts: address.street=, .city=, .state=, .zip=, "
          ".country=");
    default:
      return text;
  }
}

struct Key {
  std::string name;
  std::string part;
  bool hasPart = false;
  bool adds = false;
  Text label;
};

// The "+" may stand before the label or behind it.
bool takePlus(std::string& text) {
  if (!text.ends_with('+')) return false;
  text.pop_back();
  return true;
}

Key splitKey(std::string text) {
  Key key;
  key.adds = takePlus(text);
  if (const auto colon = text.find(':'); colon != std::string::npos) {
    key.label = text.substr(colon + 1);
    text.resize(colon);
    key.adds = takePlus(text) || key.adds;
  }
  if (const auto dot = text.find('.'); dot != std::string::npos) {
    key.hasPart = true;
    key.part = lowerCase(std::string_view(text).substr(dot + 1));
    text.resize(dot);
  }
  key.name = lowerCase(text);
  return key;
}

void checkKey(const Key& key, const OxProperty& property) {
  const bool multiple = property.valueType() == value_type::kMultiple;
  if (!multiple && (key.adds || key.label)) {
    misused("\"" + key.name + "\" has one value, without a label");
  }
  if (key.label && key.label->empty()) misused("the label after \"" + key.name + ":\" is missing");
  if (!key.hasPart) return;
  const auto parts = partNames(property);
  if (std::ranges::find(parts, key.part) != parts.end()) return;
  misused("\"" + key.name + "\" has no part \"" + key.part + "\"" +
          (parts.empty() ? "" : "; it has " + joined(parts, " ")));
}

}  // namespace

std::vector<OxPropertyPtr> assignableProperties() {
  std::vector<OxPropertyPtr> properties;
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    if (isAssigned(*property)) properties.push_back(property);
  }
  return properties;
}

std::string shortNameOf(const OxProperty& property) {
  return shortName(property);
}

Object valueFromText(const OxProperty& property, const std::string& text) {
  return wholeValue(text, elementType(property));
}

OxPropertyPtr propertyCalled(const std::string& name) {
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    if (shortName(*property) == lowerCase(name) && isAssigned(*property)) return property;
  }
  return nullptr;
}

std::string propertyNames() {
  std::string names;
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    if (isAssigned(*property)) names += (names.empty() ? "" : ", ") + shortName(*property);
  }
  return names;
}

Assignment parseAssignment(const std::string& text) {
  const auto equals = text.find('=');
  if (equals == std::string::npos) misused("\"" + text + "\" is not of the form PROPERTY=VALUE");
  const auto key = splitKey(text.substr(0, equals));
  Assignment assignment;
  assignment.property = propertyNamed(key.name);
  checkKey(key, *assignment.property);
  assignment.part = key.part;
  assignment.adds = key.adds;
  assignment.typedLabel = key.label;
  if (key.label) assignment.label = labelKeyOf(*key.label);
  const auto value = text.substr(equals + 1);
  if (value.empty()) {
    if (key.adds) misused("there is nothing to add behind \"" + text + "\"");
  } else if (key.hasPart) {
    assignment.value = value;
  } else {
    assignment.value = wholeValue(value, elementType(*assignment.property));
  }
  return assignment;
}

std::vector<Assignment> parseAssignments(const std::vector<std::string>& texts) {
  std::vector<Assignment> assignments;
  assignments.reserve(texts.size());
  for (const auto& text : texts) assignments.push_back(parseAssignment(text));
  return assignments;
}

}  // namespace ox::program
