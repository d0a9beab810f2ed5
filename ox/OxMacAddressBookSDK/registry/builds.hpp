#pragma once

#include <vector>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/registry/book_collector.hpp"

// The ways of finding the books of the store. Each walks the store afresh and keeps nothing.

namespace ox::registry {

using Books = std::vector<OxMacAddressBookPtr>;

enum class Caches { Leave, Fill };

// Persons, then groups, by the container that holds them; local containers without records last.
// Stamps every record met. Reports 100 at the end, not finished.
Books booksByRecords(LocalBookRule rule, Caches caches, const ProgressCallback& progress);

// Containers worth listing, then their contacts, which are stamped and put into the caches.
Books booksByContainers(const ProgressCallback& progress);

// Containers worth listing, their persons loaded.
Books booksByPreloadedContainers();

// One book for each account id of persons, then groups; the local one always first.
Books booksByAccountIds();

// Throws std::logic_error on a thread that is building the shared list, from which whatever asks
// for the book of a person cannot go on: called before such work has done anything.
void refuseWithinDiscovery();

}  // namespace ox::registry
