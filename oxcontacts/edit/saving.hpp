#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/OxMacAddressBookSDK/admin/tags_to_remove.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABRecord.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

// What is thrown when the store did not take something, for the last reason that the watch saw;
// kBusy when another process kept it locked.
CommandError storeFailure(const std::string& what, const failures::Watch& watch);

// Records that the store took as they were made, without values, before their values are saved.
using MadeRecords = std::vector<std::shared_ptr<ABRecord>>;

// Writes every unsaved change, and the tags, so that they survive a power cut. False when a removal
// elsewhere has overtaken edits: they are named to the user, there is nothing to show for them, and
// the program then ends with kDoneWithRefusals, for they are refusals. Gives up when
// nothing was written.
bool saveEdits(const MadeRecords& made = {});
// The tags alone, which are changed at once.
void saveTags();
// Throws a CommandError that says which tags of persons that are gone are left, and why, as the
// watch over their removal saw it.
void refuseTagsLeft(TagsToRemove::Outcome outcome, const failures::Watch& watch);

// Ends the command with storeFailure: forgets every unsaved change, removes what was made, with its
// tags, and names what could not be removed.
[[noreturn]] void giveUp(const failures::Watch& watch, const MadeRecords& made = {});

}  // namespace ox::program
