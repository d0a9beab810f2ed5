#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace ox {
namespace {

constexpr std::array kFields = {OxAddressFieldCountryOrArea, OxAddressFieldState,
                                OxAddressFieldCity, OxAddressFieldStreet, OxAddressFieldZIP};

std::optional<std::size_t> indexOfField(TextView field) {
  if (!field) return std::nullopt;
  const auto* const found = std::find(kFields.begin(), kFields.end(), *field);
  if (found == kFields.end()) return std::nullopt;
  return static_cast<std::size_t>(found - kFields.begin());
}

}  // namespace

Text OxObjectAddress::stringValueByFieldName(TextView field) const {
  const auto index = indexOfField(field);
  return index ? fields_[*index] : std::nullopt;
}

void OxObjectAddress::setStringValue_forFieldName(Text value, TextView field) {
  if (const auto index = indexOfField(field)) fields_[*index] = std::move(value);
}

bool OxObjectAddress::equals(const HostObject& other) const {
  const auto* same = dynamic_cast<const OxObjectAddress*>(&other);
  return same != nullptr && countryCode_ == same->countryCode_ && fields_ == same->fields_;
}

}  // namespace ox
