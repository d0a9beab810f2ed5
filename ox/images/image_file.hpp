#pragma once

#include <string>

#include "ox/base/image.hpp"

namespace ox::images {

// The picture in that file; null when it is no regular file of at most 64 MiB, cannot be read, or
// holds no picture that decodeImage accepts. Throws std::bad_alloc like that.
ImagePtr imageWithContentsOfFile(const std::string& path);

}  // namespace ox::images
