#include "ox/platform/system/NSBundle.hpp"

#include <cstdlib>
#include <dlfcn.h>
#include <link.h>
#include <string>
#include <system_error>
#include <utility>

namespace ox {
namespace {

namespace fs = std::filesystem;

constexpr const char* kResources = "resources";
constexpr const char* kSharedResources = "share/OxMacAddressBookSDK/resources";
constexpr int kLevelsAbove = 3;

// The file that this code was loaded from; empty when the system does not tell.
fs::path ownFile() {
  static const char anchor = 0;
  Dl_info info{};
  void* extra = nullptr;
  const bool found = dladdr1(&anchor, &info, &extra, RTLD_DL_LINKMAP) != 0 && extra != nullptr;
  const char* name = found ? static_cast<const link_map*>(extra)->l_name : "";
  std::error_code error;
  // The program itself has no name there.
  return fs::canonical(*name != '\0' ? name : "/proc/self/exe", error);
}

std::vector<fs::path> resourceFolders() {
  std::vector<fs::path> folders;
  fs::path folder = ownFile().parent_path();
  for (int level = 0; level <= kLevelsAbove && !folder.empty(); ++level) {
    folders.push_back(folder / kResources);
    folders.push_back(folder / kSharedResources);
    if (folder == folder.parent_path()) break;
    folder = folder.parent_path();
  }
  folders.push_back(fs::path(OX_INSTALL_PREFIX) / kSharedResources);
  return folders;
}

bool isFileName(std::string_view name) {
  return !name.empty() && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

bool isFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

}  // namespace

std::shared_ptr<NSBundle> NSBundle::bundleForClass(std::string_view) {
  static const auto& bundle = *new std::shared_ptr<NSBundle>(new NSBundle(resourceFolders()));
  return bundle;
}

Text NSBundle::pathForResource_ofType(TextView name, TextView type) const {
  if (!name || name->empty()) return std::nullopt;
  std::string file(*name);
  if (type && !type->empty()) file.append(".").append(*type);
  if (!isFileName(file)) return std::nullopt;
  for (const auto& folder : folders_) {
    if (isFile(folder / file)) return (folder / file).string();
  }
  const char* configured = std::getenv("OX_RESOURCES");
  if (configured == nullptr || *configured == '\0') return std::nullopt;
  const auto path = fs::path(configured) / file;
  return isFile(path) ? Text(path.string()) : std::nullopt;
}

}  // namespace ox
