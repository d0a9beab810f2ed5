#include "ox/sync/cards/parts/card_parts.hpp"

#include <algorithm>
#include <iterator>
#include <set>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/unmodelled/collected_unmodelled.hpp"

namespace ox::sync {
namespace {

using vcard::PropertyDetail;

bool tellsOfCard(std::string_view name) {
  return vcard::isWord(name, "REV") || vcard::isWord(name, "PRODID");
}

std::string upperCase(std::string_view name) {
  std::string upper(name);
  std::ranges::transform(upper, upper.begin(), vcard::upper);
  return upper;
}

}  // namespace

std::vector<PropertyId> propertiesIn(const std::vector<const PropertyBag*>& bags) {
  std::set<PropertyId> all;
  for (const auto* bag : bags) {
    for (const auto& entry : bag->entries()) all.insert(entry.first);
  }
  return {all.begin(), all.end()};
}

bool isEmptyValue(const PropertyValue& value) {
  if (isMissing(value)) return true;
  const auto* values = std::get_if<MultiValuePtr>(&value);
  return values != nullptr && (*values)->entries.empty();
}

std::vector<std::string> unmodelledTextsOf(const PropertyBag& properties) {
  std::vector<std::string> texts;
  const auto* single = std::get_if<Object>(&properties.value(property_id::kUnmodelledLines));
  const auto* held = single != nullptr ? single->array() : nullptr;
  if (held == nullptr) return texts;
  for (const auto& element : *held) {
    if (element.text() != nullptr && !element.text()->empty()) texts.push_back(*element.text());
  }
  return texts;
}

void setUnmodelledTexts(PropertyBag& properties, const std::vector<std::string>& texts) {
  Array held(texts.begin(), texts.end());
  properties.set(property_id::kUnmodelledLines, held.empty() ? Object() : Object(std::move(held)));
}

std::vector<std::string> withPlacedLines(std::vector<std::string> lines,
                                         const std::vector<PlacedLine>& placed) {
  std::size_t added = 0;
  for (const auto& [before, text] : placed) {
    const auto place = std::min(before + added++, lines.size());
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(place), text);
  }
  return lines;
}

CardParts partsOf(const PropertyBag& properties) {
  CardParts parts;
  parts.values = properties;
  parts.values.set(property_id::kCardUid, PropertyValue());
  parts.values.set(property_id::kUnmodelledLines, PropertyValue());
  if (const auto* uid = properties.text(property_id::kCardUid)) parts.uid = *uid;
  for (auto& text : unmodelledTextsOf(properties)) {
    if (const auto detail = vcard::decodeDetail(text)) {
      const bool isOfCard = detail->property == property_id::kUnmodelledLines;
      (isOfCard ? parts.cardDetails : parts.details)
          .push_back({detail->property, detail->entry, detail->kind, std::string(detail->text)});
      continue;
    }
    const auto name = vcard::lineNameOf(text).name;
    if (tellsOfCard(name)) {
      parts.cardLines.emplace_back(parts.lines.entries.size(), std::move(text));
    } else {
      auto label = upperCase(name);
      parts.lines.entries.push_back(
          {parts.lines.entries.size() + 1, std::move(label), Object(std::move(text))});
    }
  }
  return parts;
}

PropertyBag bagOf(CardParts&& parts) {
  vcard::CollectedUnmodelled unmodelled;
  for (const auto& entry : parts.lines.entries) {
    if (entry.value.text() != nullptr) unmodelled.lines.push_back(*entry.value.text());
  }
  unmodelled.lines = withPlacedLines(std::move(unmodelled.lines), parts.cardLines);
  unmodelled.details = std::move(parts.details);
  std::ranges::move(parts.cardDetails, std::back_inserter(unmodelled.details));
  auto bag = std::move(parts.values);
  if (parts.uid) bag.set(property_id::kCardUid, Object(*parts.uid));
  if (!unmodelled.empty()) {
    bag.set(property_id::kUnmodelledLines, Object(unmodelled.encoded()));
  }
  return bag;
}

std::vector<PropertyDetail> detailsOf(const std::vector<PropertyDetail>& details,
                                      PropertyId property, std::uint64_t entry) {
  std::vector<PropertyDetail> found;
  std::ranges::copy_if(details, std::back_inserter(found), [&](const PropertyDetail& detail) {
    return detail.property == property && detail.entry == entry;
  });
  return found;
}

bool tellTheSame(const std::vector<PropertyDetail>& a, const std::vector<PropertyDetail>& b) {
  const auto isSame = [](const PropertyDetail& one, const PropertyDetail& other) {
    return one.property == other.property && one.kind == other.kind && one.text == other.text;
  };
  return a.size() == b.size() && std::is_permutation(a.begin(), a.end(), b.begin(), isSame);
}

}  // namespace ox::sync
