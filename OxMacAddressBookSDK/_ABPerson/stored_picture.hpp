#pragma once

#include "base/image.hpp"

namespace ox {

class ABPerson;

// The person's picture, decoded; null without one, and when its bytes cannot be read or are none.
ImagePtr storedPicture(const ABPerson& person);

}  // namespace ox
