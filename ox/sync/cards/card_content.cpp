#include "ox/sync/cards/card_content.hpp"

#include <algorithm>

#include "ox/base/text/ascii_case.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/clean_text.hpp"
#include "ox/records/encoded_values.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/markers.hpp"
#include "ox/vcard/read/reader.hpp"

namespace ox::sync {
namespace {

// Of the first line that tells one.
vcard::CardVersion versionOf(std::string_view text) {
  while (!text.empty()) {
    const auto line = text.substr(0, text.find_first_of("\r\n"));
    if (vcard::isWord(vcard::lineNameOf(line).name, "VERSION")) {
      const auto value = vcard::trimmed(line.substr(std::min(line.find(':'), line.size() - 1) + 1));
      return value == "4.0" ? vcard::CardVersion::V40 : vcard::CardVersion::V30;
    }
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return vcard::CardVersion::V30;
}

}  // namespace

std::variant<ReadCard, std::string> readCard(std::string_view text) {
  vcard::MemorySource source(text);
  vcard::Reader reader(source);
  auto first = reader.next();
  if (!first) return "no card in it";
  if (reader.next()) return "more than one card in it";
  if (const auto* refusal = std::get_if<vcard::Refusal>(&*first)) return refusal->reason;
  auto& card = std::get<vcard::Card>(*first);
  cleanText(card.properties);
  if (auto misfit = misfitOf(card.properties); !misfit.empty()) return misfit;
  ReadCard read;
  if (const auto* uid = card.properties.text(property_id::kCardUid)) read.uid = *uid;
  read.content = contentOfRecord(card.isGroup, std::move(card.properties), std::move(card.photo),
                                 {}, std::move(card.members));
  read.version = versionOf(text);
  return read;
}

std::variant<ReadCard, std::string> readWholeCard(std::string_view text) {
  auto read = readCard(text);
  if (std::holds_alternative<ReadCard>(read) && !vcard::hasEnd(text)) {
    return "it is cut short: END:VCARD is missing";
  }
  return read;
}

std::string comparableUid(std::string_view uid) {
  return lowerCase(uidKey(uid));
}

}  // namespace ox::sync
