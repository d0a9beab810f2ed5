#pragma once

#include "ox/base/export.hpp"
#include "ox/base/image.hpp"

namespace ox {

class _ABPerson;

// The person's picture, as its bytes until somebody asks for pixels; null without one, and when its
// bytes are no picture that we can decode. Null and noticed as a failure when they cannot be read,
// and for want of memory.
OX_EXPORT ImagePtr storedPicture(const _ABPerson& person);

// For whoever asks for the pixels and finds no memory for them.
OX_EXPORT void noticeNoMemoryForPicture(const _ABPerson& person);

// True when the store holds a picture of the person that storedPicture does not give. For whoever
// promises that nothing is left out: readers take such a picture for none.
OX_EXPORT bool hasUnreadablePicture(const _ABPerson& person);

}  // namespace ox
