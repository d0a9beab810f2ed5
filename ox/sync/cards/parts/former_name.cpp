// Whether the FN that a record keeps is one of its present name: dropFormerName of card_parts.hpp.

#include <algorithm>
#include <array>

#include "ox/sync/cards/parts/card_parts.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/properties/property_index.hpp"
#include "ox/vcard/values/property_writer.hpp"

namespace ox::sync {
namespace {

// What FN depends on.
constexpr std::array kNaming = {property_id::kFirst,          property_id::kMiddle,
                                property_id::kLast,           property_id::kTitle,
                                property_id::kSuffix,         property_id::kOrganization,
                                property_id::kUnmodelledLines};

bool isFormattedName(const std::string& text) {
  return vcard::isWord(vcard::lineNameOf(text).name, "FN");
}

bool isOfFormerName(const std::string& text) {
  const auto detail = vcard::decodeDetail(text);
  if (!detail) return isFormattedName(text);
  return detail->property == property_id::kLast && detail->kind == vcard::DetailKind::Verbatim;
}

}  // namespace

void dropFormerName(PropertyBag& properties) {
  auto texts = unmodelledTextsOf(properties);
  if (std::none_of(texts.begin(), texts.end(), isFormattedName)) return;
  PropertyBag naming;
  for (const auto id : kNaming) naming.set(id, properties.value(id));
  // The writer knows.
  const Data noPhoto;
  std::string lines;
  vcard::PropertyWriter card({naming, noPhoto}, vcard::CardVersion::V40, lines);
  vcard::writeProperties(card);
  if (!card.isNameChanged()) return;
  std::erase_if(texts, isOfFormerName);
  setUnmodelledTexts(properties, texts);
}

}  // namespace ox::sync
