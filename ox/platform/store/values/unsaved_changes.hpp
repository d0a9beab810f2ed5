#pragma once

#include <vector>

#include "ox/base/failure.hpp"
#include "ox/base/record_key.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// A person or group that stands directly in a group.
struct Link {
  RecordKey group;
  RecordKey child;
};

// What the record view holds that no save has written yet; of a record that a running act has
// created the record alone.
struct UnsavedChanges {
  struct Value {
    RecordKey key;
    PropertyId property;  // 0: the image
  };
  std::vector<RecordKey> additions;
  std::vector<Value> values;
  std::vector<RecordKey> removals;
  std::vector<Link> addedLinks;
  std::vector<Link> removedLinks;

  bool empty() const {
    return additions.empty() && values.empty() && removals.empty() && addedLinks.empty() &&
           removedLinks.empty();
  }
};

// What a save of the record view did.
struct SaveReport {
  bool done = false;
  Failure failure;               // why not, when not done
  std::vector<Failure> dropped;  // edits that were refused, lost to a removal elsewhere say
  // What others had made of the same entries and values since this process read them: this save
  // has won over it.
  std::vector<Failure> overtaken = {};
};

}  // namespace ox
