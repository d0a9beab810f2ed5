#include <optional>
#include <utility>

#include "ox/base/base64.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/media_type.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/each_property.hpp"

// PHOTO: base64 in 3.0, a data URI in 4.0. What only refers to a picture is preserved as it is.

namespace ox::vcard {
namespace {

constexpr std::string_view kDataScheme = "DATA:";

bool isReference(const ContentLine& line) {
  const auto* value = line.find(ParameterKind::Value);
  return (value != nullptr && (isWord(value->value, "URI") || isWord(value->value, "URL"))) ||
         startsWithWord(line.value, "HTTP:") || startsWithWord(line.value, "HTTPS:") ||
         startsWithWord(line.value, "FILE:") || startsWithWord(line.value, "CID:");
}

// The bytes of a data URI (RFC 2397), given without its scheme.
std::optional<std::string> bytesOfDataUri(std::string_view uri) {
  const auto comma = uri.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto semicolon = uri.substr(0, comma).rfind(';');
  const auto content = uri.substr(comma + 1);
  if (semicolon != std::string_view::npos &&
      isWord(trimmed(uri.substr(semicolon + 1, comma - semicolon - 1)), "BASE64")) {
    return decodeBase64(percentDecoded(content));
  }
  return percentDecoded(content);
}

std::string mediaOfDataUri(std::string_view uri) {
  return mediaType(uri.substr(0, uri.find_first_of(";,")));
}

// TYPE of vCard 3.0 is the name of the format, or the whole media type. Words that labels are made
// of name none.
std::string mediaOf(const TypeWords& types) {
  for (const auto word : types.unknown) {
    const bool isWhole = word.find('/') != std::string_view::npos;
    auto media = mediaType(isWhole ? std::string(word) : std::string("image/").append(word));
    if (!media.empty()) return media;
  }
  return {};
}

}  // namespace

bool readPhoto(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  const auto value = trimmed(line.value);
  if (value.empty()) return true;
  if (draft.photo) return false;
  const bool isData = startsWithWord(value, kDataScheme);
  if (!isData && line.encoding != Encoding::Base64 && isReference(line)) return false;
  auto bytes = isData ? bytesOfDataUri(value.substr(kDataScheme.size())) : decodeBase64(value);
  if (!bytes || bytes->empty()) {
    draft.repaired(line, "PHOTO is no base64, kept as text");
    return false;
  }
  draft.photo = makeData(*std::move(bytes));
  // Nearly always the kind of picture is told by its own bytes.
  if (mediaTypeOf(*draft.photo).empty()) {
    readTypeWords(line, draft.types);
    const auto media =
        isData ? mediaOfDataUri(value.substr(kDataScheme.size())) : mediaOf(draft.types);
    if (!media.empty()) draft.preserveVerbatim(kPhotoDetails, media);
  }
  draft.preserveParameters(kPhotoDetails, line, 0, UnknownWords::AreUsed);
  return true;
}

void writePhoto(const PropertyRow& /*row*/, PropertyWriter& card) {
  if (!card.hasPhoto()) return;
  const auto& bytes = *card.photo();
  auto media = std::string(mediaTypeOf(bytes));
  if (media.empty()) media = mediaType(card.unmodelled().verbatimOf(kPhotoDetails, 0));
  auto& line = card.line();
  line.raw("PHOTO");
  if (card.is30()) {
    line.raw(";ENCODING=b");
    if (const auto type = typeOfMedia(media); !type.empty()) line.raw(";TYPE=").raw(type);
  }
  card.writeParameters(kPhotoDetails);
  line.raw(":");
  if (!card.is30()) {
    line.raw("data:").raw(media.empty() ? "application/octet-stream" : media).raw(";base64,");
  }
  line.raw(base64(bytes)).end();
}

// RFC 2426, section 3.1.4: a value by reference is no picture that a record could hold.
bool lacksPhoto(const PropertyRow& /*row*/, std::string_view text, PropertyWriter& card) {
  if (card.hasPhoto()) return false;
  ContentLine line;
  const auto colon = parseHead(text, line);
  const bool isByReference = colon != std::string_view::npos && line.encoding != Encoding::Base64 &&
                             !startsWithWord(trimmed(text.substr(colon + 1)), kDataScheme);
  return !isByReference;
}

}  // namespace ox::vcard
