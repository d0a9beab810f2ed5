#include "ox/OxAddressBookSDK/objects/OxCountry.hpp"

#include "ox/base/text/locale.hpp"

namespace ox {

std::shared_ptr<const OxCountry> OxCountry::local() {
  return std::make_shared<const OxCountry>(Key(), localCountryCode());
}

}  // namespace ox
