#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/base/record_key.hpp"
#include "ox/records/property_bag.hpp"

// What is asked of a store about many records at once, and what it answers.

namespace ox {

// What a record is recognised by: the UID of the card that it came from or, without one, what it
// holds.
struct SoughtRecord {
  std::string_view cardUid = {};  // borrowed
  std::uint64_t fingerprint = 0;  // contentFingerprint; counts without a UID. 0: none
};

struct FoundRecord {
  RecordKey key;
  std::uint64_t fingerprint = 0;  // of what it holds now
};
using FoundRecords = std::vector<FoundRecord>;

struct RecordContent {
  std::shared_ptr<const PropertyBag> values;  // null when there is no such record
  Data picture;
};

// Values and picture as they lie in the store, neither decoded nor found whole yet: any thread may
// do that.
struct EncodedContent {
  Data values;  // null when there is no such record
  Data picture;
  std::uint64_t pictureChecksum = 0;
};

// Null where values or picture are damaged, or there are none.
std::shared_ptr<const PropertyBag> decodedValues(const EncodedContent& content);

}  // namespace ox
