#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/committed/group_tree.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/act.hpp"
#include "ox/platform/store/values/record_changes.hpp"
#include "ox/platform/store/values/save_request.hpp"

namespace ox {

// Decides an act step by step, from what is committed and from its own steps so far, and notes what
// each step was decided upon. Writes nothing. Borrows the file, the records, and until the act is
// written the values that it is given. Throws RefusedRequest where a step cannot be done,
// StoreError where the file fails.
class ActBuilder {
 public:
  using Entry = RecordEntry;

  // Identifiers that are another record's, as an earlier try has found.
  using Taken = std::unordered_set<RecordKey>;

  ActBuilder(StoreFile& file, CommittedRecords& committed, const Taken& taken);
  ActBuilder(const ActBuilder&) = delete;
  ActBuilder& operator=(const ActBuilder&) = delete;

  void addContainer(const ContainerInfo& container);
  void removeContainer(const ContainerRemoval& removal);
  // The result is the identifier under which it is added: a new one when its own is taken.
  RecordKey addRecord(const NewRecord& record);
  void replaceRecord(const ReplacedRecord& record);
  // Merges the edit into what is committed, entry by entry. Empty when that is done, else why it
  // was dropped.
  std::string applyEdit(const RecordEdit& edit);
  // What others had saved that the edits so far have won over.
  const std::vector<Failure>& wonOver() const { return wonOver_; }
  // What the edits became that met changes of others.
  struct MergedValue {
    RecordKey record;
    PropertyId property = 0;
    PropertyValue mine;
    PropertyValue merged;
  };
  const std::vector<MergedValue>& merged() const { return merged_; }
  void removeRecord(const Entry& entry);
  // Those of these records that are gone or have another fingerprint by now; the act holds only if
  // the others stay as they are.
  struct Expected {
    RecordKey key;
    std::uint64_t fingerprint = 0;
  };
  std::vector<RecordKey> outdatedOf(std::span<const Expected> expected);
  // Empty when the link stands then, else why it cannot.
  std::string addLink(const Link& link);
  void removeLink(const Link& link);
  // Tags are merged by the tag file as it follows.
  void changeTags(std::vector<TagChange> changes) { act_.tags = std::move(changes); }
  // Borrowed. The result are the records that new cards name and that are not there.
  std::vector<RecordKey> noteSync(const SyncRows& rows);
  // The act holds only if nothing in the container was added or changed meanwhile.
  void guardContainer(std::string_view identifier);

  // Records that this act adds count too.
  std::optional<Entry> find(const RecordKey& key) const;
  // The row that a container has, or will have; 0 when there is none.
  std::int32_t containerRow(std::string_view identifier);
  // The act so far, for whoever decides rows as they were once.
  Act& act() { return act_; }
  // Hands the act out; nothing more can be decided.
  Act take() { return std::move(act_); }

 private:
  // Why they cannot be written; empty when they can.
  std::string refusalOf(std::span<const PropertyId> custom);
  bool isAdded(const Entry& entry) const { return entry.row >= act_.firstRow; }
  Act::ChangedRecord& changeOf(const Entry& entry);
  bool holdsPicture(const Entry& entry, const Data& image);
  void setContent(const Entry& entry, const KnownContent& before, PropertyBag properties,
                  std::optional<Data> image);
  std::optional<Entry> meant(const RecordKey& key) const;
  std::uint64_t pictureChecksum(std::int64_t row);

  StoreFile& file_;
  CommittedRecords& committed_;
  const Taken& taken_;
  Act act_;
  std::vector<Failure> wonOver_;
  std::vector<MergedValue> merged_;
  std::unordered_map<RecordKey, Entry> addedByKey_;
  std::unordered_map<RecordKey, RecordKey> renamed_;  // copies, from the identifier of their source
  std::unordered_map<std::int64_t, std::size_t> changedByRow_;
  std::unordered_set<std::int64_t> removedRows_;
  GroupTree tree_;
};

}  // namespace ox
