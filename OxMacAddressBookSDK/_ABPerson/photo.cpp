#include "OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "base/failures.hpp"
#include "platform/images/image_codec.hpp"
#include "platform/store/changes.hpp"

namespace ox {
namespace {

Data readableImageData(const ABPerson& person) {
  try {
    return person.imageData();
  } catch (const ImageReadError&) {
    return nullptr;
  }
}

}  // namespace

std::shared_ptr<OxMutableSingleValue> _ABPerson::thumbnailValue() const {
  const Data data = readableImageData(*this);
  const ImagePtr image = data ? images::decodeImage(*data) : nullptr;
  return singleValueByMacValue_property(image, OxProperty::propertyWithName(OxProPertyThumbnail));
}

void _ABPerson::setThumbnailValue(const std::shared_ptr<OxMutableSingleValue>& value) {
  const ImagePtr image = value ? value->value().image() : nullptr;
  const Data data = image ? images::encodeTiff(*image) : nullptr;
  if (!data && value && !value->value().isMissing()) {
    return failures::countRefusal("a thumbnail must be a picture");
  }
  setImageData(data);
}

ImagePtr _ABPerson::thumbnail() const {
  const auto value =
      std::dynamic_pointer_cast<OxMutableSingleValue>(valueByPropertyName(OxProPertyThumbnail));
  return value ? value->value().image() : nullptr;
}

void _ABPerson::setThumbnail(const ImagePtr& image) {
  const auto property = OxProperty::propertyWithName(OxProPertyThumbnail);
  setValue_byProperty(singleValueByMacValue_property(image, property), property);
}

}  // namespace ox
