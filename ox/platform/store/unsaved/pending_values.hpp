#pragma once

#include <list>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/values/record_changes.hpp"

namespace ox {

// Unsaved values, pictures and removals of the record view: the overlay over the committed rows. It
// holds what the owner has found to differ from them, in memory and never as an open transaction,
// so that no other process ever waits for this one's edits. A removed record takes no further
// change; the changes from before stay readable until the save, which leaves them out. Used under
// its owner's lock.
class PendingValues {
 public:
  // Null when the property has no unsaved value; a missing value in it means "removed".
  const PropertyValue* value(const RecordKey& key, PropertyId property) const;
  void setValue(const RecordKey& key, RecordKind kind, PropertyId property, PropertyValue value);
  void dropValue(const RecordKey& key, PropertyId property);

  // Missing when the picture has no unsaved change; a null picture in it means "removed".
  std::optional<Data> image(const RecordKey& key) const;
  void setImage(const RecordKey& key, RecordKind kind, Data image);
  void dropImage(const RecordKey& key);

  void remove(const RecordKey& key);
  bool isRemoved(const RecordKey& key) const { return removed_.contains(key); }
  bool hasRemovals() const { return !removals_.empty(); }

  bool empty() const { return edits_.empty() && removals_.empty(); }
  // In the order in which the records were first changed; without those that were removed since.
  std::vector<RecordEdit> edits() const;
  const std::vector<RecordKey>& removals() const { return removals_; }
  void clear();

 private:
  using Edits = std::list<RecordEdit>;

  RecordEdit& edit(const RecordKey& key, RecordKind kind);
  const RecordEdit* find(const RecordKey& key) const;
  void dropIfEmpty(const RecordKey& key);

  Edits edits_;
  std::unordered_map<RecordKey, Edits::iterator> places_;
  std::vector<RecordKey> removals_;
  std::unordered_set<RecordKey> removed_;
  SpillFile spill_;
};

}  // namespace ox
