#include "ox/vcard/properties/uid.hpp"

#include <algorithm>

#include "ox/base/text/utf8.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::vcard {
namespace {

constexpr std::string_view kOwnScheme = "x-ox-uid:";

bool hasOwnScheme(std::string_view text) {
  return startsWithWord(text, "X-OX-UID:");
}

bool isHexDigit(char c) {
  return isDigit(c) || (upper(c) >= 'A' && upper(c) <= 'F');
}

}  // namespace

bool isUuid(std::string_view text) {
  constexpr std::string_view kForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  return text.size() == kForm.size() &&
         std::equal(text.begin(), text.end(), kForm.begin(),
                    [](char c, char form) { return form == 'x' ? isHexDigit(c) : c == form; });
}

std::string uriOfUid(std::string_view uid) {
  if (isUri(uid) && !hasOwnScheme(uid)) return std::string(uid);
  if (isUuid(uid)) return std::string("urn:uuid:").append(uid);
  std::string uri(kOwnScheme);
  appendPercentEncoded(uid, uri);
  return uri;
}

std::string uidOfValue(std::string_view value) {
  if (!hasOwnScheme(value)) return std::string(value);
  return validUtf8(percentDecoded(value.substr(kOwnScheme.size())));
}

}  // namespace ox::vcard
