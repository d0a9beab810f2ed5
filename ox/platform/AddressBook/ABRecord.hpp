#pragma once

#include <memory>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/records/property_keys.hpp"

namespace ox {

class ABGroup;

// A record of the record database: a slim handle, its values are read from the store on demand. One
// live object stands for one stored record, so records compare by pointer; equality is by id. Made
// by the address book only, held in shared pointers, safe from any thread.
class OX_EXPORT ABRecord : public std::enable_shared_from_this<ABRecord> {
 public:
  ABRecord(const ABRecord&) = delete;
  ABRecord& operator=(const ABRecord&) = delete;
  virtual ~ABRecord();

  virtual RecordKind kind() const = 0;
  const RecordKey& key() const { return key_; }

  // Never missing, also after the record was removed.
  Text uniqueId() const;
  // A missing object when the record does not hold it or there is no such property.
  PropertyValue valueForProperty(TextView property) const;
  // The same for whoever reads it only to write it anew: without what others have changed since
  // valueForProperty was last asked, which is no change of theirs.
  PropertyValue valueToChange(TextView property) const;
  // A missing value removes the property. False when refused: no such property, a value of another
  // type, a removed record. In memory until the address book's save.
  bool setValue_forProperty(PropertyValue value, TextView property);
  bool removeValueForProperty(TextView property);
  // Class and id, then a line that ends in the path of the store file holding the record.
  Text description() const;
  // The groups that hold this record directly, in the order of adding.
  std::vector<std::shared_ptr<ABGroup>> parentGroups() const;

 protected:
  explicit ABRecord(const RecordKey& key) : key_(key) {}

 private:
  RecordKey key_;
};

}  // namespace ox
