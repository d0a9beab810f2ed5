#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"

#include <memory>
#include <utility>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/uuid.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {
namespace {

void execute(SaveRequest request) {
  if (!contactSource().execute(request)) throw AccountRefused(request.reason);
}

std::vector<std::shared_ptr<_ABPerson>> personsOf(std::string_view identifier) {
  const auto keys = recordsOfAccount(identifier, RecordKind::Person);
  std::vector<std::shared_ptr<_ABPerson>> persons;
  for (const auto& record : ABAddressBook::sharedAddressBook()->recordsForKeys(keys)) {
    // One that this process has removed and not saved yet is not found any more.
    if (auto person = hostPerson(record)) {
      persons.push_back(std::move(person));
    }
  }
  return persons;
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

TagsToRemove::Outcome removeAccount(std::string_view identifier, WithRecords withRecords) {
  // Which tags go is asked of operations that report no failure but to a watch.
  const failures::Watch watch(failures::Watch::Over::OwnWork);
  const bool withAll = withRecords == WithRecords::Yes;
  const auto persons = withAll ? personsOf(identifier) : std::vector<std::shared_ptr<_ABPerson>>();
  if (!persons.empty()) OxMacAddressBook::addressBookArray();
  const TagsToRemove tags(persons);
  const auto account = contactSource().containerNamed(identifier);
  SaveRequest request;
  request.removedContainers.push_back(
      {account ? account->identifier : std::string(identifier), withAll});
  execute(std::move(request));
  const auto outcome = tags.remove();
  return watch.hasFailures() && outcome == TagsToRemove::Outcome::Removed
             ? TagsToRemove::Outcome::Incomplete
             : outcome;
}

}  // namespace ox
