#include "ox/platform/store/values/save_request.hpp"

#include "ox/records/fingerprint.hpp"

namespace ox {

Data pictureOf(const NewRecord& record) {
  if (record.readImage) return record.readImage();
  return record.spilledImage ? record.spilledImage->get() : record.image;
}

Data pictureOf(const ReplacedRecord& record) {
  return record.spilledImage ? record.spilledImage->get() : record.image;
}

TextView cardUidOf(const NewRecord& record) {
  if (record.encoded) return record.encoded->cardUid;
  const auto* uid = record.properties.text(property_id::kCardUid);
  return uid != nullptr ? TextView(*uid) : TextView();
}

std::uint64_t fingerprintOf(const NewRecord& record, const Data& picture) {
  return record.fingerprint ? *record.fingerprint : contentFingerprint(record.properties, picture);
}

}  // namespace ox
