#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"

namespace ox {

bool OxObjectInstantMessage::equals(const HostObject& other) const {
  const auto* same = dynamic_cast<const OxObjectInstantMessage*>(&other);
  if (same == nullptr || userName_ != same->userName_) return false;
  if (!server_ || !same->server_) return server_ == same->server_;
  return server_->name() == same->server_->name();
}

}  // namespace ox
