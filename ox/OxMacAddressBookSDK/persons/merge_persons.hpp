#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/persons/joined_values.hpp"
#include "ox/base/export.hpp"

namespace ox {

// What becomes of a person that takes in another record of the same one.
struct PersonMerge {
  JoinedValues values;
  bool takesPicture = false;                      // that of the other; the person has none
  bool leavesPicture = false;                     // both have one: that of the other is not taken
  std::vector<std::string> tags;                  // that the person does not have yet
  std::vector<std::shared_ptr<_ABGroup>> groups;  // that the person joins
  // Of another book, which the person cannot join.
  std::vector<std::shared_ptr<_ABGroup>> groupsLeft;
};

// Changes nothing. Throws ImageReadError where a picture cannot be read.
OX_EXPORT PersonMerge mergeOf(const _ABPerson& person, const _ABPerson& other);
// Carries it out and removes the other, in memory until the save; whoever does it in a WholeAct has
// all or nothing. False when something was refused, which is noticed (ox/base/failures.hpp).
OX_EXPORT bool mergeInto(_ABPerson& person, const std::shared_ptr<_ABPerson>& other,
                         const PersonMerge& merge);

// The person in another book: a new record there with every value, the picture's own bytes, the
// tags, and what its card held beyond the model; the old one is removed with its links to groups.
// The same holds of memory and refusals. Null when there is no such record afterwards.
OX_EXPORT std::shared_ptr<_ABPerson> moveInto(OxMacAddressBook& book,
                                              const std::shared_ptr<_ABPerson>& person);

}  // namespace ox
