#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ox/OxAddressBookSDK/properties/OxPropertyNames.hpp"
#include "ox/OxAddressBookSDK/properties/value_types.hpp"
#include "ox/base/export.hpp"
#include "ox/base/text.hpp"

namespace ox {

class OxProperty;
using OxPropertyPtr = std::shared_ptr<const OxProperty>;

// What is known of one property of a person. Immutable; safe from any thread. The standard
// descriptors are made once and live until the process ends; pointers to them own nothing, so keep
// no weak_ptr to one.
class OX_EXPORT OxProperty {
  struct Key {
    explicit Key() = default;
  };

 public:
  // The standard descriptor of that name, always the same object. A name that no standard property
  // has gives a new descriptor of a string property; a missing or empty name gives null.
  static OxPropertyPtr propertyWithName(TextView name);

  // Every standard descriptor, in the order in which a host shows them.
  static const std::vector<OxPropertyPtr>& StandardPropertyArray();

  const std::string& name() const { return name_; }
  // English, for the user; of an unknown property its name.
  const std::string& displayName() const { return displayName_; }
  // A code of value_type.
  std::int32_t valueType() const { return valueType_; }
  // The type of each element when valueType() is kMultiple, else kString.
  std::int32_t subValueType() const { return subValueType_; }

  OxProperty(Key, std::string name, std::string displayName, std::int32_t valueType,
             std::int32_t subValueType)
      : name_(std::move(name)),
        displayName_(std::move(displayName)),
        valueType_(valueType),
        subValueType_(subValueType) {}

 private:
  friend struct StandardProperties;

  std::string name_;
  std::string displayName_;
  std::int32_t valueType_;
  std::int32_t subValueType_;
};

}  // namespace ox
