// What does the picture of a contact cost, packed for a neutral book and encoded for the store, and
// back? Beside it: zlib alone, at the same level, on the bytes that each of them compresses.
#include <stdexcept>
#include <zlib.h>

#include "bench/contact_photos.hpp"
#include "bench/figures.hpp"
#include "ox/OxAddressBookSDK/general/picture_bytes.hpp"
#include "ox/base/base64.hpp"
#include "ox/images/image_codec.hpp"

namespace ox::bench {
namespace {

struct Picture {
  std::string jpeg;  // as a card brings it
  ImagePtr image;
  std::string packed;
  Data tiff;
  std::string differences;  // what packing compresses
  std::string deflated;
};

std::string deflated(const std::string& bytes) {
  auto size = compressBound(bytes.size());
  std::string result(size, '\0');
  compress2(reinterpret_cast<Bytef*>(result.data()), &size,
            reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), 1);
  result.resize(size);
  return result;
}

std::string inflated(const std::string& bytes, std::size_t size) {
  std::string result(size, '\0');
  uLongf length = size;
  uncompress(reinterpret_cast<Bytef*>(result.data()), &length,
             reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
  return result;
}

const std::vector<Picture>& pictures() {
  static const auto& made = *[] {
    Random random(7);
    const PhotoPool pool(random);
    auto* list = new std::vector<Picture>(100);
    for (auto& each : *list) {
      each.jpeg = bytesOfBase64(pool.base64(random, "bench")).value();
      each.image = images::decodeImage(each.jpeg);
      each.packed = packedPixels(*each.image);
      each.tiff = images::encodeTiff(*each.image);
      each.differences = inflated(each.packed, each.image->pixels().size());
      each.deflated = deflated(each.differences);
      if (*images::decodeImage(*each.tiff) != *each.image ||
          *imageOfPackedPixels(each.packed, each.image->width, each.image->height) != *each.image) {
        throw std::runtime_error("not the same picture");
      }
    }
    return list;
  }();
  return made;
}

// `work` tells the size of what it made of a picture.
template <typename Do>
Way way(const std::string& name, Do work) {
  return {name, [work](std::size_t count) {
            const auto& all = pictures();
            std::size_t bytes = 0;
            const Stopwatch watch;
            for (std::size_t i = 0; i < count; ++i) bytes += work(all[i % all.size()]);
            const auto seconds = watch.seconds();
            return Measured{seconds, std::to_string(bytes / count) + " B each"};
          }};
}

void addFigures() {
  const auto deflate =
      way("zlib", [](const Picture& each) { return deflated(each.differences).size(); });
  const auto inflate = way("zlib", [](const Picture& each) {
    return inflated(each.deflated, each.image->pixels().size()).size();
  });
  const std::vector<std::size_t> sizes = {1'000};
  addFigure(
      "pack a picture",
      {way("packedPixels", [](const Picture& each) { return packedPixels(*each.image).size(); }),
       deflate},
      sizes);
  addFigure("store a picture",
            {way("encodeTiff",
                 [](const Picture& each) { return images::encodeTiff(*each.image)->size(); }),
             deflate},
            sizes);
  addFigure("unpack a picture",
            {way("imageOfPackedPixels",
                 [](const Picture& each) {
                   return imageOfPackedPixels(each.packed, each.image->width, each.image->height)
                       ->pixels()
                       .size();
                 }),
             way("arePackedPixels",
                 [](const Picture& each) {
                   const auto& image = *each.image;
                   const bool are = arePackedPixels(each.packed, image.width, image.height);
                   return are ? image.pixels().size() : 0;
                 }),
             inflate},
            sizes);
  addFigure(
      "read a stored picture",
      {way("decodeImage, JPEG",
           [](const Picture& each) { return images::decodeImage(each.jpeg)->pixels().size(); }),
       way("wholeImageSize, JPEG",
           [](const Picture& each) { return images::wholeImageSize(each.jpeg)->width; }),
       way("decodeImage, TIFF",
           [](const Picture& each) { return images::decodeImage(*each.tiff)->pixels().size(); }),
       inflate},
      sizes);
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  return ox::bench::runFigures(argc, argv, [] { ox::bench::addFigures(); });
}
