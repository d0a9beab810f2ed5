#pragma once

#include <memory>
#include <string>

#include "ox/platform/AddressBook/ABAddressBook.hpp"

// The record view as tests look at it. A record that is not there is null.

namespace ox::record_view {

std::shared_ptr<ABAddressBook> book();
std::shared_ptr<ABPerson> personNamed(const std::string& id);
std::shared_ptr<ABGroup> groupNamed(const std::string& id);

// "-" when there is none.
std::string firstName(const ABRecord& record);
bool setFirst(const std::string& id, const std::string& name);

// Everything that the record view holds: "Ann Ben [Friends: Ann]".
std::string visible();
// The same as another process sees it.
std::string elsewhere();

}  // namespace ox::record_view
