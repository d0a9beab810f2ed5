#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"

namespace ox {

// A neutral book in which anything may occur that a book can hold: every property, value object and
// label, parts missing and parts empty, several scripts, pictures, tags, groups three levels deep,
// persons without any value. The same seed gives the same book on every machine.
std::shared_ptr<OxAddressBookGeneral> randomBook(std::uint64_t seed);

// Same records in the same order with the same content; tells the first difference.
testing::AssertionResult haveSameContent(const OxAddressBookGeneral& a,
                                         const OxAddressBookGeneral& b);

}  // namespace ox
