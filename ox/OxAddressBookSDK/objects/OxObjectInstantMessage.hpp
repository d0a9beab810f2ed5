#pragma once

#include <memory>
#include <utility>

#include "ox/OxAddressBookSDK/objects/OxInstantMessageServer.hpp"
#include "ox/base/export.hpp"
#include "ox/base/object.hpp"
#include "ox/base/text.hpp"

namespace ox {

// An account with an instant-message service. Immutable.
class OX_EXPORT OxObjectInstantMessage final : public HostObject {
  struct Key {
    explicit Key() = default;
  };

 public:
  using Server = std::shared_ptr<const OxInstantMessageServer>;

  static std::shared_ptr<OxObjectInstantMessage> initWithUserName_server(Text userName,
                                                                         Server server) {
    return std::make_shared<OxObjectInstantMessage>(Key(), std::move(userName), std::move(server));
  }

  const Text& userName() const { return userName_; }
  const Server& server() const { return server_; }

  bool equals(const HostObject& other) const override;

  OxObjectInstantMessage(Key, Text userName, Server server)
      : userName_(std::move(userName)), server_(std::move(server)) {}

 private:
  Text userName_;
  Server server_;
};

}  // namespace ox
