// The name: three stored texts, one value of the model.
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/base/failures.hpp"

namespace ox {
namespace {

Text namePart(const _ABPerson& person, std::string_view property) {
  const PropertyValue stored = person.valueForProperty(property);
  const auto* const part = std::get_if<Object>(&stored);
  return part && part->text() ? withoutLineBreaks(*part->text()) : std::nullopt;
}

}  // namespace

std::shared_ptr<OxMutableSingleValue> _ABPerson::nameValue() const {
  auto name = OxObjectPersonName::initWithFirst_middle_last(namePart(*this, kABFirstNameProperty),
                                                            namePart(*this, kABMiddleNameProperty),
                                                            namePart(*this, kABLastNameProperty));
  return singleValueByMacValue_property(std::move(name),
                                        OxProperty::propertyWithName(OxProPertyName));
}

void _ABPerson::setNameValue(const std::shared_ptr<OxMutableSingleValue>& value) {
  const auto name = value ? value->value().host<OxObjectPersonName>() : nullptr;
  if (!name && value && !value->value().isMissing()) {
    return failures::noticeRefusal("a name must be a person name", key().text());
  }
  setValue_forProperty(name ? Object(name->first()) : Object(), kABFirstNameProperty);
  setValue_forProperty(name ? Object(name->middle()) : Object(), kABMiddleNameProperty);
  setValue_forProperty(name ? Object(name->last()) : Object(), kABLastNameProperty);
}

}  // namespace ox
