#pragma once

#include <utility>

#include "ox/OxAddressBookSDK/values/OxLabel.hpp"
#include "ox/OxAddressBookSDK/values/OxValue.hpp"
#include "ox/base/export.hpp"

namespace ox {

// One value with its label: a text, date, picture, tag list (an array of texts) or value object.
class OX_EXPORT OxMutableSingleValue final : public OxValue {
  struct Key {
    explicit Key() = default;
  };

 public:
  // Holds nothing, has no label and is of type kString.
  static std::shared_ptr<OxMutableSingleValue> init() {
    return std::make_shared<OxMutableSingleValue>(Key());
  }

  const Object& value() const { return value_; }
  void setValue(Object value) { value_ = std::move(value); }

  const std::shared_ptr<OxLabel>& label() const { return label_; }
  void setLabel(std::shared_ptr<OxLabel> label) { label_ = std::move(label); }

  std::int32_t type() const override { return type_; }
  void setType(std::int32_t type) { type_ = type; }

  OxValuePtr copy() const override { return copySingle(); }
  std::shared_ptr<OxMutableSingleValue> copySingle() const;

  bool equals(const HostObject& other) const override;

  explicit OxMutableSingleValue(Key) {}

 private:
  Object value_;
  std::shared_ptr<OxLabel> label_;
  std::int32_t type_ = value_type::kString;
};

}  // namespace ox
