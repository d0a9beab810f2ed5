// Writing what a value holds in its JSON form.
#include <array>
#include <cmath>
#include <string>

#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/OxAddressBookSDK/general/object_json.hpp"
#include "ox/OxAddressBookSDK/general/packed_picture.hpp"
#include "ox/OxAddressBookSDK/general/picture_bytes.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/base/base64.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox::book_format {
namespace {

constexpr std::array kAddressFields = {OxAddressFieldCountryOrArea, OxAddressFieldState,
                                       OxAddressFieldCity, OxAddressFieldStreet, OxAddressFieldZIP};

void beginKind(JsonWriter& out, std::string_view kind) {
  out.beginObject();
  out.writeMember("kind", kind);
}

void writeParts(JsonWriter& out, const OxObjectPhone& phone) {
  beginKind(out, kind::kPhone);
  out.writeMember("phoneNumber", phone.phoneNumber());
}

void writeParts(JsonWriter& out, const OxObjectEmail& email) {
  beginKind(out, kind::kEmail);
  out.writeMember("email", email.email());
}

void writeParts(JsonWriter& out, const OxObjectAddress& address) {
  beginKind(out, kind::kAddress);
  out.writeMember("countryCode", address.countryCode());
  for (const auto field : kAddressFields) {
    out.writeMember(field, address.stringValueByFieldName(field));
  }
}

void writeParts(JsonWriter& out, const OxObjectInstantMessage& account) {
  beginKind(out, kind::kInstantMessage);
  out.writeMember("userName", account.userName());
  if (account.server()) out.writeMember("server", std::string_view(account.server()->name()));
}

void writeParts(JsonWriter& out, const OxObjectPersonName& name) {
  beginKind(out, kind::kPersonName);
  out.writeMember("first", name.first());
  out.writeMember("middle", name.middle());
  out.writeMember("last", name.last());
}

void writeParts(JsonWriter& out, const PackedPicture& picture) {
  beginKind(out, kind::kImage);
  out.writeMember("width", std::int64_t{picture.width()});
  out.writeMember("height", std::int64_t{picture.height()});
  out.writeMember(picture.form() == PackedPicture::Form::File ? "file" : "pixels",
                  std::string_view(base64(picture.bytes())));
}

// False when the object is not a T.
template <typename T>
bool writeAs(JsonWriter& out, const HostObject& object) {
  const auto* held = dynamic_cast<const T*>(&object);
  if (held == nullptr) return false;
  writeParts(out, *held);
  out.endObject();
  return true;
}

// One for each kind that an object may hold.
class ObjectWriter {
 public:
  ObjectWriter(JsonWriter& out, std::size_t nesting) : out_(out), nesting_(nesting) {}

  void operator()(std::monostate) const { out_.writeNull(); }
  void operator()(const std::string& text) const { out_.writeText(text); }
  void operator()(std::int64_t number) const { out_.writeInteger(number); }

  void operator()(double number) const {
    if (std::isfinite(number)) return out_.writeReal(number);
    beginKind(out_, kind::kReal);
    out_.writeMember("value", std::string_view(std::isnan(number) ? "nan"
                                               : number < 0       ? "-inf"
                                                                  : "inf"));
    out_.endObject();
  }

  void operator()(const Date& date) const {
    const auto text = date.toText();
    if (Date::fromText(text) != date) throw Unwritable("a date that does not exist");
    beginKind(out_, kind::kDate);
    out_.writeMember("value", std::string_view(text));
    out_.endObject();
  }

  void operator()(const Data& data) const {
    beginKind(out_, kind::kData);
    out_.writeMember("base64", std::string_view(base64(*data)));
    out_.endObject();
  }

  // Only those that could not be packed are left as pictures.
  void operator()(const ImagePtr& image) const {
    throw Unwritable(std::uint64_t{image->width} * image->height > kMaxPackedPixels
                         ? "a picture of more than 64 M pixels"
                         : "a picture whose pixels do not fit its size");
  }

  void operator()(const Object::ArrayPtr& array) const {
    const ObjectWriter inner = deeper();
    out_.beginArray();
    for (const auto& element : *array) std::visit(inner, element.storage());
    out_.endArray();
  }

  void operator()(const Object::DictionaryPtr& dictionary) const {
    const ObjectWriter inner = deeper();
    if (dictionary->size() > kMaxEntries) throw Unwritable("a dictionary of too many entries");
    beginKind(out_, kind::kDictionary);
    out_.writeName("entries");
    out_.beginObject();
    for (const auto& [key, element] : dictionary->entries()) {
      // Two keys could become one if they were repaired.
      if (!isValidUtf8(key)) throw Unwritable("a dictionary key that is not UTF-8");
      out_.writeName(key);
      std::visit(inner, element.storage());
    }
    out_.endObject();
    out_.endObject();
  }

  void operator()(const Object::HostObjectPtr& object) const {
    const bool written =
        writeAs<OxObjectPhone>(out_, *object) || writeAs<OxObjectEmail>(out_, *object) ||
        writeAs<OxObjectAddress>(out_, *object) || writeAs<OxObjectInstantMessage>(out_, *object) ||
        writeAs<OxObjectPersonName>(out_, *object) || writeAs<PackedPicture>(out_, *object);
    if (!written) throw Unwritable("a value object of a foreign kind");
  }

 private:
  ObjectWriter deeper() const {
    if (nesting_ == kMaxNesting) throw Unwritable("arrays and dictionaries nested too deep");
    return {out_, nesting_ + 1};
  }

  JsonWriter& out_;
  std::size_t nesting_;
};

}  // namespace

void writeObject(JsonWriter& out, const Object& object) {
  std::visit(ObjectWriter(out, 0), object.storage());
}

}  // namespace ox::book_format
