#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"

#include <algorithm>
#include <array>
#include <string>

#include "ox/base/text/script.hpp"

namespace ox {

Text OxObjectPersonName::displayString() const {
  if (!first_ && !middle_ && !last_) return std::nullopt;
  std::array parts = {&first_, &middle_, &last_};
  const bool eastAsian = std::all_of(parts.begin(), parts.end(), [](const Text* part) {
    return !*part || (*part)->empty() || isHanKanaHangul(**part);
  });
  if (eastAsian) std::reverse(parts.begin(), parts.end());
  std::string result;
  for (const Text* part : parts) {
    if (!*part || (*part)->empty()) continue;
    if (!result.empty() && !eastAsian) result += ' ';
    result += **part;
  }
  return result;
}

bool OxObjectPersonName::equals(const HostObject& other) const {
  const auto* same = dynamic_cast<const OxObjectPersonName*>(&other);
  return same != nullptr && first_ == same->first_ && middle_ == same->middle_ &&
         last_ == same->last_;
}

}  // namespace ox
