// Whether two contents say the same: sameContent and differingProperties.

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "ox/records/card_uid.hpp"
#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/cards/parts/card_parts.hpp"
#include "ox/sync/cards/parts/entry_merge.hpp"
#include "ox/sync/cards/parts/property_words.hpp"
#include "ox/sync/cards/parts/text_sets.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"

namespace ox::sync {
namespace {

bool saySame(const PropertyValue& a, const PropertyValue& b) {
  if (isEmptyValue(a) || isEmptyValue(b)) return isEmptyValue(a) && isEmptyValue(b);
  const auto* left = std::get_if<MultiValuePtr>(&a);
  const auto* right = std::get_if<MultiValuePtr>(&b);
  if (left == nullptr || right == nullptr) return sameValue(a, b);
  return haveSameEntries(**left, **right);
}

std::string upperCase(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), vcard::upper);
  return upper;
}

// What a line says, whatever its group is called and however its parameters are spelled and
// ordered: servers write these their own way.
std::string sayingOf(const std::string& text) {
  vcard::ContentLine line;
  const auto colon = vcard::parseHead(text, line);
  if (colon == std::string::npos) return text;
  std::set<std::string> parameters;
  for (const auto& parameter : line.parameters) {
    if (parameter.kind == vcard::ParameterKind::Type) {
      vcard::forEachWord(parameter.value, [&](std::string_view word) {
        parameters.insert("TYPE=" + upperCase(word));
      });
    } else {
      parameters.insert(upperCase(parameter.name) + "=" + vcard::parameterText(parameter));
    }
  }
  auto saying = upperCase(line.name);
  for (const auto& parameter : parameters) saying += ";" + parameter;
  return saying + text.substr(colon);
}

// The names of lines that only one of them has.
std::set<std::string> differingLines(const MultiValue& a, const MultiValue& b) {
  std::map<std::string, int> balance;
  std::map<std::string, std::string> names;
  const auto count = [&](const MultiValue& lines, int step) {
    for (const auto& line : lines.entries) {
      auto saying = sayingOf(*line.value.text());
      balance[saying] += step;
      names[std::move(saying)] = *line.label;
    }
  };
  count(a, 1);
  count(b, -1);
  std::set<std::string> differing;
  for (const auto& [saying, name] : names) {
    if (balance[saying] != 0) differing.insert(name);
  }
  return differing;
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
