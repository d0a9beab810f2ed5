// Reading what a value holds from its JSON form.
#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <string>

#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/OxAddressBookSDK/general/json_fields.hpp"
#include "ox/OxAddressBookSDK/general/object_json.hpp"
#include "ox/OxAddressBookSDK/general/packed_picture.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/base/base64.hpp"

namespace ox::book_format {
namespace {

Object readNested(JsonNode& node, std::size_t nesting);

std::string bytesOf(const std::string& text) {
  auto bytes = bytesOfBase64(text);
  if (!bytes) throw Unreadable("bytes that are not base64");
  return *std::move(bytes);
}

Object readPhone(JsonFields& fields, std::size_t) {
  return OxObjectPhone::initWithPhoneNumber(fields.findText("phoneNumber"));
}

Object readEmail(JsonFields& fields, std::size_t) {
  return OxObjectEmail::initWithEmail(fields.findText("email"));
}

Object readAddress(JsonFields& fields, std::size_t) {
  auto address = OxObjectAddress::init();
  address->setCountryCode(fields.findText("countryCode"));
  for (const auto field : {OxAddressFieldCountryOrArea, OxAddressFieldState, OxAddressFieldCity,
                           OxAddressFieldStreet, OxAddressFieldZIP}) {
    address->setStringValue_forFieldName(fields.findText(field), field);
  }
  return address;
}

Object readInstantMessage(JsonFields& fields, std::size_t) {
  auto userName = fields.findText("userName");
  return OxObjectInstantMessage::initWithUserName_server(
      std::move(userName), OxInstantMessageServer::serverWithName(fields.findText("server")));
}

Object readPersonName(JsonFields& fields, std::size_t) {
  auto first = fields.findText("first");
  auto middle = fields.findText("middle");
  auto last = fields.findText("last");
  return OxObjectPersonName::initWithFirst_middle_last(std::move(first), std::move(middle),
                                                       std::move(last));
}

Object readDate(JsonFields& fields, std::size_t) {
  const auto date = Date::fromText(fields.get<std::string>("value"));
  if (!date) throw Unreadable("a date that does not exist");
  return *date;
}

Object readData(JsonFields& fields, std::size_t) {
  return makeData(bytesOf(fields.get<std::string>("base64")));
}

Object readImage(JsonFields& fields, std::size_t) {
  const auto width = fields.getNumber<std::uint32_t>("width");
  const auto height = fields.getNumber<std::uint32_t>("height");
  auto* file = fields.find("file");
  auto picture =
      file != nullptr
          ? PackedPicture::ofFile(width, height, bytesOf(heldAs<std::string>(*file)))
          : PackedPicture::ofPixels(width, height, bytesOf(fields.get<std::string>("pixels")));
  if (!picture) throw Unreadable("a damaged picture");
  return picture;
}

Object readNotFinite(JsonFields& fields, std::size_t) {
  using Limits = std::numeric_limits<double>;
  const auto& spelling = fields.get<std::string>("value");
  if (spelling == "nan") return Limits::quiet_NaN();
  if (spelling == "inf") return Limits::infinity();
  if (spelling == "-inf") return -Limits::infinity();
  throw Unreadable("an unknown real");
}

Object readDictionary(JsonFields& fields, std::size_t nesting) {
  if (nesting == kMaxNesting) throw Unreadable("dictionaries nested too deep");
  auto& entries = fields.get<JsonNode::Members>("entries");
  if (entries.size() > kMaxEntries) throw Unreadable("a dictionary of too many entries");
  Dictionary dictionary;
  for (auto& [key, node] : entries) dictionary.set(key, readNested(node, nesting + 1));
  if (dictionary.size() != entries.size()) throw Unreadable("a dictionary key twice");
  return dictionary;
}

struct KindRow {
  std::string_view kind;
  Object (*read)(JsonFields&, std::size_t nesting);
};

constexpr std::array kKinds = {
    KindRow{kind::kPhone, readPhone},
    KindRow{kind::kEmail, readEmail},
    KindRow{kind::kPersonName, readPersonName},
    KindRow{kind::kAddress, readAddress},
    KindRow{kind::kInstantMessage, readInstantMessage},
    KindRow{kind::kDate, readDate},
    KindRow{kind::kDictionary, readDictionary},
    KindRow{kind::kImage, readImage},
    KindRow{kind::kData, readData},
    KindRow{kind::kReal, readNotFinite},
};

Object readKind(JsonNode& node, std::size_t nesting) {
  JsonFields fields(node);
  const auto& kind = fields.get<std::string>("kind");
  const auto* const row = std::find_if(kKinds.begin(), kKinds.end(),
                                       [&](const KindRow& known) { return known.kind == kind; });
  if (row == kKinds.end()) throw Unreadable("a value of an unknown kind");
  auto object = row->read(fields, nesting);
  fields.done();
  return object;
}

Object readArray(JsonNode::Elements& elements, std::size_t nesting) {
  if (nesting == kMaxNesting) throw Unreadable("arrays nested too deep");
  Array array;
  array.reserve(elements.size());
  for (auto& element : elements) array.push_back(readNested(element, nesting + 1));
  return array;
}

Object readNested(JsonNode& node, std::size_t nesting) {
  if (auto* text = node.as<std::string>()) return std::move(*text);
  if (const auto* integer = node.as<std::int64_t>()) return *integer;
  if (const auto* real = node.as<double>()) return *real;
  if (auto* elements = node.as<JsonNode::Elements>()) return readArray(*elements, nesting);
  if (node.as<std::monostate>() != nullptr) return {};
  return readKind(node, nesting);
}

}  // namespace

Object readObject(JsonNode& node) {
  return readNested(node, 0);
}

}  // namespace ox::book_format
