#include "fuzz/made_book.hpp"

#include <bit>
#include <limits>

#include "ox/OxAddressBookSDK/general/packed_picture.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"
#include "ox/images/image_codec.hpp"

namespace ox::fuzz {
namespace {

constexpr std::size_t kMostNesting = 40;  // more than a file holds

Text text(Input& input) {
  const auto bytes = input.text();
  return bytes == "0" ? Text() : Text(bytes);
}

// A class of the host's own.
class ForeignValue final : public OxValue {
 public:
  std::int32_t type() const override { return value_type::kString; }
  OxValuePtr copy() const override { return std::make_shared<ForeignValue>(); }
  bool equals(const HostObject& other) const override { return this == &other; }
};

// A group as the book of a host answers one.
class HostGroup final : public IOxGroup {
 public:
  HostGroup(Text identifier, Text name)
      : identifier_(std::move(identifier)), name_(std::move(name)) {}

  void put(Groups groups, Persons persons) {
    groups_ = std::move(groups);
    persons_ = std::move(persons);
  }

  Text ID() const override { return identifier_; }
  std::uint64_t subGroupsCount() const override { return groups_.size(); }
  Text addressBookID() const override { return std::nullopt; }
  void setDisplayName(TextView /*name*/) override {}
  Text displayName() const override { return name_; }
  Groups subGroups() const override { return groups_; }
  Persons persons() const override { return persons_; }
  Persons includePersons() const override { return persons_; }
  std::uint64_t includePersonsCount() const override { return persons_.size(); }
  std::shared_ptr<IOxGroup> addSubGroupByName(TextView /*name*/) override { return nullptr; }
  bool removeSubGroup(const std::shared_ptr<IOxGroup>& /*group*/) override { return false; }
  void removePersons(const Persons& /*persons*/) override {}
  void removePersonsFromThisGroup(const Persons& /*persons*/) override {}
  void addPersons(const Persons& /*persons*/) override {}
  void removePersons_progress(const Persons& /*persons*/,
                              const ProgressCallback& /*progress*/) override {}
  void addPersons_progress(const Persons& /*persons*/,
                           const ProgressCallback& /*progress*/) override {}

