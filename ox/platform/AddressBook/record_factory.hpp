#pragma once

#include <memory>

#include "ox/platform/AddressBook/ABGroup.hpp"
#include "ox/platform/AddressBook/ABPerson.hpp"

namespace ox {

// How the address book makes its record objects. Declared here and defined once in every binary by
// what lies above the platform, so that records answer that layer's interfaces directly; without a
// definition the binary does not link.
std::shared_ptr<ABPerson> makePersonRecord(const RecordKey& key);
std::shared_ptr<ABGroup> makeGroupRecord(const RecordKey& key);

}  // namespace ox
