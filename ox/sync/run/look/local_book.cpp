#include "ox/sync/run/look/local_book.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/base/checksum.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/transfer/person_tags.hpp"

namespace ox::sync {
namespace {

std::uint64_t checksumOf(const std::vector<std::string>& texts) {
  if (texts.empty()) return 0;
  std::string all;
  for (const auto& text : texts) all.append(std::to_string(text.size())).append(":").append(text);
  const auto sum = checksum64(all);
  return sum != 0 ? sum : 1;
}

}  // namespace

std::uint64_t besideOfTags(const std::vector<std::string>& tags) {
  return besideOfMembers(tags);
}

std::uint64_t besideOfMembers(std::vector<std::string> members) {
  std::ranges::sort(members);
  members.erase(std::unique(members.begin(), members.end()), members.end());
  return checksumOf(members);
}

std::uint64_t sumOf(std::uint64_t fingerprint, std::uint64_t beside) {
  return fingerprint ^ (beside * 0x9E3779B97F4A7C15U);
}

LocalBook::LocalBook(std::string container, Categories categories)
    : container_(std::move(container)),
      tagManager_(vcard::tagManagerOf(container_)),
      categories_(categories) {}

LocalBook LocalBook::of(const SyncBook& book) {
  const bool areGroups = book.groupSpelling == kCategoriesAsGroups;
  return LocalBook(book.container, areGroups ? Categories::Groups : Categories::Tags);
}

std::optional<LocalContent> LocalBook::contentOf(const RecordKey& key, RecordKind kind) {
  const std::array keys{key};
  const auto contents = containerSource().committedContents(keys, 1);
  if (contents.empty() || !contents.front().values) return std::nullopt;
  const auto& stored = contents.front();
  LocalContent local;
  local.picture = stored.picture ? checksum64(*stored.picture) : 0;
  local.fingerprint = contentFingerprint(*stored.values, local.picture);
  const bool isGroup = kind == RecordKind::Group;
  std::vector<std::string> tags;
  std::vector<std::string> members;
  if (isGroup) {
    for (const auto& child : childrenOf(key)) members.push_back(uidOf(child));
    local.beside = besideOfMembers(members);
    local.linked = members;
  } else {
    tags = tagsOf(key);
    local.beside = besideOfTags(tags);
  }
  local.content =
      contentOfRecord(isGroup, *stored.values, stored.picture, tags, std::move(members));
  return local;
}

std::uint64_t LocalBook::besideOfGroup(const RecordKey& group) {
  std::vector<std::string> members;
  for (const auto& child : childrenOf(group)) members.push_back(uidOf(child));
  return besideOfMembers(std::move(members));
}

std::unordered_map<std::string, std::uint64_t> LocalBook::besideOfTagged() {
  std::unordered_map<std::string, std::uint64_t> numbers;
  if (const auto* groups = categoryGroups()) {
    for (const auto& [person, categories] : groups->categories()) {
      numbers.emplace(person.text(), besideOfTags(categories));
    }
    return numbers;
  }
  for (const auto& [person, tags] : TagStore::shared().tagsUnder(tagManager_)) {
    numbers.emplace(person, besideOfTags(tags));
  }
  return numbers;
}

const CategoryGroups* LocalBook::categoryGroups() {
  if (categories_ == Categories::Tags) return nullptr;
  if (!groups_) groups_.emplace(container_);
  return &*groups_;
}

std::vector<std::string> LocalBook::tagsOf(const RecordKey& person) {
  if (const auto* groups = categoryGroups()) return groups->categoriesOf(person);
  return TagStore::shared().tags(tagManager_, person.text());
}

std::string LocalBook::uidAsWritten(const RecordKey& record) {
  const auto values = containerSource().committedValues(record);
  const auto* given = values ? values->text(property_id::kCardUid) : nullptr;
  return given != nullptr ? *given : uidOfRecord(record);
}

std::string LocalBook::uidOf(const RecordKey& record) {
  const auto known = uids_.find(record);
  if (known != uids_.end()) return known->second;
  std::string uid(uidKey(uidAsWritten(record)));
  uids_.emplace(record, uid);
  return uid;
}

LocalBook::Member LocalBook::memberOfUid(std::string_view uid) {
  const std::string key(uidKey(uid));
  if (key.empty()) return {};
  if (!members_.contains(key)) meetMembers({key});
  return members_.at(key);
}

void LocalBook::meetMembers(const std::vector<std::string>& uids) {
  std::vector<std::string_view> unknown;
  for (const auto& uid : uids) {
    const auto key = uidKey(uid);
    if (!key.empty() && members_.try_emplace(std::string(key)).second) unknown.push_back(key);
  }
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    std::vector<SoughtRecord> sought;
    for (const auto uid : unknown) sought.push_back({uid});
    if (sought.empty()) return;
    const auto found = containerSource().matches(container_, kind, sought);
    for (std::size_t i = 0; i < found.size(); ++i) {
      if (!found[i].empty()) members_.at(std::string(unknown[i])) = {found[i].front().key, kind};
    }
    std::erase_if(
        unknown, [&](std::string_view uid) { return !members_.at(std::string(uid)).key.isNone(); });
  }
}

void LocalBook::noteAddition(std::string_view uid, const Member& added) {
  if (const auto key = uidKey(uid); !key.empty())
    members_.insert_or_assign(std::string(key), added);
}

void LocalBook::noteRemoval(std::string_view uid) {
  if (const auto key = uidKey(uid); !key.empty())
    members_.insert_or_assign(std::string(key), Member());
}

std::vector<RecordKey> LocalBook::childrenOf(const RecordKey& group) {
  std::vector<RecordKey> children;
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    if (const auto some = containerSource().committedChildren(group, kind)) {
      children.insert(children.end(), some->begin(), some->end());
    }
  }
  return children;
}

}  // namespace ox::sync
