#include "ox/platform/store/committed/committed_records.hpp"

#include <algorithm>
#include <ctime>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

constexpr std::int64_t kLookMilliseconds = 10;
constexpr std::int64_t kRowsAhead = 32;
constexpr std::size_t kBytesAhead = 256U << 10U;
constexpr std::size_t kHalfValueCacheBytes = 16U << 20U;
constexpr std::size_t kHalfLinkCacheEntries = 1U << 20U;
// What a decoded bag takes in memory, as a multiple of its stored size: an estimate.
constexpr std::size_t kDecodedFactor = 4;

// Every read asks for the time, and a few milliseconds more or less do not matter.
std::int64_t coarseMilliseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

}  // namespace

CommittedRecords::CommittedRecords(StoreFile& file)
    : file_(file),
      containers_(file),
      values_(kHalfValueCacheBytes),
      memberLists_(kHalfLinkCacheEntries),
      subgroupLists_(kHalfLinkCacheEntries),
      parentLists_(kHalfLinkCacheEntries) {}

void CommittedRecords::refresh(Look look) {
  const auto now = coarseMilliseconds();
  if (look == Look::AtMostEvery10ms && lastLook_ >= 0 && now - lastLook_ < kLookMilliseconds)
    return;
  file_.guarded([&] {
    const auto current = version();
    if (current != seenVersion_) readNews();
    // Set last: when the reading of the news fails half way, the next look reads them again.
    seenVersion_ = current;
    lastLook_ = now;
  });
}

std::int64_t CommittedRecords::version() {
  auto& row = file_.statement(Sql::DataVersion);
  const sqlite::StatementScope scope(row);
  row.step();
  return row.integer(0);
}

bool CommittedRecords::isOutdated() {
  return file_.guarded([&] { return version() != seenVersion_; });
}

void CommittedRecords::forgetIndex() {
  indexLoaded_ = false;
  index_.clear();
  seenRow_ = 0;
}

void CommittedRecords::forgetLink(const RecordKey& group, const RecordKey& child) {
  ++linkGeneration_;
  memberLists_.erase(group);
  subgroupLists_.erase(group);
  parentLists_.erase(child);
}

void CommittedRecords::forgetLinks() {
  ++linkGeneration_;
  memberLists_.clear();
  subgroupLists_.clear();
  parentLists_.clear();
}

void CommittedRecords::loadIndex() {
  if (indexLoaded_) return;
  // An earlier try may have failed half way and left a part behind.
  index_.clear();
  seenRow_ = 0;
  // Row numbers that are not in use any more cost a little room here; a damaged count costs none.
  constexpr std::int64_t kMostReserved = 4'000'000;
  index_.reserve(
      static_cast<std::size_t>(std::clamp<std::int64_t>(seen_.nextRecord, 0, kMostReserved)));
  readRecordsAfter(0);
  indexLoaded_ = true;
}

void CommittedRecords::readRecordsAfter(std::int64_t row) {
  auto& rows = file_.statement(Sql::RecordsAfter);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, row);
  while (rows.step()) {
    index_.append(entryOfRow(rows));
    seenRow_ = rows.integer(0);
  }
}

RecordKeys CommittedRecords::records(RecordKind kind) {
  file_.guarded([&] { loadIndex(); });
  return index_.all(kind);
}

RecordKeys CommittedRecords::recordsIn(std::string_view containerIdentifier, RecordKind kind) {
  const auto row = containers_.rowOf(containerIdentifier);
  if (row == 0) return {};
  file_.guarded([&] { loadIndex(); });
  return index_.inContainer(row, kind);
}

std::optional<CommittedRecords::Entry> CommittedRecords::find(std::string_view identifier) {
  const auto known = RecordKey::known(identifier);
  if (known) return find(*known);
  // A foreign identifier that this process has not met: only the file knows whether it exists.
  return file_.guarded([&]() -> std::optional<Entry> {
    auto& row = file_.statement(Sql::RecordByUid);
    const sqlite::StatementScope scope(row);
    row.bindText(1, identifier);
    return row.step() ? std::optional(entryOfRow(row)) : std::nullopt;
  });
}

std::optional<CommittedRecords::Entry> CommittedRecords::find(const RecordKey& key) {
  if (indexLoaded_) {
    const auto* entry = index_.find(key);
    return entry != nullptr ? std::optional(*entry) : std::nullopt;
  }
  return file_.guarded([&]() -> std::optional<Entry> {
    auto& row = file_.statement(Sql::RecordByUid);
    const sqlite::StatementScope scope(row);
    const StoredUid uid(key);
    uid.bindTo(row, 1);
    return row.step() ? std::optional(entryOfRow(row)) : std::nullopt;
  });
}

std::shared_ptr<const PropertyBag> CommittedRecords::values(const RecordKey& key) {
  if (lastValues_ && lastKey_ == key) return lastValues_;
  const auto* cached = values_.find(key);
  auto values = cached != nullptr ? *cached : nullptr;
  if (!values) {
    const auto entry = find(key);
    if (!entry) return nullptr;
    values = readStored(key, *entry);
    if (!values) return nullptr;
  }
  lastKey_ = key;
  lastValues_ = values;
  return values;
}

