#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/platform/store/committed/generation_cache.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// What a record holds, but for the bytes of its picture.
struct KnownContent {
  std::shared_ptr<const PropertyBag> values;  // null when nothing is known
  std::uint64_t pictureChecksum = 0;          // 0: no picture
};

// What this process knew of lists that others have changed since, property by property, until it
// has read the property again: whoever changes a list now set out from that, and not from what is
// committed. Of a value that is one object nothing is known: there the later change counts,
// whatever its author knew. Bounded; of a record that is forgotten here, what is committed is taken
// for known. Used under its owner's lock.
class KnownValues {
 public:
  // Others have changed a record that this process had read as that.
  void keep(const RecordKey& key, const PropertyBag& values);
  // Others may have changed any record of those.
  void keepAll(GenerationCache<RecordKey, KnownContent> records);
  // This process has read the property as it is now.
  void noteRead(const RecordKey& key, PropertyId property);
  // This process has written the property, and it became something else in the merge.
  void keepWritten(const RecordKey& key, PropertyId property, const PropertyValue& mine);

  // Null when what is committed is known, or the property is no list. A missing value: it had none.
  const PropertyValue* find(const RecordKey& key, PropertyId property);
  bool empty() const { return empty_; }
  void clear();

 private:
  struct Known {
    PropertyBag lists;
    bool all = false;                   // every list, else those that were written
    std::vector<PropertyId> written;    // unless all
    std::vector<PropertyId> readSince;  // what is committed is known of these
  };

  // Null when nothing but what is committed is known.
  Known* findRecord(const RecordKey& key);
  Known& knownOrNew(const RecordKey& key);

  static constexpr std::size_t kHalfRecords = 4096;

  bool empty_ = true;
  GenerationCache<RecordKey, std::shared_ptr<Known>> records_{kHalfRecords};
  // Records that nobody has asked for since.
  std::optional<GenerationCache<RecordKey, KnownContent>> earlier_;
};

}  // namespace ox
