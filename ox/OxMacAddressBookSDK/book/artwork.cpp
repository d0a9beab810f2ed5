// The pictures of the service behind a book.
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/ground/service_types.hpp"
#include "ox/images/image_file.hpp"
#include "ox/platform/system/NSBundle.hpp"

namespace ox {

ImagePtr OxMacAddressBook::artwork(std::string_view ending) const {
  std::string name = "pic_";
  name.append(services::artworkStem(_serverType)).append("_").append(ending);
  return loadImageWithName_type(name, "png");
}

ImagePtr OxMacAddressBook::thumbnail() const {
  return artwork("thumbnail");
}

ImagePtr OxMacAddressBook::logo1() const {
  return artwork("logo1");
}

ImagePtr OxMacAddressBook::logo2() const {
  return artwork("logo2");
}

ImagePtr OxMacAddressBook::logo3() const {
  return artwork("logo3");
}

ImagePtr OxMacAddressBook::logo4() const {
  return artwork("logo4");
}

ImagePtr OxMacAddressBook::loadImageWithName_type(TextView name, TextView type) const {
  const Text path =
      NSBundle::bundleForClass("OxMacAddressBook")->pathForResource_ofType(name, type);
  return path ? images::imageWithContentsOfFile(*path) : nullptr;
}

}  // namespace ox
