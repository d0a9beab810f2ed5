#include "oxcontacts/output/value_json.hpp"

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "oxcontacts/output/shown_value.hpp"

namespace ox::program {
namespace {

Json jsonOfAddress(const OxObjectAddress& address) {
  const auto field = [&](std::string_view name) {
    return jsonOf(address.stringValueByFieldName(name));
  };
  return {{"street", field(OxAddressFieldStreet)},
          {"city", field(OxAddressFieldCity)},
          {"state", field(OxAddressFieldState)},
          {"zip", field(OxAddressFieldZIP)},
          {"country", field(OxAddressFieldCountryOrArea)},
          {"countryCode", jsonOf(address.countryCode())}};
}

Json jsonOfHost(const Object& object) {
  if (const auto name = object.host<OxObjectPersonName>()) {
    return {{"first", jsonOf(name->first())},
            {"middle", jsonOf(name->middle())},
            {"last", jsonOf(name->last())}};
  }
  if (const auto phone = object.host<OxObjectPhone>()) return jsonOf(phone->phoneNumber());
  if (const auto email = object.host<OxObjectEmail>()) return jsonOf(email->email());
  if (const auto address = object.host<OxObjectAddress>()) return jsonOfAddress(*address);
  if (const auto message = object.host<OxObjectInstantMessage>()) {
    const auto& server = message->server();
    return {{"userName", jsonOf(message->userName())},
            {"server", server ? Json(server->name()) : Json()}};
  }
  return {};
}

Json jsonOfArray(const Array& array) {
  Json json = Json::array();
  for (const auto& element : array) json.push_back(jsonOf(element));
  return json;
}

Json jsonOfDictionary(const Dictionary& dictionary) {
  // Its keys are unique: appended without a look at those before, as a vector is.
  using Members = std::vector<Json::object_t::value_type>;
  Json json = Json::object();
  Members& members = json.get_ref<Json::object_t&>();
  members.reserve(dictionary.size());
  for (const auto& [key, value] : dictionary.entries()) members.emplace_back(key, jsonOf(value));
  return json;
}

Json jsonOfElement(const OxMutableSingleValue& element, bool isMain) {
  const auto& label = element.label();
  return {{"type", element.type()},
          {"label", label ? jsonOf(label->name()) : Json()},
          {"labelDisplayName",
           label && label->displayName() ? Json(labelWords(*label->displayName())) : Json()},
          {"value", jsonOf(element.value())},
          {"main", isMain}};
}

void addReadable(const Json& json, std::string& text) {
  if (json.is_null()) return;
  if (json.is_structured()) {
    for (const auto& part : json) addReadable(part, text);
    return;
  }
  auto part = json.is_string() ? json.get<std::string>() : oneLine(json);
  if (part.empty()) return;
  if (!text.empty()) text += ", ";
  text += part;
}

}  // namespace

Json jsonOf(const Object& object) {
  if (const auto* text = object.text()) return *text;
  if (const auto* number = object.as<std::int64_t>()) return *number;
  if (const auto* real = object.as<double>()) return *real;
  if (const auto* date = object.as<Date>()) return date->toText();
  if (const auto data = object.data()) return {{"bytes", data->size()}};
  if (const auto image = object.image()) {
    return {{"width", image->width}, {"height", image->height}};
  }
  if (const auto* array = object.array()) return jsonOfArray(*array);
  if (const auto* dictionary = object.dictionary()) return jsonOfDictionary(*dictionary);
  return jsonOfHost(object);
}

Json jsonOf(const OxValue& value) {
  if (const auto* single = dynamic_cast<const OxMutableSingleValue*>(&value)) {
    return {{"value", jsonOf(single->value())}};
  }
  Json elements = Json::array();
  const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(&value);
  for (std::uint64_t i = 0; multiple != nullptr && i < multiple->count(); ++i) {
    const auto element = multiple->valueAtIndex(i);
    elements.push_back(jsonOfElement(*element, element == multiple->mainValue()));
  }
  return {{"values", std::move(elements)}};
}

std::string readableText(const Object& object) {
  if (const auto name = object.host<OxObjectPersonName>())
    return name->displayString().value_or("");
  if (const auto image = object.image()) {
    return std::to_string(image->width) + " x " + std::to_string(image->height) + " pixels";
  }
  std::string text;
  addReadable(jsonOf(object), text);
  return text;
}

}  // namespace ox::program
