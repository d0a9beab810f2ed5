// From values of the model to what the store holds.
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"
#include "ox/platform/AddressBook/ABMultiValue.hpp"

namespace ox {
namespace {

// The multi-value that the person holds under that name, without its entries; a new one when the
// person holds none.
ABMutableMultiValue emptied(const PropertyValue& current) {
  const auto* const stored = std::get_if<MultiValuePtr>(&current);
  if (stored == nullptr) return ABMutableMultiValue::init();
  auto copy = ABMutableMultiValue::mutableCopy(ABMultiValue(*stored));
  while (copy.count() > 0) copy.removeValueAndLabelAtIndex(copy.count() - 1);
  return copy;
}

void appendElement(const OxMutableSingleValue& element, ABMutableMultiValue& stored) {
  if (element.type() == value_type::kMultiple) return;
  Object value = convert::storedFromElement(element.value(), element.type());
  if (value.isMissing()) return;
  stored.addValue_withLabel(std::move(value),
                            element.label() ? TextView(element.label()->name()) : TextView());
}

// The index is the one in the model's list even where elements were left out: the primary mark may
// land on a neighbour or on nothing. Required.
void markPrimary(const OxMutableMultipleValue& multiple, ABMutableMultiValue& stored) {
  if (!multiple.mainValue()) return;
  const Text identifier = stored.identifierAtIndex(multiple.indexOfValue(multiple.mainValue()));
  if (identifier) stored.setPrimaryIdentifier(identifier);
}

Object storedFromSingle(const OxMutableSingleValue& single, std::int32_t valueType) {
  const auto* const text = single.value().text();
  const bool empty = valueType == value_type::kString && text != nullptr && text->empty();
  return empty ? Object() : single.value();
}

}  // namespace

PropertyValue _ABPerson::macValueByOxValue_property(const OxValuePtr& value,
                                                    const OxPropertyPtr& property) const {
  if (!value) return Object();
  if (value->type() != value_type::kMultiple) {
    const auto single = std::dynamic_pointer_cast<OxMutableSingleValue>(value);
    const auto valueType = property ? property->valueType() : value_type::kString;
    return single ? storedFromSingle(*single, valueType) : Object();
  }
  const auto multiple = std::dynamic_pointer_cast<OxMutableMultipleValue>(value);
  if (!multiple || !property) return Object();
  auto stored = emptied(valueToChange(macPropertyNameByName(property->name())));
  for (std::uint64_t i = 0; i < multiple->count(); ++i) {
    appendElement(*multiple->valueAtIndex(i), stored);
  }
  if (stored.count() == 0) return Object();
  markPrimary(*multiple, stored);
  return stored.content();
}

}  // namespace ox
