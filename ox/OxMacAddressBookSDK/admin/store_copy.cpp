#include "ox/OxMacAddressBookSDK/admin/store_copy.hpp"

#include <filesystem>
#include <stdexcept>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/OxAddressBookSDK/tags/tag_schema.hpp"
#include "ox/base/planted.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/upkeep/missed_tags.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

[[noreturn]] void refuse(const std::string& path, const char* why) {
  throw StoreError(StoreError::Kind::Unavailable, path + why);
}

std::string placeOfTarget(const std::string& path) {
  if (isStoreFile(path)) refuse(path, ": is a file of the store itself");
  refusePlanted(path);
  return placeOf(path);
}

// What nobody would open is no copy.
void requireOwnTags() {
  try {
    openTagFileAsItIs(tagStorePath(), sqlite::MissingIndexes::Allow);
  } catch (const FailureError& error) {
    throwStoreError(tagStorePath(), error);
  }
}

std::string placeOfTags(const std::string& path) {
  auto place = placeOfTarget(path);
  if (std::filesystem::exists(place) && !isTagFile(place) && !isEmptyDatabase(place)) {
    refuse(place, ": would be replaced by the tags of the copy, and holds none");
  }
  return place;
}

}  // namespace

struct StoreCopy::Copies {
  explicit Copies(const std::string& path)
      : storePlace(placeOfTarget(path)),
        tagsPlace(placeOfTags(path + ".tags")),
        store(storePlace),
        tags(tagsPlace) {}

  // Brings the copy of the tags to where the copy of the store is. Tags that are damaged cannot
  // follow and stay as they were copied; a check tells.
  void followSince(std::int64_t act) {
    const auto missed = tagActsAfter(store.path(), act);
    if (missed.acts.empty()) return;
    const auto& name = missed.store;
    try {
      TagFile(tags.path())
          .follow({reinterpret_cast<const char*>(name.data()), name.size()}, missed.acts,
                  [&] { return missed.lastAct; });
      hasTags = true;
    } catch (const FailureError& error) {
      const auto kind = error.kind();
      const bool isDamage = kind == FailureKind::Corrupt || kind == FailureKind::NotAStore ||
                            kind == FailureKind::NewerSchema;
      if (!isDamage) throwStoreError(tagsPlace, error);
    }
  }

  std::string storePlace;
  std::string tagsPlace;
  DatabaseCopy store;
  DatabaseCopy tags;
  bool taken = false;
  bool hasTags = false;
};

StoreCopy::StoreCopy(const std::string& path) : copies_(std::make_unique<Copies>(path)) {}

StoreCopy::~StoreCopy() = default;

std::vector<std::string> StoreCopy::files() const {
  auto files = copies_->store.files();
  for (auto& file : copies_->tags.files()) files.push_back(std::move(file));
  return files;
}

RecordCounts StoreCopy::take(DamagedTags damaged) {
  using WhenDamaged = DatabaseCopy::WhenDamaged;
  const auto last = lastActWithoutDebt(contactStorePath());
  // The tags first: what acts in between do to them the copy of the store tells. Taken the other
  // way round, tags would stand there of acts that the copy knows nothing of.
  const bool isThere = std::filesystem::exists(tagStorePath()) && !isEmptyDatabase(tagStorePath());
  copies_->hasTags =
      isThere && copies_->tags.takeDatabase(tagStorePath(), damaged == DamagedTags::LeaveOut
                                                                ? WhenDamaged::LeaveOut
                                                                : WhenDamaged::Fail);
  if (copies_->hasTags && damaged == DamagedTags::Refuse) requireOwnTags();
  const auto counts = copies_->store.takeStore(contactStorePath());
  // Tags that are damaged and left out are not made up for by a few.
  if (copies_->hasTags || !isThere) copies_->followSince(last);
  copies_->taken = true;
  return counts;
}

void StoreCopy::put() {
  if (!copies_->taken) throw std::logic_error("a copy that was not taken cannot be put in place");
  copies_->store.settleTarget();
  copies_->tags.settleTarget();
  if (copies_->hasTags) {
    copies_->tags.put();
  } else {
    std::filesystem::remove(copies_->tagsPlace);
  }
  copies_->store.put();
}

}  // namespace ox
