#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "ox/platform/store/committed/record_index.hpp"
#include "ox/platform/store/values/act_ids.hpp"
#include "ox/platform/store/values/save_request.hpp"

namespace ox {

// Records that running whole acts have created and that no save has written yet. Both views of this
// process see them, no other process does. Kept here is what each was created with; what has been
// set since is among the unsaved values, as of any other record. Used under its owner's lock.
class PendingAdditions {
 public:
  bool empty() const { return index_.size() == 0; }
  // Takes the values and the picture of the record; its identifier must not be taken.
  void add(ActId act, NewRecord& record, std::int32_t container);

  // Of a record that is there.
  void drop(const RecordKey& key);

  // Null when there is no such record. Borrowed until the next change.
  const RecordEntry* find(const RecordKey& key) const { return index_.find(key); }
  // Of a record that is there.
  ActId actOf(const RecordKey& key) const;
  std::shared_ptr<const PropertyBag> values(const RecordKey& key) const;
  Data image(const RecordKey& key) const;

  // In the order in which they were created.
  RecordKeys records(RecordKind kind) const { return index_.all(kind); }
  RecordKeys recordsIn(std::int32_t container, RecordKind kind) const;
  RecordKeys recordsOf(const ActIds& acts) const;
  // What the record was created with; its container is for the caller to name.
  NewRecord recordToWrite(const RecordKey& key) const;
  void clear(const ActIds& acts);

 private:
  struct Content {
    std::shared_ptr<const PropertyBag> values;
    std::optional<SpillableData> image;
  };
  struct Staged {
    RecordKey key;  // none when it is gone
    ActId act = kNobodysAct;
  };

  const Content* contentOf(const RecordKey& key) const;
  void dropPlace(std::size_t place);

  // An entry's row is its number here, counted from 1, which says nothing about the file.
  RecordIndex index_;
  std::vector<Staged> staged_;
  std::unordered_map<RecordKey, Content> contents_;  // of those that were created with any
  SpillFile spill_;
};

}  // namespace ox
