#include "random_changes.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "ox/records/property_keys.hpp"
#include "ox/sync/cards/parts/card_parts.hpp"

namespace ox::sync {
namespace {

using namespace property_id;

constexpr std::array kTexts = {kFirst, kLast, kNickname, kOrganization, kJobTitle, kNote};
constexpr std::array kLists = {kPhone, kEmail, kURLs, kRelatedNames, kAddress};

}  // namespace

std::string RandomChanges::text() {
  constexpr std::array kPieces = {"Ann", "Lee, ", "; ", "\n", "+1 555 ", "\\", "\xC3\xA4", "x"};
  std::string text = "v" + std::to_string(below(1000));
  for (auto pieces = below(3); pieces > 0; --pieces) text += kPieces[below(kPieces.size())];
  return text + "e";
}

void RandomChanges::changeEntries(CardContent& content) {
  const auto property = kLists[below(kLists.size())];
  auto values = listOf(content, property);
  const auto value = [&]() -> Object {
    if (property != kAddress) return Object(text());
    return Object(Dictionary{{std::string(kABAddressStreetKey), Object(text())},
                             {std::string(kABAddressCityKey), Object(text())}});
  };
  const auto label = [&]() -> Text {
    constexpr std::array kLabels = {kABHomeLabel, kABWorkLabel};
    if (below(3) == 0) return std::nullopt;
    return below(3) == 0 ? "Boat" : std::string(kLabels[below(kLabels.size())]);
  };
  const auto what = values.entries.empty() ? 0 : below(5);
  if (what == 0) {
    values.add(value(), label());
  } else {
    const auto place = below(values.entries.size());
    auto& entry = values.entries[place];
    if (what == 1) {
      entry.value = value();
    } else if (what == 2) {
      entry.label = label();
    } else if (what == 3) {
      values.primary = values.primary == entry.identifier ? 0 : entry.identifier;
    } else {
      if (values.primary == entry.identifier) values.primary = 0;
      values.entries.erase(values.entries.begin() + static_cast<std::ptrdiff_t>(place));
    }
  }
  setList(content, property, std::move(values));
}

void RandomChanges::changeLines(CardContent& content) {
  auto parts = partsOf(content.properties);
  auto& lines = parts.lines.entries;
  const auto name = "X-RANDOM-" + std::to_string(below(3));
  if (below(3) != 0 || lines.empty()) {
    lines.push_back({1000, name, Object(name + ":" + std::to_string(below(1000)))});
  } else {
    const auto place = below(lines.size());
    // A preserved FN goes with its name alone.
    if (lines[place].label != "FN") {
      lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(place));
    }
  }
  content.properties = bagOf(std::move(parts));
}

void RandomChanges::change(CardContent& content) {
  switch (below(10)) {
    case 0:
    case 1:
    case 2:
      return setText(content, kTexts[below(kTexts.size())], below(4) == 0 ? "" : text());
    case 3:
      content.photo = below(3) == 0 ? nullptr : makeData("\xFF\xD8\xFF\xE0" + text());
      return;
    case 4:
      if (below(2) == 0 && !content.categories.empty()) {
        content.categories.pop_back();
      } else {
        content.categories.push_back("tag" + std::to_string(below(1000)));
      }
      return;
    case 5:
      return changeLines(content);
    default:
      return changeEntries(content);
  }
}

CardContent RandomChanges::of(CardContent content, std::size_t count) {
  for (; count > 0; --count) change(content);
  return contentOfRecord(false, propertiesOfRecord(content), content.photo, content.categories, {});
}

}  // namespace ox::sync
