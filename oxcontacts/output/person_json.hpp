#pragma once

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "oxcontacts/output/json.hpp"

namespace ox::program {

// {"ID","addressBookID","displayName","nameChineesPinyin","groups","tags","properties"}: all that
// is known of the person.
Json personJson(const _ABPerson& person);

}  // namespace ox::program
