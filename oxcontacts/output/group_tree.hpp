#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"

namespace ox::program {

using Group = std::shared_ptr<_ABGroup>;
using Groups = std::vector<Group>;

// Groups with everything below them. A group that lies in several groups shows its sub-groups once.

// [{"ID","displayName","addressBookID","persons","includePersons","subGroups":[...]}];
// includePersons is null where groups lie in one another in too many ways to count.
void printJsonTree(const Groups& roots);
// The same of one group, without the brackets.
std::string jsonOfGroup(const Group& group);
// {"ID","displayName","addressBookID"}: what can be told of a group without asking for what is in
// it.
std::string jsonOfGroupAlone(const Group& group);
// A line a group, for readers.
void printTree(const Groups& roots);

}  // namespace ox::program
