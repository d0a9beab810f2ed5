#include "ox/OxMacAddressBookSDK/_ABPerson/convert/address.hpp"

#include <array>

#include "ox/OxAddressBookSDK/objects/OxCountry.hpp"
#include "ox/records/property_keys.hpp"

namespace ox::convert {
namespace {

struct FieldRow {
  std::string_view storedKey;
  std::string_view field;
};

constexpr std::array kFields = {
    FieldRow{kABAddressCountryKey, OxAddressFieldCountryOrArea},
    FieldRow{kABAddressStateKey, OxAddressFieldState},
    FieldRow{kABAddressCityKey, OxAddressFieldCity},
    FieldRow{kABAddressStreetKey, OxAddressFieldStreet},
    FieldRow{kABAddressZIPKey, OxAddressFieldZIP},
};

}  // namespace

std::string_view storedAddressKeyOf(std::string_view field) {
  for (const auto& row : kFields) {
    if (row.field == field) return row.storedKey;
  }
  return {};
}

std::shared_ptr<OxObjectAddress> addressFromStored(const Dictionary& stored) {
  auto address = OxObjectAddress::init();
  address->setCountryCode(stored.get(kABAddressCountryCodeKey).toText());
  for (const auto& row : kFields) {
    address->setStringValue_forFieldName(stored.get(row.storedKey).toText(), row.field);
  }
  if (!address->countryCode()) address->setCountryCode(OxCountry::local()->code());
  return address;
}

std::shared_ptr<Dictionary> storedFromAddress(const OxObjectAddress& address) {
  auto stored = std::make_shared<Dictionary>();
  if (address.countryCode()) stored->set(kABAddressCountryCodeKey, address.countryCode());
  for (const auto& row : kFields) {
    if (const auto text = address.stringValueByFieldName(row.field))
      stored->set(row.storedKey, *text);
  }
  return stored;
}

}  // namespace ox::convert
