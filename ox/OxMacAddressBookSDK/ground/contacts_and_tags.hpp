#pragma once

#include "ox/base/export.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"

namespace ox {

// What a save did with both halves.
struct SavedContactsAndTags {
  SaveReport contacts;
  bool tagsAreSafe = false;  // no tag that was changed so far would be lost in a power cut
};

// The one way in which this library and its programs save: the unsaved changes that a save of this
// thread writes (ABAddressBook::save), and the tags that the thread holds. Where the contacts
// cannot be written, no tag that is held is. What failed is noticed too.
OX_EXPORT SavedContactsAndTags saveContactsAndTags();

}  // namespace ox
