#include "ox/sync/cards/packed_card.hpp"

#include <algorithm>
#include <libdeflate.h>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "ox/base/base64.hpp"
#include "ox/base/checksum.hpp"
#include "ox/records/damaged_bytes.hpp"
#include "ox/records/packed_bytes.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"

namespace ox::sync {
namespace {

constexpr char kFormat = 1;
constexpr int kLevel = 6;
// No deflate stream holds more than this many times its own size.
constexpr std::size_t kMostRatio = 1032;

using Compressor = std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)>;
using Decompressor =
    std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)>;
using Reader = PackedReader<DamagedBytes>;

[[noreturn]] void damaged() {
  throw DamagedBytes("a stored card is damaged");
}

std::string deflated(std::string_view text) {
  const Compressor compressor(libdeflate_alloc_compressor(kLevel), libdeflate_free_compressor);
  if (!compressor) throw std::bad_alloc();
  std::string packed(libdeflate_deflate_compress_bound(compressor.get(), text.size()), '\0');
  packed.resize(libdeflate_deflate_compress(compressor.get(), text.data(), text.size(),
                                            packed.data(), packed.size()));
  return packed;
}

std::string inflated(std::string_view packed, std::size_t size) {
  if (size / kMostRatio > packed.size()) damaged();
  const Decompressor decompressor(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
  if (!decompressor) throw std::bad_alloc();
  std::string text(size, '\0');
  const auto result = libdeflate_deflate_decompress(decompressor.get(), packed.data(),
                                                    packed.size(), text.data(), size, nullptr);
  if (result != LIBDEFLATE_SUCCESS) damaged();
  return text;
}

// How base64 lies in the lines of a text.
struct Folds {
  std::size_t first = 0;  // letters in the first line
  std::size_t further = 0;
  bool isPadded = true;
  std::string joint;  // line end and indent
};

// Base64 without what its folds leave out.
std::string base64Of(const Data& picture, bool isPadded) {
  auto letters = base64(*picture);
  if (!isPadded) letters.erase(std::min(letters.find('='), letters.size()));
  return letters;
}

std::string folded(std::string_view letters, const Folds& folds) {
  std::string text(letters.substr(0, folds.first));
  letters.remove_prefix(std::min(folds.first, letters.size()));
  while (!letters.empty() && folds.further > 0) {
    text.append(folds.joint).append(letters.substr(0, folds.further));
    letters.remove_prefix(std::min(folds.further, letters.size()));
  }
  return text;
}

bool isLetter(char c) {
  return vcard::isLetter(c) || vcard::isDigit(c) || c == '+' || c == '/' || c == '=';
}

std::size_t lettersAt(std::string_view text, std::size_t from) {
  auto end = from;
  while (end < text.size() && isLetter(text[end])) ++end;
  return end - from;
}

// How base64 that starts there seems to be folded.
Folds foldsAt(std::string_view text, std::size_t place) {
  Folds folds;
  folds.first = lettersAt(text, place);
  auto next = place + folds.first;
  const auto end = text.find_first_not_of("\r\n \t", next);
  folds.joint = text.substr(next, std::min(end, text.size()) - next);
  const auto feed = folds.joint.find('\n');
  // An indent, or what follows is another line.
  if (feed == std::string::npos || feed + 1 == folds.joint.size()) {
    folds.joint.clear();
  } else {
    folds.further = lettersAt(text, next + folds.joint.size());
  }
  return folds;
}

// A picture that stands in a text.
struct Place {
  std::size_t at = 0;
  std::size_t length = 0;
  Folds folds;
};

std::optional<Place> pictureAt(std::string_view text, std::size_t place, const std::string& padded,
                               const Data& picture) {
  auto folds = foldsAt(text, place);
  if (folds.further == 0 && folds.first + 2 < padded.size()) return std::nullopt;
  for (const bool isPadded : {true, false}) {
    folds.isPadded = isPadded;
    const auto letters = folded(isPadded ? padded : base64Of(picture, false), folds);
    const auto after = place + letters.size();
    const bool isWhole = after >= text.size() || !isLetter(text[after]);
    if (text.substr(place, letters.size()) == letters && isWhole) {
      return Place{place, letters.size(), folds};
    }
    if (!padded.ends_with('=')) break;
  }
  return std::nullopt;
}

// Where the base64 of the picture may start: behind a colon or a comma at the front of PHOTO, or in
// the line below.
std::optional<Place> placeOf(std::string_view text, const Data& picture) {
  constexpr std::size_t kMostHead = 512;
  constexpr std::size_t kFront = 4;
  if (!picture || picture->size() < kFront) return std::nullopt;
  const auto letters = base64(*picture);
  for (std::size_t line = 0; line < text.size();) {
    if (vcard::isWord(vcard::lineNameOf(text.substr(line, kMostHead)).name, "PHOTO")) {
      for (auto i = line; i < std::min(text.size(), line + kMostHead); ++i) {
        if (text[i] != ':' && text[i] != ',') continue;
        const auto start = text.find_first_not_of("\r\n \t", i + 1);
        if (start == std::string_view::npos) break;
        if (text.substr(start, kFront) != std::string_view(letters).substr(0, kFront)) continue;
        if (auto place = pictureAt(text, start, letters, picture)) return place;
      }
    }
    const auto feed = text.find('\n', line);
    line = feed == std::string_view::npos ? text.size() : feed + 1;
  }
  return std::nullopt;
}

std::string packed(std::string_view text, const Data& picture, const std::optional<Place>& place) {
  PackedWriter writer(kFormat);
  writer.number(place ? 1 : 0);
  std::string rest(text);
  if (place) {
    writer.number(place->at);
    writer.number(place->folds.first);
    writer.number(place->folds.further);
    writer.number(place->folds.isPadded ? 1 : 0);
    writer.text(place->folds.joint);
    writer.text(checksum128(*picture));
    rest.erase(place->at, place->length);
  }
  writer.number(checksum64(text));
  writer.number(rest.size());
  writer.text(deflated(rest));
  return std::move(writer).withChecksum();
}

Reader readerOf(std::string_view packed) {
  return {packed, kFormat, "a stored card is damaged"};
}

}  // namespace

