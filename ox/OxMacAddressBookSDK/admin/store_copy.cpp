#include "ox/OxMacAddressBookSDK/admin/store_copy.hpp"

#include <cassert>
#include <filesystem>

#include "ox/base/store_location.hpp"
#include "ox/platform/store/file/backup.hpp"

namespace ox {

struct StoreCopy::Copies {
  explicit Copies(const std::string& path)
      : store(placeOf(path)), tagsTarget(placeOf(path + ".tags")), tags(tagsTarget) {}

  DatabaseCopy store;
  std::string tagsTarget;
  DatabaseCopy tags;
  bool taken = false;
  bool hasTags = false;
};

StoreCopy::StoreCopy(const std::string& path) : copies_(std::make_unique<Copies>(path)) {}

StoreCopy::~StoreCopy() = default;

std::vector<std::string> StoreCopy::files() const {
  return {copies_->store.path(), copies_->tags.path()};
}

RecordCounts StoreCopy::take() {
  const auto counts = copies_->store.takeStore(contactStorePath());
  copies_->hasTags = std::filesystem::exists(tagStorePath());
  if (copies_->hasTags) copies_->tags.takeDatabase(tagStorePath());
  copies_->taken = true;
  return counts;
}

void StoreCopy::put() {
  assert(copies_->taken);
  copies_->store.settleTarget();
  copies_->tags.settleTarget();
  if (copies_->hasTags) {
    copies_->tags.put();
  } else {
    std::filesystem::remove(copies_->tagsTarget);
  }
  copies_->store.put();
}

}  // namespace ox
