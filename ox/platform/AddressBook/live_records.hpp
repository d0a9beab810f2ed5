#pragma once

#include <memory>
#include <vector>

#include "ox/platform/AddressBook/ABGroup.hpp"
#include "ox/platform/AddressBook/ABPerson.hpp"
#include "ox/platform/store/values/record_keys.hpp"

// The identity map: one live object for each stored record, owned by whoever holds it. Safe from
// any thread.

namespace ox::live_records {

// The live object of that record, made when there is none.
std::shared_ptr<ABPerson> person(const RecordKey& key);
std::shared_ptr<ABGroup> group(const RecordKey& key);

// The same for a whole list.
std::vector<std::shared_ptr<ABPerson>> persons(const RecordKeys& keys);
std::vector<std::shared_ptr<ABGroup>> groups(const RecordKeys& keys);

// Called by a record that is being destroyed.
void forget(const ABRecord& record);

}  // namespace ox::live_records
