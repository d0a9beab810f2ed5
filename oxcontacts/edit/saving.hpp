#pragma once

#include <string>

#include "oxcontacts/context.hpp"

namespace ox::program {

// What is thrown when the store did not take something, for the last reason that was counted;
// kBusy when another process kept it locked.
CommandError storeFailure(const std::string& what);

// Writes every unsaved change, and the tags, so that they survive a power cut. Throws storeFailure
// when nothing was written. Edits that a removal elsewhere has overtaken are named to the user; the
// program then ends with kDoneWithRefusals, for they are counted as refusals.
void saveEdits();

}  // namespace ox::program
