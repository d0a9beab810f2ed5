#include "ox/vcard/read/card_maker.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/properties/stored_values.hpp"
#include "ox/vcard/read/card_facts.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

namespace ox::vcard {
namespace {

// What lines say beside their values is nothing without them.
bool isDetail(const Object& stored) {
  const auto* text = stored.text();
  return text != nullptr && decodeDetail(*text).has_value();
}

bool saysNothing(const Card& card) {
  if (card.photo || !card.members.empty()) return false;
  return std::ranges::all_of(card.properties.entries(), [](const PropertyBag::Entry& entry) {
    const auto* single = std::get_if<Object>(&entry.second);
    const auto* lines = single != nullptr ? single->array() : nullptr;
    return entry.first == property_id::kUnmodelledLines && lines != nullptr &&
           std::ranges::all_of(*lines, isDetail);
  });
}

}  // namespace

std::optional<CardResult> CardMaker::make(RawCard& raw, bool trustBytes, Before before) {
  if (!raw.refusal.empty()) return Refusal{raw.line, raw.refusal};
  const auto facts = factsOf(raw);
  const auto repairsBefore = raw.repairs.size();
  if (!facts.hasVersion) raw.repairs.push_back({raw.line, "VERSION is missing"});
  lines_.start(raw, facts.dialect, trustBytes);
  builder_.start(raw.line, facts);
  while (const auto* line = lines_.next()) {
    if (before == Before::Unknown && isWord(line->name, kStoredValuesName)) {
      raw.repairs.resize(repairsBefore);
      return std::nullopt;
    }
    builder_.add(*line);
  }
  Card card = builder_.finish();
  card.charset = lines_.assumedCharset();
  if (saysNothing(card)) return Refusal{raw.line, "the card holds no property"};
  if (raw.repairs.empty()) return card;
  card.repairs.insert(card.repairs.end(), std::make_move_iterator(raw.repairs.begin()),
                      std::make_move_iterator(raw.repairs.end()));
  std::stable_sort(card.repairs.begin(), card.repairs.end(),
                   [](const Problem& a, const Problem& b) { return a.line < b.line; });
  return card;
}

}  // namespace ox::vcard
