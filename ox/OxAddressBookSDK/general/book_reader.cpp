// Reading the file form of the neutral book.
#include <cstdint>
#include <string>
#include <string_view>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/OxAddressBookSDK/general/json_fields.hpp"
#include "ox/OxAddressBookSDK/general/object_json.hpp"
#include "ox/OxAddressBookSDK/general/packed_picture.hpp"
#include "ox/OxAddressBookSDK/general/picture_bytes.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/base/failures.hpp"

namespace ox {
namespace {

using namespace book_format;

std::shared_ptr<OxLabel> readLabel(JsonNode& node) {
  JsonFields fields(node);
  auto label = OxLabel::init();
  label->setName(fields.findText("name"));
  label->setDisplayName(fields.findText("displayName"));
  fields.done();
  return label;
}

// Takes the members of one value; the caller looks whether more are left.
std::shared_ptr<OxMutableSingleValue> readSingle(JsonFields& fields) {
  auto value = OxMutableSingleValue::init();
  value->setType(fields.getNumber<std::int32_t>("type"));
  if (value->type() == value_type::kMultiple) throw Unreadable("a single value of multiple type");
  if (auto* label = fields.find("label")) value->setLabel(readLabel(*label));
  if (auto* object = fields.find("value")) {
    value->setValue(readObject(*object));
    if (value->value().isMissing()) throw Unreadable("a missing value that is not left out");
  }
  return value;
}

OxValuePtr readMultiple(JsonFields& fields, JsonNode& elements) {
  if (fields.getNumber<std::int32_t>("type") != value_type::kMultiple) {
    throw Unreadable("elements in a single value");
  }
  auto multiple = OxMutableMultipleValue::init();
  for (auto& node : heldAs<JsonNode::Elements>(elements)) {
    JsonFields element(node);
    multiple->addValue(readSingle(element));
    element.done();
  }
  if (auto* index = fields.find("main")) {
    // A negative index is far out of range as well.
    const auto main =
        multiple->valueAtIndex(static_cast<std::uint64_t>(heldAs<std::int64_t>(*index)));
    if (!main) throw Unreadable("a main element that is none");
    multiple->setMainValue(main);
  }
  return multiple;
}

// What a book of its version may hold them as.
enum class Pictures : std::uint8_t { Packed, Files };

void readProperty(JsonNode& node, OxGeneralPerson& person, Pictures pictures) {
  JsonFields fields(node);
  const auto property = OxProperty::propertyWithName(fields.get<std::string>("property"));
  if (!property) throw Unreadable("a property without a name");
  auto* elements = fields.find("values");
  auto value =
      elements == nullptr ? OxValuePtr(readSingle(fields)) : readMultiple(fields, *elements);
  fields.done();
  // A person unpacks those of one value together.
  if (pixelsInPackedPictures(*value) > kMaxPackedPixels) throw Unreadable(kTooManyPixels);
  if (pictures == Pictures::Packed && holdsPictureFile(*value)) {
    throw Unreadable("a picture that its version does not know");
  }
  person.takeValue(std::move(value), property);
}

std::shared_ptr<OxGeneralPerson> readPerson(std::string_view key, JsonFields& fields,
                                            Pictures pictures) {
  auto person = OxGeneralPerson::make(std::string(key));
  auto& values = fields.get<JsonNode::Elements>("values");
  if (values.size() > kMaxEntries) throw Unreadable("a person of too many properties");
  for (auto& node : values) readProperty(node, *person, pictures);
  if (person->values().size() != values.size()) throw Unreadable("a property twice");
  return person;
}

OxGeneralGroup::Keys readKeys(JsonNode::Elements& nodes) {
  OxGeneralGroup::Keys keys;
  keys.reserve(nodes.size());
  for (auto& node : nodes) keys.push_back(std::move(heldAs<std::string>(node)));
  return keys;
}

std::shared_ptr<OxGeneralGroup> readGroup(JsonFields& fields) {
  auto title = fields.findText("title");
  auto subArray = readKeys(fields.get<JsonNode::Elements>("subArray"));
  auto persons = readKeys(fields.get<JsonNode::Elements>("persons"));
  return OxGeneralGroup::make(std::move(title), std::move(subArray), std::move(persons));
}

template <typename Record>
void addNew(KeyedList<Record>& records, std::string_view key, std::shared_ptr<Record> record) {
  const auto before = records.count();
  records.set(key, std::move(record));
  if (records.count() == before) throw Unreadable("a key twice");
}

void readLine(std::string_view line, Pictures pictures, KeyedList<OxGeneralGroup>& groups,
              KeyedList<OxGeneralPerson>& persons) {
  auto node = parseJson(line, kMaxJsonDepth);
  if (!node) throw Unreadable("a line that is not JSON");
  JsonFields fields(*node);
  if (auto* key = fields.find("group")) {
    addNew(groups, heldAs<std::string>(*key), readGroup(fields));
  } else {
    const auto& personKey = fields.get<std::string>("person");
    addNew(persons, personKey, readPerson(personKey, fields, pictures));
  }
  fields.done();
}

// Everything before the last line, when that line is a trailer with the sum of it. Damage is found
// here, before anything is read.
std::string_view bodyOf(std::string_view file) {
  if (!hasKnownHeader(file) || !file.ends_with('\n')) throw Unreadable("no neutral book");
  const auto end = file.rfind('\n', file.size() - 2);
  const auto body = file.substr(0, end == std::string_view::npos ? 0 : end + 1);
  if (body.size() < kHeader.size() || !file.ends_with(trailerEnd(body))) {
    throw Unreadable("cut off or damaged");
  }
  return body;
}

}  // namespace

std::shared_ptr<OxAddressBookGeneral> OxAddressBookGeneral::addressBookWithData(const Data& data) {
  if (!data) return nullptr;
  try {
    const std::string_view file = *data;
    const auto body = bodyOf(file);
    const auto pictures = file.starts_with(kHeader) ? Pictures::Packed : Pictures::Files;
    auto book = init();
    for (std::size_t at = kHeader.size(); at < body.size();) {
      const auto end = body.find('\n', at);
      readLine(body.substr(at, end - at), pictures, book->groups_, book->persons_);
      at = end + 1;
    }
    const auto expected = trailer(body, book->groups_.count(), book->persons_.count());
    if (file.substr(body.size()) != expected) throw Unreadable("other counts than it says");
    return book;
  } catch (const Unreadable& reason) {
    failures::notice(FailureKind::Corrupt,
                     std::string("the neutral book cannot be read: ") + reason.what());
    return nullptr;
  }
}

}  // namespace ox
