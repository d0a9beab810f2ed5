#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/base/export.hpp"

namespace ox {

using Pixels = std::vector<std::uint8_t>;

// A whole file of a picture, and its pixels as soon as somebody has asked for them: until then a
// picture is its bytes. Shared by everybody who has the picture; safe from any thread.
class OX_EXPORT PictureFile {
 public:
  // Every pixel in the bytes, of which whoever makes the file knows that they can be decoded;
  // throws std::bad_alloc.
  using Decode = Pixels (*)(const std::string& bytes);

  PictureFile(Data bytes, Decode decode) : bytes_(std::move(bytes)), decode_(decode) {}
  // One that has been decoded.
  PictureFile(Data bytes, Pixels pixels) : bytes_(std::move(bytes)), pixels_(std::move(pixels)) {}

  const Data& bytes() const { return bytes_; }
  // Decoded once, while other threads wait that ask for them too; not at all when that throws. They
  // stay where they are for as long as the file does.
  const Pixels& pixels() const;

 private:
  Data bytes_;
  Decode decode_ = nullptr;
  mutable std::mutex mutex_;
  mutable Pixels pixels_;  // empty: not decoded yet, for no file has a picture without pixels
};

}  // namespace ox
