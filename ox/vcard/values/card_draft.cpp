#include "ox/vcard/values/card_draft.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::vcard {
void CardDraft::start(const CardFacts& factsOfCard) {
  facts = factsOfCard;
  name = {};
  values.clear();
  groups.clear();
  unmodelled.clear();
  photo = nullptr;
  uid.clear();
  members.clear();
  memberKeys.clear();
  addressLabels.clear();
  noteParameters.clear();
  storedValues.reset();
  repairs.clear();
}

std::string CardDraft::text(const ContentLine& line) const {
  return unescaped(line.value);
}

void CardDraft::repaired(const ContentLine& line, std::string reason) {
  repairs.push_back({line.number, std::move(reason)});
}

void CardDraft::addEntry(PropertyId property, Object&& value, const ContentLine& line,
                         const EntryExtras& extras) {
  auto& held = values.multi(property);
  const std::size_t number = held.entries.size() + 1;
  auto parametersAt = GroupedEntry::kNone;
  TypeLabel label;
  if (!line.parameters.empty()) {
    readTypeWords(line, types);
    label = typeLabel(property, types.known);
    if (label.label.empty()) label.label = extendedLabel(property, types);
    if (!extras.label.empty()) label = {extras.label, 0};
    if (types.rank != 0) held.ranks.emplace_back(number, types.rank);
    if (types.rank != 0 && (held.rank == 0 || types.rank < held.rank)) {
      held.rank = types.rank;
      held.primary = number;
    }
    const auto words = types.known & ~label.used & ~understoodWords(property);
    auto parameters = parametersOf(line, words, extras.ownKinds, extras.unknownWords);
    if (!parameters.empty()) {
      parametersAt = unmodelled.details.size();
      unmodelled.details.push_back(
          {property, number, DetailKind::Parameters, std::move(parameters)});
    }
  } else {
    label.label = extras.label;
  }
  if (number == 1) held.entries.reserve(4);
  held.entries.push_back({number, std::nullopt, std::move(value)});
  if (!label.label.empty()) held.entries.back().label.emplace(label.label);
  if (line.group.empty()) return;
  groups.add(GroupedEntry{groupKey(line.group), std::string(line.group), property, number,
                          label.used, parametersAt});
}

void CardDraft::moveLastEntry(PropertyId property, std::size_t number) {
  auto& held = values.multi(property);
  const auto last = held.entries.size();
  const auto moved = [&](auto& entry) {
    if (entry >= number) entry = entry == last ? number : entry + 1;
  };
  std::rotate(held.entries.begin() + static_cast<std::ptrdiff_t>(number) - 1,
              held.entries.end() - 1, held.entries.end());
  for (std::size_t i = number - 1; i < last; ++i) held.entries[i].identifier = i + 1;
  for (auto& [entry, rank] : held.ranks) moved(entry);
  moved(held.primary);
  for (auto& detail : unmodelled.details) {
    if (detail.property == property) moved(detail.entry);
  }
  groups.moveLastEntry(property, last, number);
}

void CardDraft::preserveVerbatim(PropertyId property, std::string_view value) {
  const auto entry =
      property < property_id::kFirstMulti ? 0 : values.multi(property).entries.size();
  unmodelled.details.push_back({property, entry, DetailKind::Verbatim, std::string(value)});
}

std::string CardDraft::preserveParameters(PropertyId property, const ContentLine& line,
                                          std::uint32_t ownKinds, UnknownWords unknownWords) {
  if (line.parameters.empty()) return {};
  readTypeWords(line, types);
  auto parameters = parametersOf(line, types.known, ownKinds, unknownWords);
  if (!parameters.empty()) {
    unmodelled.details.push_back({property, 0, DetailKind::Parameters, parameters});
  }
  if (types.rank != 0) unmodelled.details.push_back(preferenceDetail(property, 0, types.rank));
  return parameters;
}

std::string CardDraft::parametersOf(const ContentLine& line, std::uint32_t typeWords,
                                    std::uint32_t ownKinds, UnknownWords unknownWords) const {
  constexpr std::uint32_t kAlways = bitOf(ParameterKind::Type) | bitOf(ParameterKind::Pref) |
                                    bitOf(ParameterKind::Encoding) | bitOf(ParameterKind::Charset) |
                                    bitOf(ParameterKind::Value);
  std::string parameters;
  for (std::uint32_t bit = 1; bit <= typeWords; bit <<= 1U) {
    if ((typeWords & bit) != 0) parameters.append(";TYPE=").append(typeWordText(bit));
  }
  if (unknownWords == UnknownWords::ArePreserved) {
    for (const auto word : types.unknown) appendTypeWord(word, parameters);
  }
  for (const auto& parameter : line.parameters) {
    if (((kAlways | ownKinds) & bitOf(parameter.kind)) != 0) continue;
    parameters.append(";").append(parameter.name).append("=").append(parameter.value);
  }
  return parameters;
}

void CardDraft::preserveRanks() {
  for (PropertyId id = property_id::kFirstMulti; id <= property_id::kLastMulti; ++id) {
    const auto& held = values.multi(id);
    for (const auto& [entry, rank] : held.ranks) {
      if (entry == held.primary && rank == 1) continue;
      unmodelled.details.push_back(preferenceDetail(id, entry, rank));
    }
  }
}

}  // namespace ox::vcard
