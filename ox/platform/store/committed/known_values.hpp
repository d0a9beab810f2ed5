#pragma once

#include <memory>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/platform/store/committed/generation_cache.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// What this process knew of records that others have changed since, property by property, until it
// has read the property again: whoever changes a value now set out from that, and not from what is
// committed. Bounded; of a record that is forgotten here, what is committed is taken for known.
// Used under its owner's lock.
class KnownValues {
 public:
  // Others have changed a record that this process had read as that.
  void keep(const RecordKey& key, const PropertyBag& values);
  // This process has read the property as it is now.
  void noteRead(const RecordKey& key, PropertyId property);
  // This process has written the property, and it became something else in the merge.
  void keepWritten(const RecordKey& key, PropertyId property, const PropertyValue& mine);

  // Null when what is committed is known. A missing value: it had none.
  const PropertyValue* find(const RecordKey& key, PropertyId property);
  bool empty() const { return empty_; }
  void clear();

 private:
  struct Known {
    PropertyBag values;
    bool all = false;                   // every property, else those that were written
    std::vector<PropertyId> written;    // unless all
    std::vector<PropertyId> readSince;  // what is committed is known of these
  };

  Known& of(const RecordKey& key);

  static constexpr std::size_t kHalfRecords = 4096;

  bool empty_ = true;
  GenerationCache<RecordKey, std::shared_ptr<Known>> records_{kHalfRecords};
  PropertyValue missing_;
};

}  // namespace ox
