#include "ox/platform/store/values/save_request.hpp"

#include "ox/records/fingerprint.hpp"

namespace ox {

Data pictureOf(const NewRecord& record) {
  if (record.readImage) return record.readImage();
  return record.spilledImage ? record.spilledImage->get() : record.image;
}

std::uint64_t fingerprintOf(const NewRecord& record, const Data& picture) {
  return record.fingerprint ? *record.fingerprint : contentFingerprint(record.properties, picture);
}

}  // namespace ox
