#include "ox/OxMacAddressBookSDK/admin/store_copies.hpp"

#include <filesystem>
#include <system_error>

#include "ox/base/store_location.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

std::uint64_t sizeOf(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  return error ? 0 : size;
}

// "20261231T235959.999Z-..." as "2026-12-31T23:59:59Z".
std::string timeOf(const std::string& name) {
  return name.substr(0, 4) + "-" + name.substr(4, 2) + "-" + name.substr(6, 5) + ":" +
         name.substr(11, 2) + ":" + name.substr(13, 2) + "Z";
}

std::optional<RecordCounts> countsIn(const std::string& path) {
  try {
    return countsOfStore(path);
  } catch (const StoreError&) {
    return std::nullopt;
  }
}

}  // namespace

std::vector<StoredCopy> storeCopies() {
  std::vector<StoredCopy> copies;
  for (const auto& path : pathsOfCopies(contactStorePath())) {
    const auto name = std::filesystem::path(path).stem().string();
    copies.push_back({name, path, timeOf(name), name.substr(name.find('-') + 1), countsIn(path),
                      sizeOf(path) + sizeOf(path + ".tags")});
  }
  return copies;
}

std::string pathOfNextStoreCopy(const std::string& reason) {
  return pathOfNextCopy(contactStorePath(), reason);
}

void sweepStoreCopies(const std::string& made) {
  sweepCopies(contactStorePath(), made);
}

}  // namespace ox
