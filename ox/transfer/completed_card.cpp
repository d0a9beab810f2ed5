#include "ox/transfer/completed_card.hpp"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ox/records/entry_identity.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/properties/card_address.hpp"
#include "ox/vcard/unmodelled/collected_unmodelled.hpp"

namespace ox::vcard {
namespace {

// Entries that are there already keep their identifiers, and with them what is known of them beside
// their values.
// An address that the file tells with the fields of a stored one is that one, with what only its
// card knew of it.
MultiValue withStoredAddresses(const MultiValue& stored, MultiValue told) {
  const auto isWithin = [](const Dictionary& fields, const Dictionary& whole) {
    return std::ranges::all_of(fields.entries(), [&](const auto& entry) {
      return whole.get(entry.first) == entry.second;
    });
  };
  const auto countOfFields = [](const Dictionary& address) {
    return std::ranges::count_if(address.entries(), [](const auto& entry) {
      return entry.first != kAddressLabelKey && entry.first != kABAddressCountryCodeKey;
    });
  };
  for (auto& entry : told.entries) {
    const auto* fields = entry.value.dictionary();
    if (fields == nullptr) continue;
    for (const auto& known : stored.entries) {
      const auto* whole = known.value.dictionary();
      const bool isThis = whole != nullptr && known.label == entry.label &&
                          isWithin(*fields, *whole) &&
                          countOfFields(*fields) == countOfFields(*whole);
      if (!isThis) continue;
      entry.value = known.value;
      break;
    }
  }
  return told;
}

PropertyValue withStoredIdentifiers(const PropertyValue& stored, const PropertyValue& told) {
  const auto* before = std::get_if<MultiValuePtr>(&stored);
  const auto* now = std::get_if<MultiValuePtr>(&told);
  if (before == nullptr || now == nullptr || !*before || !*now) return told;
  return MultiValuePtr(std::make_shared<MultiValue>(
      withIdentifiersOf(**before, withStoredAddresses(**before, **now))));
}

CollectedUnmodelled unmodelledOf(const PropertyBag& properties) {
  CollectedUnmodelled unmodelled;
  const auto* value = std::get_if<Object>(&properties.value(property_id::kUnmodelledLines));
  const auto* lines = value != nullptr ? value->array() : nullptr;
  if (lines == nullptr) return unmodelled;
  for (const auto& line : *lines) {
    if (line.text() != nullptr) unmodelled.addEncoded(*line.text());
  }
  return unmodelled;
}

bool isOfCategories(const std::string& line) {
  return isWord(lineNameOf(line).name, "CATEGORIES");
}

std::vector<std::string> categoriesIn(const CollectedUnmodelled& unmodelled) {
  std::vector<std::string> categories;
  for (const auto& whole : unmodelled.lines) {
    ContentLine line;
    const auto colon = isOfCategories(whole) ? parseHead(whole, line) : std::string_view::npos;
    if (colon == std::string_view::npos) continue;
    for (const auto part : partsOf(std::string_view(whole).substr(colon + 1), ',')) {
      categories.push_back(unescaped(part));
    }
  }
  return categories;
}

// Categories that the file tells take the place of those that are stored.
void takeCategories(const PropertyBag& told, PropertyBag& whole) {
  auto now = unmodelledOf(told);
  auto stored = unmodelledOf(whole);
  const auto categories = categoriesIn(now);
  if (categories.empty() || categories == categoriesIn(stored)) return;
  std::erase_if(stored.lines, isOfCategories);
  for (auto& line : now.lines) {
    if (isOfCategories(line)) stored.lines.push_back(std::move(line));
  }
  whole.set(property_id::kUnmodelledLines, Object(stored.encoded()));
}

}  // namespace

PersonCard completedCard(PersonCard&& person, const PropertyBag& stored, const Data& picture,
                         CategoriesAs categoriesAs) {
  auto told = cardOf(person);
  Card whole;
  whole.properties = stored;
  for (const auto id : *person.named) {
    whole.properties.set(id, withStoredIdentifiers(stored.value(id), told.properties.value(id)));
  }
  for (const auto& [id, value] : told.properties.entries()) {
    if (stored.find(id) == nullptr) whole.properties.set(id, value);
  }
  takeCategories(told.properties, whole.properties);
  whole.photo = told.photo ? told.photo : picture;
  whole.line = person.line;
  whole.repairs = std::move(person.repairs);
  auto completed = personCard(std::move(whole), categoriesAs);
  completed.uid = std::move(person.uid);
  // Those that the file tells; the stored ones may have been taken away as tags.
  completed.categories = std::move(person.categories);
  return completed;
}

}  // namespace ox::vcard
