#include "ox/OxMacAddressBookSDK/_ABPerson/convert/instant_message.hpp"

#include "ox/records/property_keys.hpp"

namespace ox::convert {

std::shared_ptr<OxObjectInstantMessage> instantMessageFromStored(const Dictionary& stored) {
  auto server =
      OxInstantMessageServer::serverWithName(stored.get(kABInstantMessageServiceKey).toText());
  return OxObjectInstantMessage::initWithUserName_server(
      stored.get(kABInstantMessageUsernameKey).toText(), std::move(server));
}

std::shared_ptr<Dictionary> storedFromInstantMessage(const OxObjectInstantMessage& account) {
  auto stored = std::make_shared<Dictionary>();
  if (!account.userName()) return stored;
  stored->set(kABInstantMessageUsernameKey, account.userName());
  if (account.server()) stored->set(kABInstantMessageServiceKey, account.server()->name());
  return stored;
}

}  // namespace ox::convert
