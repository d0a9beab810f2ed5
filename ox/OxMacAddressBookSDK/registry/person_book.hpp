#pragma once

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/base/export.hpp"

namespace ox {

// Makes the book of the person's account, without the walk over all records by which
// personAddressBook finds the listed one: from now on that answers this book for the persons of the
// account, in this process. For a program that looks at a few persons and ends. It has the ID,
// name, service and tags of the listed book, and no persons of its own. Nothing happens where no
// account is known to hold the person, or more than one bears the ID of its book. Safe from any
// thread.
OX_EXPORT void makeBookOf(const _ABPerson& person);

}  // namespace ox