std::string packedCard(std::string_view text, const Data& picture) {
  const auto place = placeOf(text, picture);
  if (place) {
    auto without = packed(text, picture, place);
    if (unpackedCard(without, picture) == text) return without;
  }
  return packed(text, picture, std::nullopt);
}

bool needsPicture(std::string_view packed) {
  return readerOf(packed).number() != 0;
}

namespace {

enum class Picture : bool { TheSame, Another };

std::string unpacked(std::string_view packed, const Data& picture, Picture which) {
  auto reader = readerOf(packed);
  const bool isWithout = reader.number() != 0;
  std::size_t at = 0;
  std::string letters;
  if (isWithout) {
    Folds folds;
    at = reader.number();
    folds.first = reader.number();
    folds.further = reader.number();
    folds.isPadded = reader.number() != 0;
    folds.joint = reader.text();
    const auto sum = reader.text();
    const bool isIt = picture && (which == Picture::Another || checksum128(*picture) == sum);
    if (!isIt) {
      throw DamagedBytes("the picture of a stored card is another one");
    }
    letters = folded(base64Of(picture, folds.isPadded), folds);
  }
  const auto checksum = reader.number();
  const auto size = reader.number();
  const auto bytes = reader.text();
  reader.end();
  auto text = inflated(bytes, size);
  if (at > text.size()) damaged();
  text.insert(at, letters);
  const bool isExact = !isWithout || which == Picture::TheSame;
  if (isExact && checksum64(text) != checksum) damaged();
  return text;
}

}  // namespace

std::string unpackedCard(std::string_view packed, const Data& picture) {
  return unpacked(packed, picture, Picture::TheSame);
}

std::string unpackedWithOther(std::string_view packed, const Data& picture) {
  return unpacked(packed, picture, Picture::Another);
}

}  // namespace ox::sync
