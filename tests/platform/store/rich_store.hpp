#pragma once

#include <string>

#include "ox/platform/store/store_source.hpp"

namespace ox::support {

// Fills an empty store with something of everything: records, pictures, groups in a tree, accounts,
// one of them in step with another side, tags, a custom property, and a journal with removals and
// one command that was taken back.
void fillRichStore(ContactSource& source);

// All that can be read of such a store, its journal included. Throws where reading fails.
std::string wholeStateOf(ContactSource& source);

}  // namespace ox::support
