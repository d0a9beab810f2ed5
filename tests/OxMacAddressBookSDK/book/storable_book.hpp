#pragma once

#include <cstdint>
#include <memory>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"

namespace ox::test {

// A small random book in which everything may occur that the store gives back as it took it: every
// property and every label, parts missing and parts empty, several scripts, photos, tags, groups
// three levels deep, persons without any value (in no group: a load makes them but does not link
// them). Left out is what a book loses on its way into the store: line feeds in names, numbers and
// e-mail addresses, texts of string properties that are empty, addresses without country code,
// accounts without user name. The same seed gives the same book on every machine.
std::shared_ptr<OxAddressBookGeneral> storableBook(std::uint64_t seed);

}  // namespace ox::test
