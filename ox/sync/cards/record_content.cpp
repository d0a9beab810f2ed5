// What records hold as CardContent, and back: where the categories of persons stand.

#include <algorithm>
#include <utility>

#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/cards/parts/card_parts.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/properties/categories.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

namespace ox::sync {
namespace {

PropertyBag bagOfLines(const std::vector<std::string>& lines) {
  PropertyBag bag;
  setUnmodelledTexts(bag, lines);
  return bag;
}

// Others of that name are lines like any.
bool saysCategories(const std::string& text) {
  return vcard::isWord(vcard::lineNameOf(text).name, "CATEGORIES") &&
         !vcard::categoriesOf(bagOfLines({text})).empty();
}

// The note that categories are tags (ox/vcard/properties/categories.hpp), which stands with them.
bool isTagsNote(const std::string& text) {
  const auto detail = vcard::decodeDetail(text);
  return detail && detail->property == property_id::kUnmodelledLines && detail->entry == 1;
}

void addMissing(std::vector<std::string>& list, const std::vector<std::string>& others) {
  for (const auto& each : others) {
    if (std::find(list.begin(), list.end(), each) == list.end()) list.push_back(each);
  }
}

void takeCategoryLines(CardContent& content) {
  std::vector<std::string> rest;
  for (auto& text : unmodelledTextsOf(content.properties)) {
    if (isTagsNote(text)) continue;
    if (saysCategories(text)) {
      content.categoryLines.emplace_back(rest.size(), std::move(text));
    } else {
      rest.push_back(std::move(text));
    }
  }
  setUnmodelledTexts(content.properties, rest);
}

bool areSameSets(std::vector<std::string> a, std::vector<std::string> b) {
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  return a == b;
}

// The lines that the card had where they say the categories, else one that does.
std::vector<PlacedLine> linesOfCategories(const CardContent& content, std::size_t atEnd) {
  std::vector<std::string> lines;
  for (const auto& placed : content.categoryLines) lines.push_back(placed.second);
  const auto said = vcard::categoriesOf(bagOfLines(lines));
  if (areSameSets(said, content.categories)) return content.categoryLines;
  std::string line;
  for (const auto& category : content.categories) {
    if (vcard::trimmed(category).empty()) continue;
    line += line.empty() ? "CATEGORIES:" : ",";
    vcard::appendTextEscaped(category, line);
  }
  if (line.empty()) return {};
  return {{atEnd, line}};
}

}  // namespace

CardContent contentOfRecord(bool isGroup, PropertyBag properties, Data photo,
                            const std::vector<std::string>& tags,
                            std::vector<std::string> members) {
  CardContent content;
  content.isGroup = isGroup;
  if (photo && !photo->empty()) content.photo = std::move(photo);
  content.members = std::move(members);
  if (isGroup) {
    content.properties = std::move(properties);
    return content;
  }
  // In a record of an older store the lines count beside the tags.
  if (!vcard::areCategoriesTags(properties)) content.categories = vcard::categoriesOf(properties);
  addMissing(content.categories, tags);
  content.properties = std::move(properties);
  dropFormerName(content.properties);
  takeCategoryLines(content);
  return content;
}

PropertyBag propertiesOfRecord(const CardContent& content) {
  auto properties = content.properties;
  if (content.isGroup) return properties;
  auto texts = unmodelledTextsOf(properties);
  const auto isDetail = [](const std::string& text) { return text.starts_with(';'); };
  const auto lines = std::find_if(texts.begin(), texts.end(), isDetail) - texts.begin();
  const auto placed = linesOfCategories(content, static_cast<std::size_t>(lines));
  if (placed.empty()) return properties;
  setUnmodelledTexts(properties, withPlacedLines(std::move(texts), placed));
  vcard::noteCategoriesAreTags(properties);
  return properties;
}

}  // namespace ox::sync
