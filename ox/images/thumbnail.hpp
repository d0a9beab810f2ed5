#pragma once

#include <cstdint>

#include "ox/base/export.hpp"
#include "ox/base/image.hpp"

namespace ox::images {

// The square in the middle of the picture, made smaller to that many pixels a side, each the mean
// of those that it stands for; what is transparent lends no colour. A smaller square keeps its own
// size. Null for a picture without pixels, and for a side of none.
OX_EXPORT ImagePtr squareThumbnail(const Image& image, std::uint32_t side);

}  // namespace ox::images
