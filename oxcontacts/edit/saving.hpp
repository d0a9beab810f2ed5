#pragma once

#include <string>

#include "ox/base/failures.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

// What is thrown when the store did not take something, for the last reason that the watch saw;
// kBusy when another process kept it locked.
CommandError storeFailure(const std::string& what, const failures::Watch& watch);

// Writes every unsaved change, and the tags, so that they survive a power cut. False when a removal
// elsewhere has overtaken edits: they are named to the user, there is nothing to show for them, and
// the program then ends with kDoneWithRefusals, for they are refusals. Gives up when
// nothing was written.
bool saveEdits();
// Throws the CommandError that says that contacts are saved and not all tags, for the last reason
// that the watch saw.
[[noreturn]] void refuseTagsLeft(const failures::Watch& watch);

// Ends the command with storeFailure: forgets every unsaved change.
[[noreturn]] void giveUp(const failures::Watch& watch,
                         const std::string& what = "nothing was saved");
// Gives up when a step of an edit of many failed, whose others would be saved without it.
void giveUpHalfEdits(const failures::Watch& watch);

}  // namespace ox::program
