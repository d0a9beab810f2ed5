#include "ox/OxMacAddressBookSDK/_ABGroup/store_path.hpp"

namespace ox {
namespace {

constexpr std::string_view kAddressBookFolder = "/Library/Application Support/AddressBook/";
constexpr std::string_view kFolderName = "AddressBook";

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return path;
}

std::string_view lastComponent(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::string_view withoutLastComponent(std::string_view path) {
  return withoutTrailingSlashes(path.substr(0, path.rfind('/') + 1));
}

}  // namespace

Text accountIdFromDescription(std::string_view description) {
  const auto start = description.find(kAddressBookFolder);
  if (start == std::string_view::npos) return std::nullopt;
  const auto end = description.find('\n', start);
  if (end == std::string_view::npos) return std::nullopt;
  const auto path = withoutTrailingSlashes(description.substr(start, end - start));
  const auto folder = lastComponent(withoutLastComponent(path));
  return folder == kFolderName ? std::nullopt : Text(folder);
}

}  // namespace ox
