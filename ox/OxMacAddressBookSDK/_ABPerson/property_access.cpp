// Reading and writing a property by its descriptor or by its name: who does it, and in what order.
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/name_tables.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/tag_list.hpp"
#include "ox/base/failures.hpp"

namespace ox {
namespace {

bool isSpecial(std::string_view name) {
  return name == OxProPertyName || name == OxProPertyThumbnail || name == OxProPertyTags;
}

bool isEmptyMultiple(const OxValue& value) {
  const auto* const multiple = dynamic_cast<const OxMutableMultipleValue*>(&value);
  return multiple != nullptr && multiple->count() == 0;
}

// Why nothing can be made of the value; null when something can. An element of type multiple is
// passed over, as one that holds nothing is.
const char* misfitOf(const OxValue& value) {
  if (value.type() != value_type::kMultiple) return nullptr;
  const auto* const multiple = dynamic_cast<const OxMutableMultipleValue*>(&value);
  if (multiple == nullptr) return "a single value of type multiple for ";
  for (std::uint64_t i = 0; i < multiple->count(); ++i) {
    const auto element = multiple->valueAtIndex(i);
    if (convert::fitsElementType(element->value(), element->type())) continue;
    return "an element that does not fit its type for ";
  }
  return nullptr;
}

}  // namespace

OxValuePtr _ABPerson::valueByProperty(const OxPropertyPtr& property) const {
  if (!property) return nullptr;
  const std::string_view name = property->name();
  if (name == OxProPertyName) return nameValue();
  if (name == OxProPertyThumbnail) return thumbnailValue();
  if (name == OxProPertyTags) {
    return singleValueByMacValue_property(tagListObject(tagArray()), property);
  }
  const std::string_view storeName = names::storeNameOf(name);
  const PropertyValue stored = valueForProperty(storeName);
  if (isMissing(stored)) return nullptr;
  // The store's own type of the property decides, not the descriptor's.
  if ((typeOfProperty(storeName) & kABMultiValueMask) != 0) {
    const auto* const multiple = std::get_if<MultiValuePtr>(&stored);
    return multipleValueByMacValue_property(multiple ? *multiple : nullptr, property);
  }
  const auto* const single = std::get_if<Object>(&stored);
  return single ? singleValueByMacValue_property(*single, property) : nullptr;
}

OxValuePtr _ABPerson::valueByPropertyName(TextView name) const {
  return valueByProperty(OxProperty::propertyWithName(name));
}

void _ABPerson::setValue_byProperty(const OxValuePtr& value, const OxPropertyPtr& property) {
  if (!property) return;
  const std::string_view name = property->name();
  if (isSpecial(name)) return setSpecialValue(value, name);
  if (const auto* const misfit = value ? misfitOf(*value) : nullptr) {
    return failures::noticeRefusal(misfit + std::string(name), key().text());
  }
  setValue_forProperty(macValueByOxValue_property(value, property), names::storeNameOf(name));
  // The display name falls back to the company.
  if (name == OxProPertyCompany) removeDisplayNameCache();
}

void _ABPerson::setSpecialValue(const OxValuePtr& value, std::string_view name) {
  const auto single = std::dynamic_pointer_cast<OxMutableSingleValue>(value);
  // A multiple value is of the wrong kind here. It is refused as the store refuses one, and the old
  // value stays.
  if (value && !single) {
    return failures::noticeRefusal("a multiple value for " + std::string(name), key().text());
  }
  if (name == OxProPertyThumbnail) return setThumbnailValue(single);
  if (name == OxProPertyTags) return setTagsValue(single);
  setNameValue(single);
  removeDisplayNameCache();
}

void _ABPerson::setValue_byPropertyName(const OxValuePtr& value, TextView name) {
  setValue_byProperty(value, OxProperty::propertyWithName(name));
}

std::vector<OxPropertyPtr> _ABPerson::notNullValueProperty() const {
  const auto book = personAddressBook();
  const auto& supported = book ? book->supportProperty() : OxProperty::StandardPropertyArray();
  std::vector<OxPropertyPtr> kept;
  for (const auto& property : supported) {
    const auto value = valueByProperty(property);
    if (value && !isEmptyMultiple(*value)) kept.push_back(property);
  }
  return kept;
}

}  // namespace ox
