#include "ox/platform/store/committed/content_cache.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

constexpr std::size_t kFirstBytesAhead = 64U << 10U;
constexpr std::size_t kMostBytesAhead = 1U << 20U;
// A walk may pass over so many rows: groups and records of other containers, or persons that have
// no picture.
constexpr std::int64_t kRowsBetween = 32;
constexpr std::int64_t kRowsBetweenPictures = 1000;
constexpr std::size_t kHalfValueCacheBytes = 16U << 20U;
constexpr std::size_t kHalfPictureCacheBytes = 2U << 20U;
// What a decoded bag takes in memory, as a multiple of its stored size: an estimate.
constexpr std::size_t kDecodedFactor = 4;

// Of a row of record, checksum, data, sound; null when it is damaged.
Data soundPicture(const sqlite::Statement& row) {
  const auto bytes = row.blob(2);
  if (row.integer(3) == 0 || checksum64(bytes) != static_cast<std::uint64_t>(row.integer(1)))
    return nullptr;
  return makeData(std::string(bytes));
}

}  // namespace

ContentCache::ContentCache(StoreFile& file, KeyOfRow keyOfRow)
    : file_(file),
      keyOfRow_(std::move(keyOfRow)),
      contents_(kHalfValueCacheBytes),
      pictureBytes_(kHalfPictureCacheBytes) {}

std::size_t ContentCache::Walk::step(std::int64_t row, std::int64_t gap, Ahead ahead) {
  const bool walks = ahead == Ahead::WhenWalking && row > lastRow && row <= lastRow + gap;
  bytes = walks ? std::clamp(bytes * 2, kFirstBytesAhead, kMostBytesAhead) : 0;
  lastRow = row;
  return bytes;
}

KnownContent ContentCache::known(const RecordKey& key) {
  const auto* content = contents_.find(key);
  return content != nullptr ? *content : KnownContent();
}

// The result is not looked up in the cache, which may have let go of it again by the time the
// others are in.
KnownContent ContentCache::read(const RecordEntry& entry, Ahead ahead) {
  const auto bytes = values_.step(entry.row, kRowsBetween, ahead);
  return file_.guarded([&]() -> KnownContent {
    auto& rows = file_.statement(Sql::ContentFrom);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, entry.row).bind(2, bytes > 0 ? -1 : 1);
    if (!rows.step() || rows.integer(0) != entry.row) return {};
    auto content = [&] {
      try {
        return keep(entry.key, rows);
      } catch (const DamagedProperties& error) {
        throw DamagedRecord(file_.address().name() + ": " + entry.key.text() + ": " + error.what(),
                            entry.key.text());
      }
    }();
    for (auto taken = rows.blob(1).size(); taken < bytes && rows.step();) {
      taken += rows.blob(1).size();
      values_.lastRow = rows.integer(0);
      const auto* key = keyOfRow_(values_.lastRow);
      if (key == nullptr) continue;
      try {
        keep(*key, rows);
      } catch (const DamagedProperties&) {
        break;  // a damaged neighbour is reported when it is asked for itself
      }
    }
    return content;
  });
}

void ContentCache::readAll(std::span<const RecordEntry> entries) {
  sqlite::KeyList list;
  std::vector<const RecordKey*> keys;
  for (const auto& entry : entries) {
    if (contents_.find(entry.key) != nullptr) continue;
    list.add(entry.row);
    keys.push_back(&entry.key);
  }
  if (list.empty()) return;
  file_.guarded([&] {
    auto& rows = file_.statement(Sql::ValuesOfRows);
    const sqlite::StatementScope scope(rows);
    rows.bindKeys(1, list);
    std::size_t taken = 0;
    while (taken < kHalfValueCacheBytes / kDecodedFactor && rows.step()) {
      taken += rows.blob(1).size();
      try {
        keep(*keys[static_cast<std::size_t>(rows.integer(0))], rows);
      } catch (const DamagedProperties&) {
        continue;
      }
    }
  });
}

// Of a row of a number, properties, checksum, sound.
KnownContent ContentCache::keep(const RecordKey& key, const sqlite::Statement& row) {
  if (row.integer(3) == 0) throw DamagedProperties("the row of the stored values is damaged");
  const auto bytes = row.blob(1);
  KnownContent content{std::make_shared<const PropertyBag>(decodeProperties(bytes)),
                       static_cast<std::uint64_t>(row.integer(2))};
  contents_.put(key, content, kDecodedFactor * bytes.size());
  return content;
}

Data ContentCache::picture(const RecordEntry& entry, Ahead ahead) {
  const auto* content = contents_.find(entry.key);
  if (content != nullptr && content->pictureChecksum == 0) return nullptr;
  if (const auto* kept = pictureBytes_.find(entry.key)) return *kept;
  const auto bytes = pictures_.step(entry.row, kRowsBetweenPictures, ahead);
  return file_.guarded([&]() -> Data {
    auto& rows = file_.statement(Sql::PicturesFrom);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, entry.row).bind(2, entry.row + (bytes > 0 ? kRowsBetweenPictures : 0));
    if (!rows.step() || rows.integer(0) != entry.row) return nullptr;
    auto picture = soundPicture(rows);
    if (!picture) {
      throw ImageReadError(file_.address().name() + ": " + entry.key.text() +
                               ": the stored picture is damaged: its checksum differs",
                           entry.key.text());
    }
    keepPicture(entry.key, picture);
    for (auto taken = picture->size(); taken < bytes && rows.step();) {
      taken += rows.blob(2).size();
      pictures_.lastRow = rows.integer(0);
      const auto* key = keyOfRow_(pictures_.lastRow);
      if (key == nullptr) continue;
      // A damaged neighbour is reported when it is asked for itself.
      if (const auto next = soundPicture(rows)) keepPicture(*key, next);
    }
    return picture;
  });
}

void ContentCache::keepPicture(const RecordKey& key, const Data& picture) {
  if (picture->size() <= kHalfPictureCacheBytes) pictureBytes_.put(key, picture, picture->size());
}

void ContentCache::forget(const RecordKey& key) {
  contents_.erase(key);
  pictureBytes_.erase(key);
}

GenerationCache<RecordKey, KnownContent> ContentCache::release() {
  pictureBytes_.clear();
  return std::exchange(contents_, GenerationCache<RecordKey, KnownContent>(kHalfValueCacheBytes));
}

}  // namespace ox
