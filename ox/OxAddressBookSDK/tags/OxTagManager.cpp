#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"

#include <mutex>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "ox/OxAddressBookSDK/tags/contained_tags.hpp"
#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/base/text/keyed_hash.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

std::string validText(TextView text) {
  return validUtf8(std::string(*text));
}

TagStore::Tags withoutRepeats(const TagStore::Tags& tags) {
  TagStore::Tags result;
  std::unordered_set<std::string, KeyedHash> seen;
  for (const auto& tag : tags) {
    auto valid = validUtf8(tag);
    if (seen.insert(valid).second) result.push_back(std::move(valid));
  }
  return result;
}

}  // namespace

OxTagManager::OxTagManager(Key, std::string identifier) : identifier_(std::move(identifier)) {}

std::shared_ptr<OxTagManager> OxTagManager::tagManagerWithID(TextView identifier) {
  if (!identifier) return nullptr;
  static auto& mutex = *new std::mutex;
  static auto& managers = *new std::unordered_map<std::string, std::shared_ptr<OxTagManager>>;
  auto valid = validText(identifier);
  const std::lock_guard lock(mutex);
  auto& manager = managers[valid];
  if (!manager) manager = std::make_shared<OxTagManager>(Key(), std::move(valid));
  return manager;
}

std::optional<OxTagManager::Tags> OxTagManager::tagsByPersonID(TextView personID) const {
  if (!personID) return std::nullopt;
  Tags tags;
  containedTags([&] { tags = TagStore::shared().tags(identifier_, validText(personID)); });
  return tags.empty() ? std::nullopt : std::optional(std::move(tags));
}

void OxTagManager::addPersonID_forTag(TextView personID, TextView tag) {
  if (!personID || !tag) return;
  containedTags([&] { TagStore::shared().add(identifier_, validText(personID), validText(tag)); });
}

void OxTagManager::removePersonID_fromTag(TextView personID, TextView tag) {
  if (!personID || !tag) return;
  containedTags(
      [&] { TagStore::shared().remove(identifier_, validText(personID), validText(tag)); });
}

void OxTagManager::setTags_forPersonID(const std::optional<Tags>& tags, TextView personID) {
  if (!personID) return;
  const auto wanted = tags ? withoutRepeats(*tags) : Tags();
  containedTags([&] { TagStore::shared().replace(identifier_, validText(personID), wanted); });
}

void OxTagManager::removeForPersonID(TextView personID) {
  setTags_forPersonID(std::nullopt, personID);
}

void OxTagManager::changeTags(const Tags& removed, const Tags& added, TextView personID) {
  if (!personID) return;
  containedTags([&] {
    TagStore::shared().change(identifier_, validText(personID), withoutRepeats(removed),
                              withoutRepeats(added));
  });
}

std::vector<std::string> OxTagManager::problems() {
  try {
    return TagStore::shared().problems();
  } catch (const std::exception& error) {
    return {error.what()};
  }
}

bool OxTagManager::makeDurable() {
  return containedTags([] { TagStore::shared().makeDurable(); });
}

}  // namespace ox
