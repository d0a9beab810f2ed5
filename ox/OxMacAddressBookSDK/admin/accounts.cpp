#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"

#include <memory>
#include <utility>

#include "ox/OxMacAddressBookSDK/ground/tag_acts.hpp"
#include "ox/base/uuid.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {
namespace {

void execute(SaveRequest request) {
  if (!contactSource().execute(request)) throw AccountRefused(request.reason);
}

}  // namespace

std::vector<CNContainerPtr> accounts() {
  std::vector<CNContainerPtr> accounts;
  for (auto& container : contactSource().containers()) {
    accounts.push_back(std::make_shared<const CNContainer>(std::move(container)));
  }
  return accounts;
}

CNContainerPtr accountNamed(std::string_view identifier) {
  auto container = contactSource().containerNamed(identifier);
  return container ? std::make_shared<const CNContainer>(std::move(container)) : nullptr;
}

std::vector<RecordKey> recordsOfAccount(std::string_view identifier, RecordKind kind) {
  return contactSource().recordsIn(identifier, kind);
}

CNContainerPtr addAccount(const std::string& name, CNContainerType type,
                          const std::string& identifier) {
  ContainerInfo account{identifier, name, type};
  if (identifier.empty()) account.identifier = uuidText(makeUuid()) + ":ABAccount";
  SaveRequest request;
  request.newContainers.push_back(account);
  execute(std::move(request));
  return std::make_shared<const CNContainer>(
      std::make_shared<const ContainerInfo>(std::move(account)));
}

bool removeAccount(std::string_view identifier, WithRecords withRecords) {
  const bool withAll = withRecords == WithRecords::Yes;
  const auto account = contactSource().containerNamed(identifier);
  SaveRequest request;
  request.removedContainers.push_back(
      {account ? account->identifier : std::string(identifier), withAll});
  const auto persons =
      withAll ? contactSource().recordsIn(identifier, RecordKind::Person) : RecordKeys();
  bool tagsAreSafe = false;
  if (!executeWithTags(request, persons, tagsAreSafe)) throw AccountRefused(request.reason);
  return tagsAreSafe;
}

}  // namespace ox
