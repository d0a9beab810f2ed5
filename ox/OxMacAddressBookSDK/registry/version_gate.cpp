#include "ox/OxMacAddressBookSDK/registry/version_gate.hpp"

#include "ox/platform/system/Gestalt.hpp"

namespace ox {
namespace {

// 0 when the system does not tell.
std::int32_t versionNumber(std::uint32_t selector) {
  std::int32_t number = 0;
  Gestalt(selector, &number);
  return number;
}

}  // namespace

bool VersionGate::answer() {
  std::int8_t cached = cached_.load();
  if (cached == kNotAsked) {
    const auto major = versionNumber(gestaltSystemVersionMajor);
    const auto minor = versionNumber(gestaltSystemVersionMinor);
    cached = isAbove(major, minor, minorThreshold_) ? 1 : 0;
    cached_.store(cached);
  }
  return cached != 0;
}

}  // namespace ox
