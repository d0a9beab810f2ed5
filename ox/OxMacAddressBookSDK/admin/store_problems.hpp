#pragma once

#include <string>
#include <vector>

#include "ox/base/export.hpp"

namespace ox {

// Everything that is wrong with the contact store of this process and with its tags, one sentence
// each; empty when both are sound. Reads every row, changes nothing and makes no file. Throws
// StoreError when the store cannot be opened.
OX_EXPORT std::vector<std::string> problemsOfStoreAndTags();

}  // namespace ox
