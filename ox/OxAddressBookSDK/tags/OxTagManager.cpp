#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"

#include <exception>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/store_location.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

// The one place where failures of the tag file end: noticed, and the answer stays what it was. A
// step of other work that meets them goes on without the tags, so they are not counted among those
// of that work.
template <typename Work>
bool contained(const Work& work) {
  try {
    work();
    return true;
  } catch (const std::exception& error) {
    const failures::Aside aside;
    failures::notice(kindOf(error), std::string("tags: ") + error.what(), tagStorePath());
    return false;
  }
}

std::string validText(TextView text) {
  return validUtf8(std::string(*text));
}

TagStore::Tags withoutRepeats(const TagStore::Tags& tags) {
  TagStore::Tags result;
  std::unordered_set<std::string> seen;
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
  contained([&] { tags = TagStore::shared().tags(identifier_, validText(personID)); });
  return tags.empty() ? std::nullopt : std::optional(std::move(tags));
}

void OxTagManager::addPersonID_forTag(TextView personID, TextView tag) {
  if (!personID || !tag) return;
  contained([&] { TagStore::shared().add(identifier_, validText(personID), validText(tag)); });
}

void OxTagManager::removePersonID_fromTag(TextView personID, TextView tag) {
  if (!personID || !tag) return;
  contained([&] { TagStore::shared().remove(identifier_, validText(personID), validText(tag)); });
}

void OxTagManager::setTags_forPersonID(const std::optional<Tags>& tags, TextView personID) {
  if (!personID) return;
  const auto wanted = tags ? withoutRepeats(*tags) : Tags();
  contained([&] { TagStore::shared().replace(identifier_, validText(personID), wanted); });
}

void OxTagManager::removeForPersonID(TextView personID) {
  setTags_forPersonID(std::nullopt, personID);
}

std::vector<std::string> OxTagManager::problems() {
  try {
    return TagStore::shared().problems();
  } catch (const std::exception& error) {
    return {error.what()};
  }
}

bool OxTagManager::makeDurable() {
  return contained([] { TagStore::shared().makeDurable(); });
}

}  // namespace ox
