#include "ox/vcard/properties/categories.hpp"

#include <string_view>
#include <unordered_set>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

namespace ox::vcard {
namespace {

// No line has this detail, which stands among those of the lines themselves.
constexpr std::string_view kTagsMark = "tags";

DetailView tagsMark() {
  return {property_id::kUnmodelledLines, 1, DetailKind::Verbatim, kTagsMark};
}

const Array* unmodelledOf(const PropertyBag& properties) {
  const auto* held = properties.find(property_id::kUnmodelledLines);
  const auto* single = held != nullptr ? std::get_if<Object>(held) : nullptr;
  return single != nullptr ? single->array() : nullptr;
}

// The elements of a list, still escaped.
template <typename Use>
void forEachElement(std::string_view value, Use&& use) {
  std::size_t from = 0;
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (value[at] == '\\') {
      ++at;
    } else if (value[at] == ',') {
      use(value.substr(from, at - from));
      from = at + 1;
    }
  }
  use(value.substr(from));
}

}  // namespace

std::vector<std::string> categoriesOf(const PropertyBag& properties) {
  std::vector<std::string> categories;
  const auto* lines = unmodelledOf(properties);
  if (lines == nullptr) return categories;
  std::unordered_set<std::string> known;
  for (const auto& element : *lines) {
    const auto* text = element.text();
    if (text == nullptr || !isWord(lineNameOf(*text).name, "CATEGORIES")) continue;
    ContentLine line;
    const auto colon = parseHead(*text, line);
    if (colon == std::string_view::npos || line.encoding == Encoding::Base64) continue;
    forEachElement(std::string_view(*text).substr(colon + 1), [&](std::string_view raw) {
      const auto whole = unescaped(raw);
      auto category = std::string(trimmed(whole));
      if (!category.empty() && known.insert(category).second) {
        categories.push_back(std::move(category));
      }
    });
  }
  return categories;
}

bool areCategoriesTags(const PropertyBag& properties) {
  const auto* lines = unmodelledOf(properties);
  if (lines == nullptr) return false;
  const auto mark = encodeDetail(tagsMark());
  for (const auto& element : *lines) {
    if (const auto* text = element.text(); text != nullptr && *text == mark) return true;
  }
  return false;
}

void noteCategoriesAreTags(PropertyBag& properties) {
  if (areCategoriesTags(properties) || categoriesOf(properties).empty()) return;
  auto lines = *unmodelledOf(properties);
  lines.emplace_back(encodeDetail(tagsMark()));
  properties.set(property_id::kUnmodelledLines, Object(std::move(lines)));
}

}  // namespace ox::vcard
