#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"

namespace ox {

std::shared_ptr<OxMutableSingleValue> OxMutableSingleValue::copySingle() const {
  auto result = init();
  result->value_ = value_;
  result->type_ = type_;
  if (label_) {
    result->label_ = OxLabel::init();
    *result->label_ = *label_;
  }
  return result;
}

bool OxMutableSingleValue::equals(const HostObject& other) const {
  if (this == &other) return true;
  const auto* single = dynamic_cast<const OxMutableSingleValue*>(&other);
  if (single == nullptr || type_ != single->type_ || !(value_ == single->value_)) return false;
  if (!label_ || !single->label_) return label_ == single->label_;
  return *label_ == *single->label_;
}

}  // namespace ox
