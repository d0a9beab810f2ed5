// Plain records for the platform's own tests, which have no framework above them.
#include "ox/platform/AddressBook/record_factory.hpp"

namespace ox {

std::shared_ptr<ABPerson> makePersonRecord(const RecordKey& key) {
  return std::make_shared<ABPerson>(key);
}

std::shared_ptr<ABGroup> makeGroupRecord(const RecordKey& key) {
  return std::make_shared<ABGroup>(key);
}

}  // namespace ox