 private:
  Text identifier_;
  Text name_;
  Groups groups_;
  Persons persons_;
};

Date date(Input& input) {
  Date date;
  const auto parts = input.byte();
  if ((parts & 1U) != 0) date.year = static_cast<std::int16_t>(input.number());
  if ((parts & 2U) != 0) date.month = input.byte() % 16;
  if ((parts & 4U) != 0) date.day = input.byte() % 40;
  if ((parts & 8U) != 0) date.secondOfDay = static_cast<std::int32_t>(input.number());
  if ((parts & 16U) != 0) date.utcOffsetMinutes = static_cast<std::int16_t>(input.number());
  return date;
}

// Small ones, some of whose pixels do not fit their size, and one of more pixels than a file takes.
// As it comes from a store.
ImagePtr imageOfFile(Input& input) {
  constexpr std::uint32_t kSide = 32;
  const Image image{kSide, kSide,
                    std::vector<std::uint8_t>(std::size_t{4} * kSide * kSide, input.byte())};
  return images::pictureOfFile(images::encodeTiff(image));
}

ImagePtr image(Input& input) {
  if (input.byte() % 8 == 1) return imageOfFile(input);
  std::uint32_t width = input.byte() % 8U;
  const std::uint32_t height = input.byte() % 8U;
  Pixels pixels(std::size_t{4} * width * height, input.byte());
  if (input.byte() % 16 == 1) pixels.emplace_back();
  if (input.byte() % 16 == 1) width = std::numeric_limits<std::uint32_t>::max();
  return std::make_shared<const Image>(width, height, std::move(pixels));
}

Object object(Input& input, std::size_t nesting);

Object array(Input& input, std::size_t nesting) {
  Array array;
  for (auto count = input.byte() % 4; count > 0; --count)
    array.push_back(object(input, nesting + 1));
  return array;
}

Object dictionary(Input& input, std::size_t nesting) {
  Dictionary dictionary;
  for (auto count = input.byte() % 4; count > 0; --count) {
    dictionary.set(std::string(input.text()), object(input, nesting + 1));
  }
  return dictionary;
}

// An array in an array, and so on.
Object deep(Input& input) {
  Object inner = object(input, kMostNesting);
  for (auto depth = input.byte() % kMostNesting; depth > 0; --depth) inner = Object(Array{inner});
  return inner;
}

Object hostObject(Input& input) {
  switch (input.byte() % 6) {
    case 0:
      return OxObjectPhone::initWithPhoneNumber(text(input));
    case 1:
      return OxObjectEmail::initWithEmail(text(input));
    case 2: {
      auto address = OxObjectAddress::init();
      address->setCountryCode(text(input));
      for (const auto field :
           {OxAddressFieldCountryOrArea, OxAddressFieldCity, OxAddressFieldZIP}) {
        address->setStringValue_forFieldName(text(input), field);
      }
      return address;
    }
    case 3: {
      auto user = text(input);
      return OxObjectInstantMessage::initWithUserName_server(
          std::move(user), OxInstantMessageServer::serverWithName(text(input)));
    }
    case 4: {
      auto first = text(input);
      auto middle = text(input);
      return OxObjectPersonName::initWithFirst_middle_last(std::move(first), std::move(middle),
                                                           text(input));
    }
    default:
      return std::make_shared<ForeignValue>();
  }
}

Object object(Input& input, std::size_t nesting) {
  switch (input.byte() % 12) {
    case 0:
      return {};
    case 1:
      return input.number();
    case 2:
      return std::bit_cast<double>(input.number());
    case 3:
      return date(input);
    case 4:
      return makeData(std::string(input.text()));
    case 5:
      return image(input);
    case 6:
      return nesting >= kMostNesting ? Object() : array(input, nesting);
    case 7:
      return nesting >= kMostNesting ? Object() : dictionary(input, nesting);
    case 8:
    case 9:
      return hostObject(input);
    case 10:
      return nesting > 0 ? Object() : deep(input);
    default:
      return std::string(input.text());
  }
}

std::shared_ptr<OxMutableSingleValue> single(Input& input) {
  auto value = OxMutableSingleValue::init();
  value->setType(input.byte() % 14);
  value->setValue(object(input, 0));
  if (input.byte() % 2 == 0) {
    auto label = OxLabel::init();
    label->setName(text(input));
    label->setDisplayName(text(input));
    value->setLabel(std::move(label));
  }
  return value;
}

OxValuePtr value(Input& input) {
  const auto form = input.byte() % 16;
  if (form == 0) return nullptr;
  if (form == 1) return std::make_shared<ForeignValue>();
  if (form < 8) return single(input);
  auto multiple = OxMutableMultipleValue::init();
  for (auto count = input.byte() % 4; count > 0; --count) multiple->addValue(single(input));
  multiple->setMainValue(multiple->valueAtIndex(input.byte() % 4U));
  return multiple;
}

void change(OxGeneralPerson& person, Input& input) {
  const auto& standard = OxProperty::StandardPropertyArray();
  switch (input.byte() % 8) {
    case 0:
      return person.setThumbnail(image(input));
    case 1:
      return person.addTag(text(input));
    case 2:
      return person.removeTag(text(input));
    case 3:
      return person.setTags(std::vector<std::string>(input.byte() % 4U, std::string(input.text())));
    case 4: {
      const auto name = text(input);
      return person.setValue_byPropertyName(value(input), name);
    }
    default: {
      const auto& property = standard[input.byte() % standard.size()];
      return person.setValue_byProperty(value(input), property);
    }
  }
}

}  // namespace

std::shared_ptr<OxAddressBookGeneral> makeBook(Input& input) {
  auto book = OxAddressBookGeneral::init();
  Persons persons;
  Groups groups;
  while (!input.isEmpty()) {
    if (input.byte() % 4 != 0) {
      auto person = OxGeneralPerson::make(text(input));
      for (auto changes = input.byte() % 8; changes > 0; --changes) change(*person, input);
      persons.push_back(person);
      book->addPerson(person);
    } else {
      auto identifier = text(input);
      auto group = std::make_shared<HostGroup>(std::move(identifier), text(input));
      group->put(groups, persons);
      groups.push_back(group);
      book->addGroup(group);
    }
  }
  book->addPerson(nullptr);
  book->addGroup(nullptr);
  return book;
}

}  // namespace ox::fuzz
