// The vCard of a person with the picture in a line of its own.
#include <new>
#include <string_view>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/stored_picture.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/vcard_photo.hpp"
#include "ox/base/base64.hpp"
#include "ox/base/text/utf8.hpp"
#include "ox/images/image_codec.hpp"

namespace ox {
namespace {

constexpr std::string_view kPhotoLine = "PHOTO;BASE64;ENCODING=b;TYPE=JPEG:";
constexpr std::string_view kEnd = "END:VCARD";

Data jpegOf(const _ABPerson& person) {
  const ImagePtr image = storedPicture(person);
  if (!image) return nullptr;
  try {
    return images::encodeJpeg(*image);
  } catch (const std::bad_alloc&) {
    noticeNoMemoryForPicture(person);
    return nullptr;
  }
}

}  // namespace

std::optional<std::string> cardWithPhoto(std::string_view card, std::string_view photoLine) {
  if (!isValidUtf8(card) || card.find(kEnd) == std::string_view::npos) return std::nullopt;
  std::string result;
  result.reserve(card.size() + photoLine.size() + kEnd.size() + 1);
  // The line takes the place of every end line, whatever line end follows that, and the new end
  // comes after a bare line feed. Required.
  std::size_t from = 0;
  for (auto end = card.find(kEnd); end != std::string_view::npos; end = card.find(kEnd, from)) {
    result.append(card.substr(from, end - from)).append(photoLine);
    from = end + kEnd.size();
  }
  return result.append(card.substr(from)).append("\n").append(kEnd);
}

Text _ABPerson::vcardImageDataString() const {
  const Data jpeg = jpegOf(*this);
  if (!jpeg) return std::nullopt;
  return std::string(kPhotoLine) + base64(*jpeg);
}

Data _ABPerson::newCreateVcard() const {
  Data card = vCardRepresentation();
  const Text photoLine = card ? vcardImageDataString() : std::nullopt;
  if (!photoLine) return card;
  auto withPhoto = cardWithPhoto(*card, *photoLine);
  return withPhoto ? makeData(std::move(*withPhoto)) : card;
}

}  // namespace ox
