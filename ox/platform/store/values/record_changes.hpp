#pragma once

#include <optional>
#include <vector>

#include "ox/platform/store/values/save_request.hpp"
#include "ox/platform/store/values/spill_file.hpp"
#include "ox/platform/store/values/unsaved_changes.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// The latest value of a property that the record view has changed; missing: removed.
struct ValueEdit {
  PropertyId property = 0;
  PropertyValue value;
  PropertyValue base;  // what was committed when the property was first changed
};

// What the record view wants written of one record: its changed properties and the picture.
struct RecordEdit {
  RecordKey key;
  RecordKind kind = RecordKind::Person;
  std::vector<ValueEdit> values;
  std::optional<SpillableData> image;
};

// What one save of the record view writes, in the order in which it was done. The additions come
// first: edits and links may mean them.
struct RecordChanges {
  std::vector<NewRecord> additions;
  std::vector<RecordEdit> edits;
  std::vector<RecordKey> removals;
  std::vector<Link> removedLinks;
  std::vector<Link> addedLinks;
  std::vector<TagChange> tags = {};  // for the journal, and for the tag file to follow

  bool empty() const {
    return additions.empty() && edits.empty() && removals.empty() && removedLinks.empty() &&
           addedLinks.empty() && tags.empty();
  }
};

}  // namespace ox
