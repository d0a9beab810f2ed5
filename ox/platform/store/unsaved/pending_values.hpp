#pragma once

#include <list>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "ox/platform/store/values/act_ids.hpp"
#include "ox/platform/store/values/record_changes.hpp"

namespace ox {

// Unsaved values, pictures and removals of the record view: what the owner has found to differ from
// the committed rows, in memory and never as an open transaction, so that no other process ever
// waits for this one's edits. Each change belongs to an act. Where several acts change one
// property, the latest change is what is seen, and the others are kept: each act's own is written
// with that act, and taken back with it. A removed record takes no further change; the changes from
// before stay readable until the save, which leaves them out. Used under its owner's lock.
class PendingValues {
 public:
  // Null when the property has no unsaved value; a missing value in it means "removed".
  const PropertyValue* value(const RecordKey& key, PropertyId property) const;
  // The records that have any, and the properties of one that have; both without an order.
  std::vector<RecordKey> changedRecords() const;
  std::vector<PropertyId> changedProperties(const RecordKey& key) const;
  bool isChanged(const RecordKey& key) const { return find(key) != nullptr; }
  // Whether another act than that one has changed the property.
  bool isChangedByOthers(ActId act, const RecordKey& key, PropertyId property) const;
  // `base`: what is committed now; of an act's first change of the property it is kept.
  void setValue(ActId act, const RecordKey& key, RecordKind kind, PropertyId property,
                PropertyValue value, PropertyValue base);
  void dropValue(ActId act, const RecordKey& key, PropertyId property);

  // Missing when the picture has no unsaved change; a null picture in it means "removed".
  std::optional<Data> image(const RecordKey& key) const;
  bool isImageChangedByOthers(ActId act, const RecordKey& key) const;
  void setImage(ActId act, const RecordKey& key, RecordKind kind, Data image);
  void dropImage(ActId act, const RecordKey& key);

  void remove(ActId act, const RecordKey& key);
  bool isRemoved(const RecordKey& key) const { return removed_.contains(key); }
  bool isRemovedBy(const ActIds& acts, const RecordKey& key) const;
  bool hasRemovals() const { return !removals_.empty(); }
  // From now on the removal is that act's.
  void handOverRemoval(const RecordKey& key, ActId act) { removed_.at(key) = act; }
  // Whoever has removed them.
  void forgetRemovals(const std::vector<RecordKey>& keys);

  bool empty() const { return edits_.empty() && removals_.empty(); }
  // In the order in which the records were first changed; without those that these acts removed.
  std::vector<RecordEdit> edits(const ActIds& acts) const;
  std::vector<RecordKey> removals(const ActIds& acts) const;
  // True when removed records are back, or gone for good.
  bool clear(const ActIds& acts) noexcept;

 private:
  // The base is seldom there: most values are those of records that were made just now.
  struct ValueChange {
    PropertyId property = 0;
    ActId act = kNobodysAct;
    PropertyValue value;
    std::unique_ptr<const PropertyValue> base;  // null: nothing
  };
  struct ImageChange {
    ActId act = kNobodysAct;
    SpillableData data;
  };
  // One change an act and property, the latest at the end.
  struct Changed {
    RecordKey key;
    RecordKind kind = RecordKind::Person;
    std::vector<ValueChange> values;
    std::vector<ImageChange> images;
  };
  using Edits = std::list<Changed>;

  Changed& changed(const RecordKey& key, RecordKind kind);
  const Changed* find(const RecordKey& key) const;
  void dropIfEmpty(const RecordKey& key);
  static bool isChangedBy(const Changed& changed, const ActIds& acts);
  static RecordEdit editOf(const Changed& changed, const ActIds& acts);

  Edits edits_;
  std::unordered_map<RecordKey, Edits::iterator> places_;
  std::vector<RecordKey> removals_;
  std::unordered_map<RecordKey, ActId> removed_;
  SpillFile spill_;
};

}  // namespace ox
