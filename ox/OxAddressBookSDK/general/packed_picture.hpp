#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "ox/OxAddressBookSDK/values/OxValue.hpp"

namespace ox {

// A picture as a neutral person holds it: the file that it came from, shared with whoever else has
// it, or its pixels as packedPixels() gives them, which take a small part of the room. Equal when
// the pictures are.
class PackedPicture final : public HostObject {
  struct Key {
    explicit Key() = default;
  };

 public:
  // Null for a picture that no file can hold: of more than 64 M pixels, or whose pixels do not fit
  // its size.
  static std::shared_ptr<const PackedPicture> pack(const Image& image);
  // Null when the bytes are not exactly such a picture of that size. They are read through once,
  // in little memory.
  static std::shared_ptr<const PackedPicture> ofPixels(std::uint32_t width, std::uint32_t height,
                                                       std::string bytes);
  // Null when the bytes are no file of a picture of that size, or of one that pack() would not keep
  // as a file. They are read through once.
  static std::shared_ptr<const PackedPicture> ofFile(std::uint32_t width, std::uint32_t height,
                                                     std::string bytes);

  enum class Form : std::uint8_t { Packed, File };
  Form form() const { return form_; }
  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }
  const std::string& bytes() const { return *bytes_; }
  // Unpacked anew by every call, that of a file when its pixels are asked for; never null.
  ImagePtr image() const;

  bool equals(const HostObject& other) const override;

  PackedPicture(Key, Form form, std::uint32_t width, std::uint32_t height, Data bytes)
      : form_(form), width_(width), height_(height), bytes_(std::move(bytes)) {}

 private:
  Form form_;
  std::uint32_t width_;
  std::uint32_t height_;
  Data bytes_;
};

// Puts the packed form in the place of each picture that the value holds, also inside of arrays and
// dictionaries; pictures that cannot be packed stay.
void packPictures(OxValue& value);
// The other way round.
void unpackPictures(OxValue& value);

// How many pixels its packed pictures have together; whether one of them is kept as a file.
std::uint64_t pixelsInPackedPictures(const OxValue& value);
bool holdsPictureFile(const OxValue& value);

}  // namespace ox
