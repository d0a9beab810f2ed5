#include "ox/platform/AddressBook/record_factory.hpp"

#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox {

std::shared_ptr<ABPerson> makePersonRecord(const RecordKey& key) {
  return std::make_shared<_ABPerson>(key);
}

std::shared_ptr<ABGroup> makeGroupRecord(const RecordKey& key) {
  return std::make_shared<_ABGroup>(key);
}

}  // namespace ox
