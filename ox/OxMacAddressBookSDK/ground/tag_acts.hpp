#pragma once

#include <functional>

#include "ox/platform/store/values/record_keys.hpp"
#include "ox/platform/store/values/save_request.hpp"

namespace ox {

// How contacts and tags, which lie in two files, are one act (see contacts_and_tags.hpp, beside
// whose function these are): the changes of tags are written into the store with the contacts, in
// one commit, as a debt of the tag file, which then follows. Should the process end in between, the
// next one that discovers books or saves lets it follow. Where the contacts cannot be written, no
// tag is; where the tag file fails, that is noticed, the contacts stand, and the tags follow later.

// Executes a request with the tags that the thread holds; those of the persons that go with it go
// too. `tagsAreSafe` as in SavedContactsAndTags. False with a reason in the request when it was
// refused; throws StoreError.
bool executeWithTags(SaveRequest& request, const RecordKeys& goingPersons, bool& tagsAreSafe);

// Runs an edit of tags. What it changes belongs to the act of this thread when tags are held, and
// is an act of its own otherwise; when that cannot be written nothing is changed, and it is
// noticed.
void changeTags(const std::function<void()>& edit);

}  // namespace ox
