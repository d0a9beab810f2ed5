#include "oxcontacts/edit/value_parts.hpp"

#include <algorithm>
#include <array>

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"

namespace ox::program {
namespace {

struct AddressPart {
  std::string_view name;
  std::string_view field;
};

constexpr std::array kAddressParts = {
    AddressPart{"street", OxAddressFieldStreet},         AddressPart{"city", OxAddressFieldCity},
    AddressPart{"state", OxAddressFieldState},           AddressPart{"zip", OxAddressFieldZIP},
    AddressPart{"country", OxAddressFieldCountryOrArea},
};

}  // namespace

std::vector<std::string_view> partNames(const OxProperty& property) {
  if (isName(property)) return {"first", "middle", "last"};
  std::vector<std::string_view> names;
  if (!holdsAddresses(property)) return names;
  for (const auto& part : kAddressParts) names.push_back(part.name);
  return names;
}

std::string_view addressFieldOf(std::string_view part) {
  const auto* row = std::ranges::find(kAddressParts, part, &AddressPart::name);
  return row != kAddressParts.end() ? row->field : std::string_view();
}

bool isMultiple(const OxProperty& property) {
  return property.valueType() == value_type::kMultiple;
}

bool isName(const OxProperty& property) {
  return property.valueType() == value_type::kPersonName;
}

bool holdsAddresses(const OxProperty& property) {
  return isMultiple(property) && property.subValueType() == value_type::kAddress;
}

}  // namespace ox::program
