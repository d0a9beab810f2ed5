#include "ox/base/image.hpp"

#include <cassert>

namespace ox {

const Pixels& PictureFile::pixels() const {
  const std::lock_guard lock(mutex_);
  if (pixels_.empty()) pixels_ = decode_(*bytes_);
  assert(!pixels_.empty());
  return pixels_;
}

bool Image::operator==(const Image& other) const {
  if (width != other.width || height != other.height) return false;
  const auto bytes = file();
  return (bytes && sameData(bytes, other.file())) || pixels() == other.pixels();
}

}  // namespace ox
