// From what the store holds to values of the model.
#include <algorithm>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"

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
  auto multiple = OxMutableMultipleValue::init();
  if (!value) return multiple;
  const auto type = property ? property->subValueType() : value_type::kString;
  for (const auto& entry : value->entries) {
    auto label = OxLabel::init();
    label->setName(entry.label);
    label->setDisplayName(labelDisplayNameByName(entry.label));
    multiple->addValue(singleValueByMacValue_label_type(
        convert::elementFromStored(entry.value, type), label, type));
  }
  if (value->primary == 0) return multiple;
  const auto main =
      std::find_if(value->entries.begin(), value->entries.end(),
                   [&](const auto& entry) { return entry.identifier == value->primary; });
  // The main element is looked for at the place that the primary entry has in the store, also when
  // an entry before it gave no element and every later one has moved up. Required.
  multiple->setMainValue(
      multiple->valueAtIndex(static_cast<std::uint64_t>(main - value->entries.begin())));
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
