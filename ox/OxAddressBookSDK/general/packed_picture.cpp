#include "ox/OxAddressBookSDK/general/packed_picture.hpp"

#include <algorithm>

#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/OxAddressBookSDK/general/picture_bytes.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/images/image_codec.hpp"

namespace ox {
namespace {

// A file of more is looked at pixel by pixel, and their differences are read through a window.
constexpr std::uint64_t kMaxPixelsInFile = std::uint64_t{16} << 20U;

bool isKeptAsFile(std::size_t fileSize, std::uint64_t pixels) {
  return fileSize < pixels * 4 && pixels <= kMaxPixelsInFile;
}

// Single is OxMutableSingleValue, const when the value is.
template <typename Single, typename Value, typename Use>
void forEachSingle(Value& value, Use use) {
  if (const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(&value)) {
    for (std::uint64_t i = 0; i < multiple->count(); ++i) use(*multiple->valueAtIndex(i));
  } else if (auto* single = dynamic_cast<Single*>(&value)) {
    use(*single);
  }
}

// What lies deeper than a file can hold is left alone.
bool holdsPicture(const Object& object, std::size_t nesting) {
  if (object.image() || object.host<PackedPicture>()) return true;
  if (nesting == book_format::kMaxNesting) return false;
  if (const auto* array = object.array()) {
    return std::any_of(array->begin(), array->end(),
                       [&](const Object& element) { return holdsPicture(element, nesting + 1); });
  }
  if (const auto* dictionary = object.dictionary()) {
    const auto& entries = dictionary->entries();
    return std::any_of(entries.begin(), entries.end(), [&](const Dictionary::Entry& entry) {
      return holdsPicture(entry.second, nesting + 1);
    });
  }
  return false;
}

// What takes the place of a picture in either form.
using Convert = Object (*)(const Object& picture);

Object packed(const Object& picture) {
  const auto image = picture.image();
  auto result = image ? PackedPicture::pack(*image) : nullptr;
  return result ? Object(std::move(result)) : picture;
}

Object unpacked(const Object& picture) {
  const auto held = picture.host<PackedPicture>();
  return held ? Object(held->image()) : picture;
}

Object converted(const Object& object, Convert convert, std::size_t nesting) {
  if (!holdsPicture(object, nesting)) return object;
  if (const auto* array = object.array()) {
    Array result;
    result.reserve(array->size());
    for (const auto& element : *array) result.push_back(converted(element, convert, nesting + 1));
    return result;
  }
  if (const auto* dictionary = object.dictionary()) {
    Dictionary result;
    for (const auto& [key, element] : dictionary->entries()) {
      result.set(key, converted(element, convert, nesting + 1));
    }
    return result;
  }
  return convert(object);
}

void convertPictures(OxValue& value, Convert convert) {
  forEachSingle<OxMutableSingleValue>(value, [&](OxMutableSingleValue& single) {
    if (holdsPicture(single.value(), 0)) single.setValue(converted(single.value(), convert, 0));
  });
}

template <typename Use>
void forEachPacked(const Object& object, Use use) {
  if (const auto* array = object.array()) {
    for (const auto& element : *array) forEachPacked(element, use);
  } else if (const auto* dictionary = object.dictionary()) {
    for (const auto& [key, element] : dictionary->entries()) forEachPacked(element, use);
  } else if (const auto picture = object.host<PackedPicture>()) {
    use(*picture);
  }
}

template <typename Use>
void forEachPackedOf(const OxValue& value, Use use) {
  forEachSingle<const OxMutableSingleValue>(
      value, [&](const OxMutableSingleValue& single) { forEachPacked(single.value(), use); });
}

}  // namespace

std::shared_ptr<const PackedPicture> PackedPicture::pack(const Image& image) {
  const auto pixels = std::uint64_t{image.width} * image.height;
  if (pixels > kMaxPackedPixels) return nullptr;
  const auto file = image.file();
  if (file && isKeptAsFile(file->size(), pixels)) {
    return std::make_shared<PackedPicture>(Key(), Form::File, image.width, image.height, file);
  }
  if (pixels * 4 != image.pixels().size()) return nullptr;
  return std::make_shared<PackedPicture>(Key(), Form::Packed, image.width, image.height,
                                         makeData(packedPixels(image)));
}

std::shared_ptr<const PackedPicture> PackedPicture::ofPixels(std::uint32_t width,
                                                             std::uint32_t height,
                                                             std::string bytes) {
  if (!arePackedPixels(bytes, width, height)) return nullptr;
  return std::make_shared<PackedPicture>(Key(), Form::Packed, width, height,
                                         makeData(std::move(bytes)));
}

std::shared_ptr<const PackedPicture> PackedPicture::ofFile(std::uint32_t width,
                                                           std::uint32_t height,
                                                           std::string bytes) {
  const images::ImageSize size{width, height};
  if (images::imageSize(bytes) != size) return nullptr;
  if (!isKeptAsFile(bytes.size(), std::uint64_t{width} * height)) return nullptr;
  if (images::wholeImageSize(bytes) != size) return nullptr;
  return std::make_shared<PackedPicture>(Key(), Form::File, width, height,
                                         makeData(std::move(bytes)));
}

ImagePtr PackedPicture::image() const {
  return form_ == Form::File ? images::pictureOfWholeFile(bytes_, {width_, height_})
                             : imageOfPackedPixels(*bytes_, width_, height_);
}

bool PackedPicture::equals(const HostObject& other) const {
  const auto* picture = dynamic_cast<const PackedPicture*>(&other);
  if (picture == nullptr || width_ != picture->width_ || height_ != picture->height_) return false;
  // The same pixels may come from other files, or from another version of the packing library.
  return (form_ == picture->form_ && sameData(bytes_, picture->bytes_)) ||
         *image() == *picture->image();
}

void packPictures(OxValue& value) {
  convertPictures(value, packed);
}

void unpackPictures(OxValue& value) {
  convertPictures(value, unpacked);
}

std::uint64_t pixelsInPackedPictures(const OxValue& value) {
  std::uint64_t pixels = 0;
  forEachPackedOf(value, [&](const PackedPicture& picture) {
    pixels += std::uint64_t{picture.width()} * picture.height();
  });
  return pixels;
}

bool holdsPictureFile(const OxValue& value) {
  bool holds = false;
  forEachPackedOf(value, [&](const PackedPicture& picture) {
    holds = holds || picture.form() == PackedPicture::Form::File;
  });
  return holds;
}

}  // namespace ox
