#include "ox/records/encoded_values.hpp"

#include "ox/records/property_codec.hpp"

namespace ox {

EncodedValues encodedValues(const PropertyBag& properties) {
  const auto* cardUid = properties.text(property_id::kCardUid);
  return {encodeProperties(properties), cardUid != nullptr ? Text(*cardUid) : std::nullopt,
          customPropertiesOf(properties)};
}

std::vector<PropertyId> customPropertiesOf(const PropertyBag& properties) {
  std::vector<PropertyId> custom;
  // They have the highest numbers, and a bag is ordered by number.
  for (auto entry = properties.entries().rbegin();
       entry != properties.entries().rend() && entry->first >= kFirstCustomProperty; ++entry) {
    custom.push_back(entry->first);
  }
  return custom;
}

std::string misfitOf(const PropertyBag& properties) {
  for (const auto& [id, value] : properties.entries()) {
    if (!fitsType(value, property_table::typeOf(id))) {
      return "a value of the wrong type for " + property_table::nameOf(id);
    }
  }
  return {};
}

}  // namespace ox
