#include "ox/sync/cards/card_content.hpp"

#include <algorithm>
#include <optional>

#include "ox/records/clean_text.hpp"
#include "ox/records/encoded_values.hpp"
#include "ox/sync/cards/text_lines.hpp"
#include "ox/vcard/read/reader.hpp"

namespace ox::sync {
namespace {

vcard::CardVersion versionOf(std::string_view text) {
  return valueOf(linesOf(text), "VERSION") == "4.0" ? vcard::CardVersion::V40
                                                    : vcard::CardVersion::V30;
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

}  // namespace ox::sync
