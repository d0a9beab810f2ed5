#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/run/look/category_groups.hpp"

namespace ox::sync {

// What a record says now, with what tells whether it says something else later.
struct LocalContent {
  CardContent content;
  std::uint64_t fingerprint = 0;  // contentFingerprint of values and picture
  std::uint64_t picture = 0;      // its checksum; 0 without one
  std::uint64_t beside = 0;       // of tags or members, see besideOf
  // Of a group: the members that the store holds, whatever else is said of members.
  std::vector<std::string> linked;
};

// A number for what a card says beside values and picture, in whatever order; 0 for none.
std::uint64_t besideOfTags(const std::vector<std::string>& tags);
std::uint64_t besideOfMembers(std::vector<std::string> members);
// How the row of a book keeps that its categories are groups (SyncBook::groupSpelling).
inline constexpr const char* kCategoriesAsGroups = "categories";
// One number for both, as it is noted of what was refused.
std::uint64_t sumOf(std::uint64_t fingerprint, std::uint64_t beside);

// The container of a run, as committed. One thread at a time; throws StoreError.
class LocalBook {
 public:
  // What the CATEGORIES of its persons are here.
  enum class Categories : std::uint8_t { Tags, Groups };

  explicit LocalBook(std::string container, Categories categories = Categories::Tags);
  // With what the store keeps of its book.
  static LocalBook of(const SyncBook& book);

  const std::string& container() const { return container_; }
  // Missing when there is no such record. Of a group: members that the store has no record for are
  // not among what the store holds, so whoever knows them adds them.
  std::optional<LocalContent> contentOf(const RecordKey& key, RecordKind kind);
  // As contentOf(...)->beside, without reading values.
  std::uint64_t besideOfGroup(const RecordKey& group);
  // Likewise, by key as text: of every person who has categories.
  std::unordered_map<std::string, std::uint64_t> besideOfTagged();
  // Null where categories are tags.
  const CategoryGroups* categoryGroups();
  std::vector<std::string> tagsOf(const RecordKey& person);
  // As its card says it, and as members name it.
  std::string uidAsWritten(const RecordKey& record);
  std::string uidOf(const RecordKey& record);
  struct Member {
    RecordKey key;
    RecordKind kind = RecordKind::Person;
  };
  // The record of the container with that UID, as a run is going to leave it; no key when there is
  // none. Remembered.
  Member memberOfUid(std::string_view uid);
  // Asks the store for all of them at once.
  void meetMembers(const std::vector<std::string>& uids);
  // A record that the run adds, or takes away.
  void noteAddition(std::string_view uid, const Member& added);
  void noteRemoval(std::string_view uid);
  // Persons, then groups, in the order of adding.
  std::vector<RecordKey> childrenOf(const RecordKey& group);

 private:
  std::string container_;
  std::string tagManager_;
  Categories categories_;
  std::optional<CategoryGroups> groups_;             // missing: not asked yet
  std::unordered_map<std::string, Member> members_;  // by uidKey
  std::unordered_map<RecordKey, std::string> uids_;
};

}  // namespace ox::sync
