#include "ox/OxMacAddressBookSDK/ground/service_types.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

#include "ox/OxMacAddressBookSDK/ground/constants.hpp"
#include "ox/base/text/case.hpp"

namespace ox::services {
namespace {

struct ContainerNameRow {
  std::string_view containerName;
  Service service;
};

// Tested in this order.
constexpr std::array kContainerNames = {
    ContainerNameRow{"QQ", {OxAddressBookQQName, kQQ}},
    ContainerNameRow{"谷歌", {OxAddressGoogleName, kGoogle}},
    ContainerNameRow{"google", {OxAddressGoogleName, kGoogle}},
    ContainerNameRow{"facebook", {OxAddressFaceBookName, kFacebook}},
    ContainerNameRow{"Yahoo", {OxAddressYahooName, kYahoo}},
    ContainerNameRow{"linkedin", {OxAddressLinkedinName, kLinkedIn}},
    ContainerNameRow{"Aol", {OxAddressAolName, kAOL}},
    ContainerNameRow{"Exchange", {OxAddressExchangeName, kExchange}},
    ContainerNameRow{"iCloud", {OxAddressICloudName, kICloud}},
};

// By service type code.
constexpr std::array<std::string_view, 10> kArtworkStems = {
    "mac", "google", "qq", "facebook", "yahoo", "linkedin", "aol", "exchange", "icloud", "other",
};

}  // namespace

const Service* serviceOfContainerNamed(std::string_view name) {
  const auto* const row = std::find_if(
      kContainerNames.begin(), kContainerNames.end(),
      [name](const auto& candidate) { return equalsIgnoringCase(name, candidate.containerName); });
  return row == kContainerNames.end() ? nullptr : &row->service;
}

std::string_view artworkStem(std::int32_t type) {
  const bool known = type >= kLocal && type <= kICloud;
  return kArtworkStems[static_cast<std::size_t>(known ? type : kOther)];
}

}  // namespace ox::services
