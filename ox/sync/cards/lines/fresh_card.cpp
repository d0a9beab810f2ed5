#include "ox/sync/cards/lines/fresh_card.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/uuid.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/sync/cards/card_edit.hpp"
#include "ox/sync/cards/parts/card_parts.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::sync {
namespace {

constexpr std::string_view kEnd = "END:VCARD\r\n";

std::string written(const PropertyBag& properties, const CardContent& content,
                    const std::vector<std::string>& members, vcard::CardVersion version) {
  std::string card;
  vcard::WriteOptions options;
  options.version = version;
  if (content.isGroup) {
    vcard::appendGroup(properties, members, options, card);
  } else {
    options.categories = &content.categories;
    vcard::appendCard(properties, content.photo, options, card);
  }
  return card;
}

PropertyBag withoutCardLines(const PropertyBag& properties) {
  auto parts = partsOf(properties);
  parts.cardLines.clear();
  parts.cardDetails.clear();
  return bagOf(std::move(parts));
}

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') || byte == 0x7F;
}

}  // namespace

std::string writtenValues(const CardContent& content, vcard::CardVersion version) {
  auto properties = withoutCardLines(content.properties);
  properties.set(property_id::kCardUid, PropertyValue());
  return written(properties, content, {}, version);
}

std::string withoutControls(std::string_view text) {
  std::string clean(text);
  std::erase_if(clean, isControl);
  return clean;
}

std::string newCard(const CardContent& content, std::string_view uid, vcard::CardVersion version,
                    const EditOptions& options) {
  auto properties = withoutCardLines(content.properties);
  const auto* own = properties.text(property_id::kCardUid);
  if (!uid.empty()) {
    properties.set(property_id::kCardUid, Object(uid));
  } else if (own == nullptr || own->empty()) {
    properties.set(property_id::kCardUid, Object(std::string(kUrnPrefix) + uuidText(makeUuid())));
  }
  auto card = written(properties, content, content.members, version);
  card.insert(card.size() - kEnd.size(), "REV:" + options.revision + "\r\n");
  return card;
}

std::string withCrlf(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 32 + 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c != '\r' && c != '\n') {
      result += c;
      continue;
    }
    // Some programs end lines with two of the one.
    if (c == '\r' && text.substr(i, 3) == "\r\r\n") ++i;
    if (text[i] == '\r' && text.substr(i, 2) == "\r\n") ++i;
    result += "\r\n";
  }
  if (!result.empty() && !result.ends_with("\r\n")) result += "\r\n";
  return result;
}

std::string fileNameFor(std::string_view uid) {
  constexpr std::size_t kLongest = 100;
  const auto isPlain = [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.';
  };
  const bool canBe = !uid.empty() && uid.size() <= kLongest && uid.front() != '.' &&
                     std::all_of(uid.begin(), uid.end(), isPlain);
  return canBe ? std::string(uid) : uuidText(makeUuid());
}

}  // namespace ox::sync
