#pragma once

#include <string_view>

#include "ox/images/codecs.hpp"

namespace ox::images {

// The orientation (1 to 8) in a JPEG's APP1 segment, "Exif\0\0" included (Exif 2.3, tag 0x0112).
// 1, upright, when the segment is of another kind, damaged or silent about it.
int exifOrientation(std::string_view segment);

// The picture turned upright; orientation is as in TIFF 6.0, tag 274. Anything outside 2 to 8
// leaves it as it is.
Bitmap uprighted(Bitmap stored, int orientation);
ImageSize uprighted(ImageSize stored, int orientation);

}  // namespace ox::images
