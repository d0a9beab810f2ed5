#include "ox/vcard/lines/media_type.hpp"

#include <algorithm>
#include <array>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

using namespace std::string_view_literals;

struct Kind {
  std::string_view start;
  std::string_view later;  // at a place of its own; empty when the start is enough
  std::size_t at = 0;
  std::string_view media;
};

constexpr std::array kKinds = {
    Kind{"\xFF\xD8\xFF", "", 0, "image/jpeg"},
    Kind{"\x89PNG", "", 0, "image/png"},
    Kind{"II*\0"sv, "", 0, "image/tiff"},
    Kind{"MM\0*"sv, "", 0, "image/tiff"},
    Kind{"GIF8", "", 0, "image/gif"},
    Kind{"RIFF", "WEBP", 8, "image/webp"},
    Kind{"", "ftypheic", 4, "image/heic"},
    Kind{"", "ftypheix", 4, "image/heic"},
    Kind{"", "ftypmif1", 4, "image/heif"},
    Kind{"", "ftypavif", 4, "image/avif"},
    // The reserved field of the file's header; two letters alone say little.
    Kind{"BM", "\0\0\0\0"sv, 6, "image/bmp"},
};

bool isSvg(std::string_view bytes) {
  constexpr std::size_t kSearched = 1024;
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (bytes.starts_with(kByteOrderMark)) bytes.remove_prefix(kByteOrderMark.size());
  const auto first = bytes.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos || bytes[first] != '<') return false;
  return bytes.substr(0, kSearched).find("<svg") != std::string_view::npos;
}

bool isTokenLetter(char c) {
  constexpr std::string_view kMarks = "!#$&-^_.+";
  return isLetter(c) || isDigit(c) || kMarks.find(c) != std::string_view::npos;
}

}  // namespace

std::string_view mediaTypeOf(std::string_view bytes) {
  for (const auto& kind : kKinds) {
    if (bytes.starts_with(kind.start) &&
        (kind.later.empty() || (bytes.size() >= kind.at + kind.later.size() &&
                                bytes.substr(kind.at, kind.later.size()) == kind.later))) {
      return kind.media;
    }
  }
  return isSvg(bytes) ? "image/svg+xml" : std::string_view();
}

std::string mediaType(std::string_view text) {
  const auto slash = text.find('/');
  if (slash == 0 || slash == std::string_view::npos || slash + 1 == text.size()) return {};
  std::string media(text);
  for (std::size_t i = 0; i < media.size(); ++i) {
    if (i != slash && !isTokenLetter(media[i])) return {};
    if (media[i] >= 'A' && media[i] <= 'Z') media[i] = static_cast<char>(media[i] - 'A' + 'a');
  }
  return media == "application/octet-stream" ? std::string() : media;
}

std::string typeOfMedia(std::string_view media) {
  constexpr std::string_view kImage = "image/";
  if (!media.starts_with(kImage)) return std::string(media);
  std::string type(media.substr(kImage.size()));
  std::transform(type.begin(), type.end(), type.begin(), upper);
  return type;
}

}  // namespace ox::vcard
