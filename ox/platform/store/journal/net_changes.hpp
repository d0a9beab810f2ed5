#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// What one record was before a run of changes, as far as they tell, and what it was after them.
struct NetRecord {
  struct Value {
    PropertyValue before;  // missing: it was not there
    PropertyValue after;
  };
  std::int32_t container = 0;
  bool wasThere = true;
  bool isThere = true;
  // What is not among the values was missing before.
  bool allKnown = false;
  std::map<PropertyId, Value> values;
  bool pictureChanged = false;
  std::optional<std::int64_t> imageBefore;  // the row of the journal's picture; missing: none
  std::uint64_t pictureAfter = 0;           // its checksum; 0: none
  // Of a record that was removed.
  RecordKey key;
  RecordKind kind = RecordKind::Person;
};

struct NetLink {
  std::int32_t container = 0;
  std::optional<std::int64_t> before;  // its number; missing: it was not there
  std::optional<std::int64_t> after;
};

struct NetContainer {
  ContainerInfo info;
  bool wasThere = true;
  bool isThere = true;
};

// What a run of changes comes to, whatever happened in between: of everything that it touches, how
// it was before the first of them and how it was after the last. Changes are taken in the order in
// which they were made. Used by one thread at a time.
class NetChanges {
 public:
  using Pair = std::pair<std::int64_t, std::int64_t>;  // rows of group and child

  // Records that came with one act: those of these rows.
  void takeAdditions(std::int64_t first, std::int64_t end);
  // Throws DamagedBytes.
  void take(const JournalRow& change);

  bool isAdded(std::int64_t row) const;
  // Records that were added and not touched again are not among them.
  const std::map<std::int64_t, NetRecord>& records() const { return records_; }
  const std::map<std::int64_t, std::int64_t>& additions() const { return additions_; }  // ranges
  const std::map<Pair, NetLink>& links() const { return links_; }
  const std::map<std::int32_t, NetContainer>& containers() const { return containers_; }
  const std::map<std::pair<std::string, std::string>, TagChange>& tags() const { return tags_; }
  // Rows of persons whose tags differ now.
  bool changedTagsOf(std::int64_t row) const;

 private:
  NetRecord& recordOf(const JournalRow& change);
  void takeValues(const JournalRow& change);
  void takeRemoval(const JournalRow& change);
  void takeLinks(const JournalRow& change);
  void takeContainer(const JournalRow& change);
  void takeTags(const JournalRow& change);

  std::map<std::int64_t, std::int64_t> additions_;
  std::map<std::int64_t, NetRecord> records_;
  std::map<Pair, NetLink> links_;
  std::map<std::int32_t, NetContainer> containers_;
  std::map<std::pair<std::string, std::string>, TagChange> tags_;  // by manager and person
  std::unordered_map<std::int64_t, std::pair<std::string, std::string>> tagsOfRow_;
};

}  // namespace ox
