#pragma once

#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"

namespace ox::test {

// Same records in the same order with equal values, names, sub-groups and members, whatever their
// IDs are; tells the first difference. A person without name is equal to one whose name has no
// parts, for that is how a store reads it.
testing::AssertionResult holdTheSame(const OxAddressBookGeneral& expected,
                                     const OxAddressBookGeneral& actual);

}  // namespace ox::test
