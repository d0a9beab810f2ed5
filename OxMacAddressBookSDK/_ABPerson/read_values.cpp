#include "OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"
#include "platform/AddressBook/ABMultiValue.hpp"

namespace ox {

std::shared_ptr<OxMutableSingleValue> _ABPerson::singleValueByMacValue_label_type(
    const Object& value, const std::shared_ptr<OxLabel>& label, std::int32_t type) const {
  if (value.isMissing()) return nullptr;
  auto single = OxMutableSingleValue::init();
  single->setLabel(label);
  single->setValue(value);
  single->setType(type);
  return single;
}

std::shared_ptr<OxMutableSingleValue> _ABPerson::singleValueByMacValue_property(
    const Object& value, const OxPropertyPtr& property) const {
  if (value.isMissing()) return nullptr;
  auto label = OxLabel::init();
  if (property) {
    label->setName(property->displayName());
    label->setDisplayName(property->displayName());
  }
  return singleValueByMacValue_label_type(value, label,
                                          property ? property->valueType() : value_type::kString);
}

std::shared_ptr<OxMutableMultipleValue> _ABPerson::multipleValueByMacValue_property(
    const MultiValuePtr& value, const OxPropertyPtr& property) const {
  const ABMultiValue stored(value);
  const auto type = property ? property->subValueType() : value_type::kString;
  auto multiple = OxMutableMultipleValue::init();
  for (std::uint64_t i = 0; i < stored.count(); ++i) {
    auto label = OxLabel::init();
    label->setName(stored.labelAtIndex(i));
    label->setDisplayName(labelDisplayNameByName(label->name()));
    const Object element = convert::elementFromStored(stored.valueAtIndex(i), type);
    multiple->addValue(singleValueByMacValue_label_type(element, label, type));
  }
  if (const auto primary = stored.indexForIdentifier(stored.primaryIdentifier())) {
    multiple->setMainValue(multiple->valueAtIndex(*primary));
  }
  return multiple;
}

std::shared_ptr<OxMutableSingleValue> _ABPerson::mainValueForProPertyName(TextView name) const {
  const auto value = valueByPropertyName(name);
  if (!value || value->type() != value_type::kMultiple) return nullptr;
  const auto multiple = std::dynamic_pointer_cast<OxMutableMultipleValue>(value);
  return multiple ? multiple->mainValue() : nullptr;
}

Object _ABPerson::valueOfMainValueForProPertyName(TextView name) const {
  const auto main = mainValueForProPertyName(name);
  return main && main->type() != value_type::kMultiple ? main->value() : Object();
}

}  // namespace ox
