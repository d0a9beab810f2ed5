#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/base/record_key.hpp"
#include "ox/base/uuid.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/platform/store/values/journal_row.hpp"
#include "ox/platform/store/values/origin.hpp"
#include "ox/platform/store/values/record_entry.hpp"
#include "ox/platform/store/values/save_request.hpp"
#include "ox/records/differences.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// What must still be as it was read when an act was decided.
struct ActGuards {
  std::unordered_set<std::int64_t> records;     // rows: neither values, picture nor links changed
  std::unordered_set<std::int32_t> containers;  // rows: nothing in them was added or changed
  bool all = false;                             // nothing at all was committed
};

// One commit of a store, as data: decided by whoever read the store, written in one step. What is
// decided holds while its guards hold; if not, the news are read and it is decided again. Rows from
// firstRow on and containers below 0 are those of its own additions, which get their numbers when
// it is written. Borrows the values of additions from whoever decided.
struct Act {
  struct AddedRecord {
    RecordKey key;
    RecordKind kind = RecordKind::Person;
    std::int32_t container = 0;
    const NewRecord* record = nullptr;
    const ReplacedRecord* replacement = nullptr;  // what the same request then makes of it
  };
  // The record gets these properties instead of what it has, from which they differ in those.
  struct ChangedRecord {
    RecordEntry record;
    PropertyBag properties;
    Differences differences;
    std::optional<Data> image;          // missing: it stays
    std::function<Data()> readImage{};  // instead of it, asked when the act is written
    std::uint64_t fingerprint = 0;
    bool hasSameUid = false;  // known to be that of the values which it replaces
  };
  // A removed record comes back as it was, in its row.
  struct RestoredRecord {
    RecordEntry record;
    PropertyBag properties;
    std::function<Data()> readImage{};  // asked when the act is written; none: no picture
    std::uint64_t fingerprint = 0;
  };
  struct ChangedLink {
    RecordEntry group;
    RecordEntry child;
    std::optional<std::int64_t> number = std::nullopt;  // of one that comes back as it was
  };
  struct ChangedContainer {
    std::int32_t row = 0;  // 0: a new one, which gets its row when it is written
    ContainerInfo info;
  };

  // What is kept of accounts in step with others; what it names is resolved to rows.
  struct NotedSync {
    const SyncRows* rows = nullptr;  // null: nothing
    std::map<std::string, std::int32_t, std::less<>> containers;
    // For each card the row of its record; missing: the one that it has.
    std::vector<std::optional<std::int64_t>> records;
  };

  Uuid name = makeUuid();  // the same when it is written again after an unknown outcome
  StoreMoment decidedAt;
  std::int64_t firstRow = 0;
  ActGuards guards;
  // Whose it is, where that is not the process as a whole.
  std::optional<Origin> origin;

  // Written in this order.
  std::vector<ChangedContainer> addedContainers;
  std::vector<RestoredRecord> restored;
  std::vector<AddedRecord> added;
  std::vector<ChangedRecord> changed;
  std::vector<ChangedLink> removedLinks;
  std::vector<ChangedLink> addedLinks;  // one that is there is left alone
  std::vector<RecordEntry> removed;
  std::vector<ChangedContainer> removedContainers;
  std::vector<TagChange> tags;  // for the tag file to follow
  NotedSync sync;
  // It may change what is read-only: it brings what stands there, or the store back to a copy.
  bool bringsFromElsewhere = false;
  // The tag file has followed every act up to this one.
  std::optional<std::int64_t> followedTags;

  std::size_t countOfRecords() const {
    return restored.size() + added.size() + changed.size() + removed.size() + sync.records.size();
  }

  // Whether there is nothing to write. That a command was taken back is told even where others have
  // left nothing of it to take back.
  bool empty() const {
    return !(origin && origin->undoes) && addedContainers.empty() && restored.empty() &&
           added.empty() && changed.empty() && removedLinks.empty() && addedLinks.empty() &&
           removed.empty() && removedContainers.empty() && tags.empty() && sync.rows == nullptr;
  }
};

// What became of an act. What it wrote is for the memory to follow.
struct WrittenAct {
  std::vector<RecordEntry> added;  // rows rise
  std::vector<std::int64_t> removedRows;
  std::vector<RecordKey> changedValues;                       // of removed records too
  std::vector<std::pair<RecordKey, RecordKey>> changedLinks;  // group and child
  bool linksOfRemoved = false;  // links of removed records went with them
  bool containersChanged = false;
  bool restored = false;  // records came back in rows below the last one
  ActRow row;             // of the act
};

}  // namespace ox
