#include "ox/OxAddressBookSDK/general/OxGeneralPerson.hpp"

#include <algorithm>
#include <unordered_set>

#include "ox/OxAddressBookSDK/general/packed_picture.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"
#include "ox/base/text/keyed_hash.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

bool isEmptyMultiple(const OxValue& value) {
  const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(&value);
  return multiple != nullptr && multiple->count() == 0;
}

}  // namespace

std::shared_ptr<OxGeneralPerson> OxGeneralPerson::make(Text identifier) {
  if (identifier) identifier = validUtf8(*std::move(identifier));
  return std::make_shared<OxGeneralPerson>(Key(), std::move(identifier));
}

std::shared_ptr<OxGeneralPerson> OxGeneralPerson::copyOf(const IOxPerson& person) {
  auto result = make(person.ID());
  // A person may answer with the value that it holds: only a copy can be packed and kept.
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    result->setValue_byProperty(person.valueByProperty(property), property);
  }
  return result;
}

const OxValue* OxGeneralPerson::find(std::string_view property) const {
  const auto found = std::find_if(values_.begin(), values_.end(), [&](const auto& entry) {
    return entry.first->name() == property;
  });
  return found == values_.end() ? nullptr : found->second.get();
}

Object OxGeneralPerson::singleObject(std::string_view property) const {
  const auto* single = dynamic_cast<const OxMutableSingleValue*>(find(property));
  return single == nullptr ? Object() : single->value();
}

Object OxGeneralPerson::mainObject(std::string_view property) const {
  const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(find(property));
  if (multiple == nullptr || !multiple->mainValue()) return {};
  return multiple->mainValue()->value();
}

void OxGeneralPerson::setSingleObject(Object object, std::string_view propertyName) {
  const auto property = OxProperty::propertyWithName(propertyName);
  if (object.isMissing()) return setValue_byProperty(nullptr, property);
  auto label = OxLabel::init();
  label->setName(property->displayName());
  label->setDisplayName(property->displayName());
  auto value = OxMutableSingleValue::init();
  value->setLabel(std::move(label));
  value->setValue(std::move(object));
  value->setType(property->valueType());
  setValue_byProperty(value, property);
}

Text OxGeneralPerson::displayName() const {
  if (const auto name = singleObject(OxProPertyName).host<OxObjectPersonName>()) {
    if (auto shown = name->displayString()) return shown;
  }
  return singleObject(OxProPertyCompany).toText().value_or("");
}

OxValuePtr OxGeneralPerson::valueByProperty(const OxPropertyPtr& property) const {
  return property ? valueByPropertyName(property->name()) : nullptr;
}

OxValuePtr OxGeneralPerson::valueByPropertyName(TextView name) const {
  const auto* held = name ? find(*name) : nullptr;
  if (held == nullptr) return nullptr;
  auto value = held->copy();
  unpackPictures(*value);
  return value;
}

void OxGeneralPerson::setValue_byProperty(const OxValuePtr& value, const OxPropertyPtr& property) {
  takeValue(value ? value->copy() : nullptr, property);
}

void OxGeneralPerson::takeValue(OxValuePtr value, const OxPropertyPtr& property) {
  if (!property) return;
  if (value) packPictures(*value);
  const auto found = std::find_if(values_.begin(), values_.end(), [&](const auto& entry) {
    return entry.first->name() == property->name();
  });
  if (!value) {
    if (found != values_.end()) values_.erase(found);
  } else if (found != values_.end()) {
    found->second = std::move(value);
  } else {
    values_.emplace_back(property, std::move(value));
  }
}

void OxGeneralPerson::setValue_byPropertyName(const OxValuePtr& value, TextView name) {
  setValue_byProperty(value, OxProperty::propertyWithName(name));
}

ImagePtr OxGeneralPerson::thumbnail() const {
  const auto value =
      std::dynamic_pointer_cast<OxMutableSingleValue>(valueByPropertyName(OxProPertyThumbnail));
  return value ? value->value().image() : nullptr;
}

void OxGeneralPerson::setThumbnail(const ImagePtr& image) {
  setSingleObject(Object(image), OxProPertyThumbnail);
}

std::shared_ptr<const OxObjectPhone> OxGeneralPerson::mainPhone() const {
  return mainObject(OxProPertyPhone).host<OxObjectPhone>();
}

std::shared_ptr<const OxObjectEmail> OxGeneralPerson::mainEmail() const {
  return mainObject(OxProPertyEmail).host<OxObjectEmail>();
}

std::vector<OxPropertyPtr> OxGeneralPerson::notNullValueProperty() const {
  std::vector<OxPropertyPtr> result;
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    const auto* value = find(property->name());
    if (value != nullptr && !isEmptyMultiple(*value)) result.push_back(property);
  }
  return result;
}

std::vector<std::string> OxGeneralPerson::tagArray() const {
  std::vector<std::string> result;
  const auto object = singleObject(OxProPertyTags);
  if (const auto* tags = object.array()) {
    for (const auto& tag : *tags) {
      if (tag.text() != nullptr) result.push_back(*tag.text());
    }
  }
  return result;
}

void OxGeneralPerson::addTag(TextView tag) {
  if (!tag) return;
  auto tags = tagArray();
  tags.emplace_back(*tag);
  setTags(tags);
}

void OxGeneralPerson::removeTag(TextView tag) {
  if (!tag) return;
  auto tags = tagArray();
  std::erase(tags, *tag);
  setTags(tags);
}

void OxGeneralPerson::setTags(const std::optional<std::vector<std::string>>& tags) {
  Array kept;
  if (tags) {
    std::unordered_set<std::string_view, KeyedHash> met;
    for (const auto& tag : *tags) {
      if (met.insert(tag).second) kept.emplace_back(tag);
    }
  }
  if (kept.empty()) return setValue_byPropertyName(nullptr, OxProPertyTags);
  setSingleObject(Object(std::move(kept)), OxProPertyTags);
}

}  // namespace ox
