// Whether two contents say the same: sameContent and differingProperties.

#include <algorithm>
#include <set>

#include "ox/records/card_uid.hpp"
#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/cards/card_parts.hpp"
#include "ox/sync/cards/entry_merge.hpp"
#include "ox/sync/cards/property_words.hpp"
#include "ox/sync/cards/text_sets.hpp"

namespace ox::sync {
namespace {

bool saySame(const PropertyValue& a, const PropertyValue& b) {
  if (isEmptyValue(a) || isEmptyValue(b)) return isEmptyValue(a) && isEmptyValue(b);
  const auto* left = std::get_if<MultiValuePtr>(&a);
  const auto* right = std::get_if<MultiValuePtr>(&b);
  if (left == nullptr || right == nullptr) return sameValue(a, b);
  return haveSameEntries(**left, **right);
}

// The names of lines that only one of them has.
std::set<std::string> differingLines(const MultiValue& a, const MultiValue& b) {
  std::set<std::string> names;
  const auto origins = originsOf(a, b, Identifiers::TellNothing);
  std::vector<bool> isFound(a.entries.size());
  for (std::size_t i = 0; i < origins.size(); ++i) {
    const auto& line = b.entries[i];
    const bool isSame = origins[i] != kNewEntry && a.entries[origins[i]].value == line.value;
    if (origins[i] != kNewEntry) isFound[origins[i]] = true;
    if (!isSame) names.insert(*line.label);
  }
  for (std::size_t j = 0; j < isFound.size(); ++j) {
    if (!isFound[j]) names.insert(*a.entries[j].label);
  }
  return names;
}

}  // namespace

std::vector<std::string> differingProperties(const CardContent& a, const CardContent& b) {
  std::vector<std::string> words;
  const auto left = partsOf(a.properties);
  const auto right = partsOf(b.properties);
  for (const auto id : propertiesIn({&left.values, &right.values})) {
    if (!saySame(left.values.value(id), right.values.value(id))) words.push_back(wordFor(id));
  }
  if (!sameData(a.photo, b.photo)) words.emplace_back(kPhotoWord);
  if (!areSameTexts(a.categories, b.categories, Case::Counts)) words.emplace_back(kCategoriesWord);
  if (!areSameTexts(a.members, b.members, Case::CountsNot)) words.emplace_back(kMembersWord);
  for (const auto& name : differingLines(left.lines, right.lines)) {
    words.push_back(wordForLine(name));
  }
  return words;
}

bool sameContent(const CardContent& a, const CardContent& b) {
  return a.isGroup == b.isGroup && differingProperties(a, b).empty();
}

}  // namespace ox::sync
