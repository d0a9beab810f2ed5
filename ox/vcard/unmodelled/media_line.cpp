#include "ox/vcard/unmodelled/media_line.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "ox/base/base64.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/media_type.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::vcard {
namespace {

constexpr std::string_view kDataScheme = "DATA:";
constexpr std::string_view kBase64Mark = ";BASE64,";

// What a format is called in TYPE where that is not how its media type ends.
struct FormatRow {
  std::string_view property;
  std::string_view type;
  std::string_view media;
};

constexpr std::array kFormats = {
    FormatRow{"KEY", "PGP", "application/pgp-keys"},
    FormatRow{"KEY", "X509", "application/pkix-cert"},
    FormatRow{"SOUND", "WAVE", "audio/wav"},
};

// The first part of the media types that TYPE names without it.
std::string_view familyOf(std::string_view property) {
  if (isWord(property, "KEY")) return "application/";
  return isWord(property, "SOUND") ? "audio/" : "image/";
}

std::string mediaOfType(std::string_view property, std::string_view type) {
  for (const auto& row : kFormats) {
    if (isWord(property, row.property) && isWord(type, row.type)) return std::string(row.media);
  }
  if (type.find('/') != std::string_view::npos) return mediaType(type);
  return mediaType(std::string(familyOf(property)).append(type));
}

std::string typeOfMedia(std::string_view property, std::string_view media) {
  for (const auto& row : kFormats) {
    if (isWord(property, row.property) && media == row.media) return std::string(row.type);
  }
  const auto family = familyOf(property);
  if (!media.starts_with(family)) return std::string(media);
  std::string type(media.substr(family.size()));
  for (auto& c : type) c = upper(c);
  return type;
}

// TYPE also says whose it is, and that it is preferred.
bool isPlace(std::string_view word) {
  return isWord(word, "HOME") || isWord(word, "WORK") || isWord(word, "PREF");
}

// The parameters of a line, sorted out.
struct MediaHead {
  std::string_view name;  // with the group
  std::string rest;       // all parameters that are not told below
  std::string media;      // that TYPE or MEDIATYPE tells; empty when neither does
};

bool isMediaType(const Parameter& parameter) {
  return isWord(parameter.name, "MEDIATYPE") && !mediaType(parameterText(parameter)).empty();
}

// The parameter that names a media type; null without one.
const Parameter* mediaTypeIn(const ContentLine& line) {
  const auto found = std::ranges::find_if(line.parameters, isMediaType);
  return found != line.parameters.end() ? &*found : nullptr;
}

// TYPE tells the format unless MEDIATYPE or the value does.
MediaHead headOf(const ContentLine& line, std::string_view mediaOfValue = {}) {
  MediaHead head;
  head.name = line.head.substr(0, lineNameOf(line.head).end);
  const auto* given = mediaTypeIn(line);
  if (given != nullptr) head.media = mediaType(parameterText(*given));
  if (!mediaOfValue.empty()) head.media = mediaOfValue;
  const bool isGiven = !head.media.empty();
  for (const auto& parameter : line.parameters) {
    if (parameter.kind == ParameterKind::Encoding || parameter.kind == ParameterKind::Value) {
      continue;
    }
    if (parameter.kind == ParameterKind::Type && !isGiven) {
      forEachWord(parameter.value, [&](std::string_view word) {
        if (head.media.empty() && !isPlace(word)) {
          head.media = mediaOfType(line.name, word);
        } else {
          appendTypeWord(word, head.rest);
        }
      });
    } else if (!isMediaType(parameter)) {
      head.rest.append(";").append(parameter.name).append("=").append(parameter.value);
    }
  }
  return head;
}

// The format's TYPE comes first: a reader takes the first word for it.
std::string headIn30(std::string_view property, const MediaHead& head) {
  std::string out(head.name);
  if (!head.media.empty()) out.append(";TYPE=").append(typeOfMedia(property, head.media));
  return out += head.rest;
}

std::string headIn40(const MediaHead& head) {
  return std::string(head.name).append(head.rest);
}

// What a data URI holds when its bytes are base64 and nothing but the media type is told of them.
struct DataUri {
  std::string media;
  std::string_view base64;
};

std::optional<DataUri> dataOf(std::string_view uri) {
  if (!startsWithWord(uri, kDataScheme)) return std::nullopt;
  uri.remove_prefix(kDataScheme.size());
  const auto mark = uri.find(';');
  if (mark == std::string_view::npos || !startsWithWord(uri.substr(mark), kBase64Mark)) {
    return std::nullopt;
  }
  const auto content = uri.substr(mark + kBase64Mark.size());
  if (!bytesOfBase64(content)) return std::nullopt;
  return DataUri{mediaType(uri.substr(0, mark)), content};
}

// Beyond RFC 3986 letters of every script, as they stand in addresses that people copy.
bool isReference(std::string_view value) {
  return !schemeOf(value).empty() && value.find(' ') == std::string_view::npos;
}

std::string bytesIn30(std::string_view property, const MediaHead& head, std::string_view base64) {
  return headIn30(property, head).append(";ENCODING=b:").append(base64);
}

std::string bytesIn40(const MediaHead& head, std::string_view base64) {
  auto out = headIn40(head);
  out.append(":data:").append(head.media.empty() ? "application/octet-stream" : head.media);
  return out.append(";base64,").append(base64);
}

// vCard 3.0 takes a value for base64 or text that does not say that it is a URI, which 2.1 calls
// another name.
std::string referenceIn30(const ContentLine& line) {
  std::string out;
  if (mediaTypeIn(line) != nullptr) {
    out = headIn30(line.name, headOf(line));
  } else {
    const auto* type = line.find(ParameterKind::Value);
    if (type != nullptr) {
      const auto at = static_cast<std::size_t>(type->value.data() - line.head.data());
      const bool isUrl = isWord(type->value, "URL");
      out.append(line.head.substr(0, at)).append(isUrl ? "uri" : type->value);
      out.append(line.head.substr(at + type->value.size()));
      return out.append(":").append(line.value);
    }
    out = line.head;
  }
  return out.append(";VALUE=uri:").append(line.value);
}

std::string referenceIn40(const ContentLine& line) {
  const auto head = headOf(line);
  auto out = headIn40(head);
  if (!head.media.empty()) out.append(";MEDIATYPE=").append(head.media);
  return out.append(";VALUE=uri:").append(line.value);
}

}  // namespace

std::optional<std::string> mediaLine(const ContentLine& line, CardVersion version) {
  const bool is30 = version == CardVersion::V30;
  if (line.encoding == Encoding::Base64) {
    if (is30) return std::string(line.head).append(":").append(line.value);
    return bytesIn40(headOf(line), line.value);
  }
  if (!isReference(line.value)) return std::nullopt;
  const auto data = dataOf(line.value);
  if (!data) return is30 ? referenceIn30(line) : referenceIn40(line);
  const auto head = headOf(line, data->media);
  return is30 ? bytesIn30(line.name, head, data->base64) : bytesIn40(head, data->base64);
}

bool isMediaByData(const ContentLine& line) {
  if (line.encoding != Encoding::None || !startsWithWord(line.value, kDataScheme)) return false;
  for (const auto* name : {"KEY", "LOGO", "PHOTO", "SOUND"}) {
    if (isWord(line.name, name)) return dataOf(line.value).has_value();
  }
  return false;
}

}  // namespace ox::vcard
