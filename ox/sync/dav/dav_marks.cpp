#include "ox/sync/dav/dav_marks.hpp"

#include <algorithm>
#include <cstddef>

#include "ox/base/checksum.hpp"
#include "ox/sync/dav/wire/dav_names.hpp"

namespace ox::sync {

std::string etagIn(const DavResponse& response) {
  const auto* property = response.property(dav::kEtag);
  const auto etag = property ? property->value() : std::string_view();
  const bool isSendable = std::ranges::none_of(
      etag, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
  return isSendable ? std::string(etag) : std::string();
}

std::string withNetworkLineEnds(std::string_view text) {
  std::string lines;
  lines.reserve(text.size() + text.size() / 32 + 2);
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto c = text[at];
    if (c != '\r' && c != '\n') {
      lines += c;
      continue;
    }
    if (c == '\r' && at + 1 < text.size() && text[at + 1] == '\n') ++at;
    lines += "\r\n";
  }
  if (!lines.empty() && !lines.ends_with('\n')) lines += "\r\n";
  return lines;
}

std::string textMark(std::string_view text) {
  return std::string(kTextMark) + checksum128(text);
}

}  // namespace ox::sync
