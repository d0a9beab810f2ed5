#pragma once

#include <exception>
#include <string>

#include "ox/base/failures.hpp"
#include "ox/base/store_location.hpp"

namespace ox {

// The one way in which failures of the tag file end: noticed, false, and the answer stays what it
// was. Other work that meets them goes on without the tags, so they are not counted among what
// failed of that work.
template <typename Work>
bool containedTags(const Work& work) {
  try {
    work();
    return true;
  } catch (const std::exception& error) {
    const failures::Aside aside;
    failures::notice(kindOf(error), std::string("tags: ") + error.what(), tagStorePath());
    return false;
  }
}

}  // namespace ox
