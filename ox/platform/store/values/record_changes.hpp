#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "ox/platform/store/values/spill_file.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// What the record view wants written of one record: the latest value of each changed property
// (missing: removed) and the picture.
struct RecordEdit {
  RecordKey key;
  RecordKind kind = RecordKind::Person;
  std::vector<std::pair<PropertyId, PropertyValue>> values;
  std::optional<SpillableData> image;
};

// What one save of the record view writes, in the order in which it was done.
struct RecordChanges {
  std::vector<RecordEdit> edits;
  std::vector<RecordKey> removals;
  std::vector<Link> removedLinks;
  std::vector<Link> addedLinks;
};

}  // namespace ox