// Null when the record was removed elsewhere meanwhile.
std::shared_ptr<const PropertyBag> CommittedRecords::readStored(const RecordKey& key, Entry entry) {
  // Whoever walks the records in their order is given a few at a time.
  const bool walks =
      indexLoaded_ && entry.row > lastMissedRow_ && entry.row <= lastMissedRow_ + kRowsAhead;
  lastMissedRow_ = entry.row;
  auto values = file_.guarded([&] { return readValues(entry, walks ? kRowsAhead : 1); });
  while (!values) {
    // A row without values is damage only if it is still the record's row: another process may have
    // removed the record since the last look, and even made it again.
    const auto row = entry.row;
    refresh(Look::Now);
    const auto now = find(key);
    if (!now) return nullptr;
    if (now->row == row) {
      throw DamagedRecord(file_.path() + ": " + key.text() + ": its stored values are missing",
                          key.text());
    }
    entry = *now;
    values = file_.guarded([&] { return readValues(entry, 1); });
  }
  return values;
}

// The values in that row, and for the cache those of up to `count` - 1 rows behind it. The result
// is not looked up in the cache, which may have let go of it again by the time the others are in.
// Null when the row has none.
std::shared_ptr<const PropertyBag> CommittedRecords::readValues(const Entry& entry,
                                                                std::int64_t count) {
  auto& rows = file_.statement(Sql::ContentFrom);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, entry.row).bind(2, count);
  if (!rows.step() || rows.integer(0) != entry.row) return nullptr;
  std::size_t bytesRead = rows.blob(2).size();
  auto values = std::make_shared<const PropertyBag>(decodeNaming(entry.key, rows.blob(2)));
  values_.put(entry.key, values, kDecodedFactor * bytesRead);
  while (bytesRead < kBytesAhead && rows.step()) {
    const auto bytes = rows.blob(2);
    bytesRead += bytes.size();
    const auto key = keyOfColumn(rows, 1);
    try {
      auto ahead = std::make_shared<const PropertyBag>(decodeProperties(bytes));
      values_.put(key, std::move(ahead), kDecodedFactor * bytes.size());
    } catch (const DamagedProperties&) {
      break;  // a damaged neighbour is reported when it is asked for itself
    }
  }
  return values;
}

void CommittedRecords::forgetValuesOf(const RecordKey& key) {
  values_.erase(key);
  if (lastKey_ == key) lastValues_.reset();
}

void CommittedRecords::forgetValues() {
  values_.clear();
  lastValues_.reset();
}

PropertyBag CommittedRecords::decodeNaming(const RecordKey& key, std::string_view bytes) {
  try {
    return decodeProperties(bytes);
  } catch (const DamagedProperties& error) {
    throw DamagedRecord(file_.path() + ": " + key.text() + ": " + error.what(), key.text());
  }
}

Data CommittedRecords::image(const RecordKey& key) {
  const auto entry = find(key);
  if (!entry) return nullptr;
  return file_.guarded([&]() -> Data {
    auto& row = file_.statement(Sql::ImageByRow);
    const sqlite::StatementScope scope(row);
    row.bind(1, entry->row);
    if (!row.step()) return nullptr;
    const auto bytes = row.blob(1);
    if (checksum64(bytes) != static_cast<std::uint64_t>(row.integer(0))) {
      throw ImageReadError(file_.path() + ": " + key.text() +
                               ": the stored picture is damaged: its checksum differs",
                           key.text());
    }
    return makeData(std::string(bytes));
  });
}

RecordKeysPtr CommittedRecords::linkedKeys(Sql which, const RecordKey& key,
                                           std::optional<RecordKind> kind) {
  auto keys = std::make_shared<RecordKeys>();
  const auto entry = find(key);
  if (!entry) return keys;
  file_.guarded([&] {
    auto& rows = file_.statement(which);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, entry->row);
    if (kind) rows.bind(2, static_cast<std::int64_t>(*kind));
    while (rows.step()) keys->push_back(keyOfColumn(rows, 0));
  });
  return keys;
}

RecordKeysPtr CommittedRecords::children(const RecordKey& group, RecordKind kind) {
  auto& cache = childLists(kind);
  if (const auto* cached = cache.find(group)) return *cached;
  auto keys = linkedKeys(Sql::ChildrenOfRow, group, kind);
  const auto cost = keys->size() + 1;
  return *cache.put(group, std::move(keys), cost);
}

RecordKeysPtr CommittedRecords::parents(const RecordKey& record) {
  if (const auto* cached = parentLists_.find(record)) return *cached;
  auto keys = linkedKeys(Sql::ParentsOfRow, record, std::nullopt);
  const auto cost = keys->size() + 1;
  return *parentLists_.put(record, std::move(keys), cost);
}

}  // namespace ox
