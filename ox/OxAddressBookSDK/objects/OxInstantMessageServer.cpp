#include "ox/OxAddressBookSDK/objects/OxInstantMessageServer.hpp"

#include <array>
#include <string_view>
#include <unordered_map>

namespace ox {
namespace {

constexpr std::array<std::string_view, 10> kCommonNames = {
    "AIM", "Facebook", "GaduGadu", "GoogleTalk", "ICQ", "Jabber", "MSN", "QQ", "Skype", "Yahoo",
};

}  // namespace

struct CommonServers {
  std::unordered_map<std::string_view, std::shared_ptr<const OxInstantMessageServer>> byName;

  CommonServers() {
    for (const auto name : kCommonNames) {
      byName.emplace(name, std::make_shared<const OxInstantMessageServer>(
                               OxInstantMessageServer::Key(), std::string(name)));
    }
  }

  static const CommonServers& shared() {
    static const auto& servers = *new CommonServers;
    return servers;
  }
};

std::shared_ptr<const OxInstantMessageServer> OxInstantMessageServer::serverWithName(
    TextView name) {
  if (!name) return nullptr;
  const auto& byName = CommonServers::shared().byName;
  if (const auto found = byName.find(*name); found != byName.end()) return found->second;
  return std::make_shared<const OxInstantMessageServer>(Key(), std::string(*name));
}

}  // namespace ox
