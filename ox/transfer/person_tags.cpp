#include "ox/transfer/person_tags.hpp"

#include <algorithm>
#include <iterator>
#include <unordered_set>

#include "ox/OxAddressBookSDK/tags/contained_tags.hpp"
#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/vcard/properties/categories.hpp"

namespace ox::vcard {

std::string tagManagerOf(std::string_view container) {
  return OxMacAddressBook::standID(container).value_or("");
}

bool PersonTags::areNone() {
  bool none = false;
  isUnreadable_ |= !containedTags([&] { none = TagStore::shared().isEmpty(); });
  return none;
}

std::optional<Tags> PersonTags::of(const RecordKey& person) {
  if (isUnreadable_) return std::nullopt;
  const auto container = containerSource().containerOf(person, RecordKind::Person);
  if (!container) return std::nullopt;
  const auto [known, isNew] = managers_.try_emplace(container->identifier);
  auto& manager = known->second;
  if (isNew) manager = tagManagerOf(container->identifier);
  std::optional<Tags> tags;
  const auto read = [&] { tags = TagStore::shared().tags(manager, person.text()); };
  isUnreadable_ = !containedTags(read);
  return tags;
}

std::optional<Tags> categoriesToWrite(const PropertyBag& properties, const Tags& tags) {
  auto categories = categoriesOf(properties);
  const std::unordered_set<std::string> said(categories.begin(), categories.end());
  Tags others;
  std::ranges::copy_if(tags, std::back_inserter(others),
                       [&](const std::string& tag) { return !said.contains(tag); });
  if (areCategoriesTags(properties)) {
    const bool areSame = others.empty() && tags.size() == categories.size();
    return areSame ? std::nullopt : std::optional(tags);
  }
  if (others.empty()) return std::nullopt;
  std::ranges::move(others, std::back_inserter(categories));
  return categories;
}

}  // namespace ox::vcard
