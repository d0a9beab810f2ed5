#include "ox/platform/store/values/many_records.hpp"

#include "ox/base/checksum.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {

std::shared_ptr<const PropertyBag> decodedValues(const EncodedContent& content) {
  if (!content.values) return nullptr;
  if (content.picture && checksum64(*content.picture) != content.pictureChecksum) return nullptr;
  try {
    return std::make_shared<const PropertyBag>(decodeProperties(*content.values));
  } catch (const DamagedProperties&) {
    return nullptr;
  }
}

}  // namespace ox
