#pragma once

#include "ox/base/export.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"

namespace ox {

// What a save did with both halves.
struct SavedContactsAndTags {
  SaveReport contacts;
  bool tagsAreSafe = false;  // all tags are as they should be, and would be after a power cut
};

// The one way in which this library and its programs save: the unsaved changes that a save of this
// thread writes (ABAddressBook::save), and with them the tags that the thread holds, without those
// of the persons that it removes. Where the contacts cannot be written, no tag that is held is.
// Where the tag file fails, the contacts stand and the tags follow later. What failed is noticed
// too.
OX_EXPORT SavedContactsAndTags saveContactsAndTags();

// Lets the tag file follow what is in the store and not in there yet: after an act that was not
// saved as above (journal::undo), and what a process left behind that ended too early, which the
// first discovery of books does. Noticed when that fails, but for a tag file that cannot be read:
// that is told whenever tags are asked for.
OX_EXPORT void followTags();

}  // namespace ox
