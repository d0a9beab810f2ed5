#include "ox/OxMacAddressBookSDK/admin/store_recovery.hpp"

#include <filesystem>

#include "ox/OxAddressBookSDK/tags/tag_salvage.hpp"
#include "ox/base/replacement_file.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/store/salvage/store_salvage.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

std::string tagsOf(const std::string& store) {
  return isStoreFile(store) ? tagStorePath() : StoreAddress(store).tagFile();
}

const std::string& notOfTheStore(const std::string& path) {
  if (!isStoreFile(path)) return path;
  throw StoreError(StoreError::Kind::Unavailable, path + ": is a file of the store itself", path);
}

}  // namespace

struct StoreRecovery::Parts {
  Parts(const std::string& from, const std::string& to)
      : tagsFrom(tagsOf(from)), tagsTo(StoreAddress(notOfTheStore(to)).tagFile()), store(from, to) {
    refuseExisting(tagsTo);
  }

  std::string tagsFrom;
  std::string tagsTo;
  StoreSalvage store;
  std::unique_ptr<ReplacementFile> tags;
};

StoreRecovery::StoreRecovery(const std::string& from, const std::string& to)
    : parts_(std::make_unique<Parts>(from, to)) {
  if (std::filesystem::exists(parts_->tagsFrom)) {
    parts_->tags = std::make_unique<ReplacementFile>(parts_->tagsTo);
  }
}

StoreRecovery::~StoreRecovery() = default;

std::vector<std::string> StoreRecovery::files() const {
  auto files = parts_->store.files();
  if (parts_->tags) {
    for (const auto* ending : {"", "-wal", "-shm"}) files.push_back(parts_->tags->path() + ending);
  }
  return files;
}

// Tags of which nothing can be read are one loss more.
SalvageReport StoreRecovery::take() {
  auto report = parts_->store.take();
  if (!parts_->tags) return report;
  try {
    auto found = salvageTags(parts_->tagsFrom, parts_->tags->path());
    report.tags = found.tags;
    for (const auto& damage : found.damages) report.damages.push_back("tags: " + damage);
  } catch (const FailureError& error) {
    report.losses.push_back(std::string("the tags: ") + error.what());
    parts_->tags.reset();
  }
  return report;
}

void StoreRecovery::put() {
  if (parts_->tags) parts_->tags->commit();
  parts_->store.put();
}

}  // namespace ox
