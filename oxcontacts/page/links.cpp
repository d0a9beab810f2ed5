#include "oxcontacts/page/links.hpp"

#include <algorithm>
#include <string_view>

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/base/text/case.hpp"
#include "ox/base/text/digits.hpp"
#include "ox/records/search_text.hpp"
#include "oxcontacts/output/value_json.hpp"

namespace ox::program {
namespace {

// RFC 3986, section 2.1; of what has a meaning there, the @ of an address stays.
std::string percentEncoded(std::string_view text) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~@";
  std::string encoded;
  for (const char c : text) {
    if (kPlain.find(c) != std::string_view::npos) {
      encoded += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    encoded += '%';
    encoded += kHex[byte >> 4U];
    encoded += kHex[byte & 15U];
  }
  return encoded;
}

// People write "www.example.org" as well.
std::string webLinkOf(const std::string& text) {
  const auto folded = foldedForSearch(text);
  const bool hasGap =
      std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) <= ' '; });
  if (hasGap) return {};
  if (folded.starts_with("http://") || folded.starts_with("https://")) return text;
  return folded.starts_with("www.") ? "https://" + text : std::string();
}

}  // namespace

std::string linkOf(const Object& value) {
  if (const auto phone = value.host<OxObjectPhone>()) {
    const auto number = phone->phoneNumber().value_or("");
    // Letters, an extension or pauses are dialled otherwise than by their digits.
    const auto digits = isOfDigits(number) ? searchedDigits(number) : std::string();
    return digits.empty() ? std::string() : "tel:" + digits;
  }
  if (const auto email = value.host<OxObjectEmail>()) {
    const auto address = email->email().value_or("");
    const bool isAddress = address.find('@') != std::string::npos;
    return isAddress ? "mailto:" + percentEncoded(address) : std::string();
  }
  if (const auto* text = value.text()) return webLinkOf(*text);
  const auto* dictionary = value.dictionary();
  if (dictionary == nullptr) return {};
  for (const auto& [key, part] : dictionary->entries()) {
    const auto* text = part.text();
    if (text == nullptr) continue;
    if (auto link = webLinkOf(*text); !link.empty()) return link;
  }
  return {};
}

std::string mapLinkOf(const Object& value) {
  if (!value.host<OxObjectAddress>()) return {};
  const auto place = readableText(value);
  if (place.empty()) return {};
  return "https://www.openstreetmap.org/search?query=" + percentEncoded(place);
}

}  // namespace ox::program
