// The picture of a person: stored bytes, decoded for the model.
#include <new>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/stored_picture.hpp"
#include "ox/base/failures.hpp"
#include "ox/images/image_codec.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {

ImagePtr storedPicture(const _ABPerson& person) {
  try {
    const Data data = person.imageData();
    return data ? images::pictureOfFile(data) : nullptr;
  } catch (const ImageReadError&) {
    return nullptr;
  } catch (const std::bad_alloc&) {
    noticeNoMemoryForPicture(person);
    return nullptr;
  }
}

void noticeNoMemoryForPicture(const _ABPerson& person) {
  const auto name = person.displayName().value_or("");
  const auto identifier = person.ID().value_or("");
  failures::notice(
      FailureKind::NoMemory,
      "there is no memory for the picture of " + (name.empty() ? "" : name + ", ") + identifier,
      identifier);
}

bool hasUnreadablePicture(const _ABPerson& person) {
  try {
    return person.imageData() && !storedPicture(person);
  } catch (const ImageReadError&) {
    return true;
  }
}

namespace {

Data tiffOf(const Image& image) {
  const auto file = image.file();
  return file && images::isTiff(*file) ? file : images::encodeTiff(image);
}

}  // namespace

std::shared_ptr<OxMutableSingleValue> _ABPerson::thumbnailValue() const {
  return singleValueByMacValue_property(storedPicture(*this),
                                        OxProperty::propertyWithName(OxProPertyThumbnail));
}

void _ABPerson::setThumbnailValue(const std::shared_ptr<OxMutableSingleValue>& value) {
  const ImagePtr image = value ? value->value().image() : nullptr;
  const Data data = image ? tiffOf(*image) : nullptr;
  if (!data && value && !value->value().isMissing()) {
    return failures::noticeRefusal("a thumbnail must be a picture", key().text());
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
