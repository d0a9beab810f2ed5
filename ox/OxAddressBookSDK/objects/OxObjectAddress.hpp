#pragma once

#include <array>
#include <memory>
#include <utility>

#include "ox/OxAddressBookSDK/properties/OxPropertyNames.hpp"
#include "ox/base/export.hpp"
#include "ox/base/object.hpp"
#include "ox/base/text.hpp"

namespace ox {

// A postal address: a country code and the five OxAddressField... texts, each of which may be
// missing. Filled by its maker, then shared and left alone.
class OX_EXPORT OxObjectAddress final : public HostObject {
  struct Key {
    explicit Key() = default;
  };

 public:
  // Every part missing.
  static std::shared_ptr<OxObjectAddress> init() {
    return std::make_shared<OxObjectAddress>(Key());
  }

  const Text& countryCode() const { return countryCode_; }
  void setCountryCode(Text code) { countryCode_ = std::move(code); }

  // Missing as well when the name is no field's.
  Text stringValueByFieldName(TextView field) const;
  // A missing text takes the field away; a name that is no field's is ignored.
  void setStringValue_forFieldName(Text value, TextView field);

  bool equals(const HostObject& other) const override;

  explicit OxObjectAddress(Key) {}

 private:
  Text countryCode_;
  std::array<Text, 5> fields_;
};

}  // namespace ox
