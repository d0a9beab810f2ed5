#include "ox/platform/store/committed/committed_records.hpp"

#include <algorithm>
#include <ctime>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

constexpr std::int64_t kLookMilliseconds = 10;
constexpr std::size_t kHalfEntryCacheEntries = 1U << 14U;
constexpr std::size_t kHalfLinkCacheEntries = 1U << 20U;

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
      entries_(kHalfEntryCacheEntries),
      contents_(file, [this](std::int64_t row) { return keyInRow(row); }),
      childLists_(kHalfLinkCacheEntries),
      parentLists_(kHalfLinkCacheEntries) {}

void CommittedRecords::refresh(Look look) {
  const auto now = coarseMilliseconds();
  if (look == Look::AtMostEvery10ms && lastLook_ >= 0 && now - lastLook_ < kLookMilliseconds)
    return;
  file_.guarded([&] {
    if (version() != seenVersion_) readNews();
    lastLook_ = now;
  });
}

std::int64_t CommittedRecords::version() {
  auto& row = file_.statement(Sql::DataVersion);
  const sqlite::StatementScope scope(row);
  row.step();
  return row.integer(0);
}

std::optional<ActRow> CommittedRecords::lastActUnlessOutdated() {
  if (seen_.moment == StoreMoment()) return std::nullopt;
  const bool isLast = file_.guarded([&] { return version() == seenVersion_; });
  return isLast ? std::optional(seen_) : std::nullopt;
}

void CommittedRecords::forgetIndex() {
  entries_.clear();
  indexLoaded_ = false;
  index_.clear();
  seenRow_ = 0;
}

void CommittedRecords::forgetLink(const RecordKey& group, const RecordKey& child) {
  ++linkGeneration_;
  childLists_.erase(group);
  parentLists_.erase(child);
}

void CommittedRecords::forgetLinks() {
  ++linkGeneration_;
  childLists_.clear();
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

// A row that is damaged costs itself: all the others are there, and whoever lists them is told.
void CommittedRecords::readRecordsAfter(std::int64_t row) {
  auto& rows = file_.statement(Sql::RecordsAfter);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, row);
  while (rows.step()) {
    seenRow_ = rows.integer(0);
    try {
      index_.append(entryOfRow(rows));
    } catch (const DamagedRow& error) {
      const auto& name = file_.address().name();
      failures::notice(FailureKind::Corrupt, name + ": " + error.what(), name);
    }
  }
}

const RecordKey* CommittedRecords::keyInRow(std::int64_t row) const {
  const auto* entry = index_.inRow(row);
  return entry != nullptr ? &entry->key : nullptr;
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

bool CommittedRecords::isEmpty(std::string_view containerIdentifier, RecordKind kind) {
  const auto container = containers_.rowOf(containerIdentifier);
  return file_.guarded([&] {
    auto& any = file_.statement(Sql::AnyRecordOfContainer);
    const sqlite::StatementScope scope(any);
    any.bind(1, container).bind(2, static_cast<std::int64_t>(kind));
    return !any.step();
  });
}

std::optional<CommittedRecords::Entry> CommittedRecords::find(std::string_view identifier) {
  const auto known = RecordKey::known(identifier);
  if (known) return find(*known);
  // A foreign identifier that this process has not met: only the file knows whether it exists.
  return file_.guarded([&]() -> std::optional<Entry> {
    auto& row = file_.statement(Sql::RecordByUid);
    const sqlite::StatementScope scope(row);
    row.bindText(1, identifier);
    return row.step() ? kept(entryOfRow(row)) : std::nullopt;
  });
}

std::optional<CommittedRecords::Entry> CommittedRecords::find(const RecordKey& key) {
  if (indexLoaded_) {
    const auto* entry = index_.find(key);
    return entry != nullptr ? std::optional(*entry) : std::nullopt;
  }
  if (const auto* entry = entries_.find(key)) return *entry;
  return file_.guarded([&]() -> std::optional<Entry> {
    auto& row = file_.statement(Sql::RecordByUid);
    const sqlite::StatementScope scope(row);
    const StoredUid uid(key);
    uid.bindTo(row, 1);
    return row.step() ? kept(entryOfRow(row)) : std::nullopt;
  });
}

std::optional<CommittedRecords::Entry> CommittedRecords::kept(std::optional<Entry> found) {
  if (found && !indexLoaded_) entries_.put(found->key, *found, 1);
  return found;
}

const std::shared_ptr<const PropertyBag>& CommittedRecords::values(const RecordKey& key) {
  if (lastValues_ && lastKey_ == key) return lastValues_;
  lastValues_ = content(key).values;
  lastKey_ = key;
  return lastValues_;
}

KnownContent CommittedRecords::content(const RecordKey& key) {
  if (auto known = contents_.known(key); known.values) return known;
  const auto entry = find(key);
  return entry ? readStored(key, *entry) : KnownContent();
}

// Whoever has listed the records may walk them.
ContentCache::Ahead CommittedRecords::ahead() const {
  return indexLoaded_ ? ContentCache::Ahead::WhenWalking : ContentCache::Ahead::No;
}

// Nothing when the record was removed elsewhere meanwhile.
KnownContent CommittedRecords::readStored(const RecordKey& key, Entry entry) {
  auto content = contents_.read(entry, ahead());
  while (!content.values) {
    // A row without values is damage only if it is still the record's row: another process may have
    // removed the record since the last look, and even made it again.
    const auto row = entry.row;
    refresh(Look::Now);
    const auto now = find(key);
    if (!now) return {};
    if (now->row == row) {
      throw DamagedRecord(
          file_.address().name() + ": " + key.text() + ": its stored values are missing",
          key.text());
    }
    entry = *now;
    content = contents_.read(entry, ContentCache::Ahead::No);
  }
  return content;
}

void CommittedRecords::forgetValuesOf(const RecordKey& key) {
  contents_.forget(key);
  entries_.erase(key);
  if (lastKey_ == key) lastValues_.reset();
}

void CommittedRecords::forgetValues() {
  known_.keepAll(contents_.release());
  lastValues_.reset();
}

Data CommittedRecords::image(const RecordKey& key) {
  if (const auto known = contents_.known(key); known.values && known.pictureChecksum == 0)
    return nullptr;
  const auto entry = find(key);
  return entry ? contents_.picture(*entry, ahead()) : nullptr;
}

const RecordKeysPtr& CommittedRecords::ChildLists::of(RecordKind kind) const {
  const auto& list = kind == RecordKind::Person ? persons : groups;
  if (!list) throw DamagedRow("a row that leads to a record is damaged");
  return list;
}

RecordKeysPtr CommittedRecords::children(const RecordKey& group, RecordKind kind) {
  return children(std::span(&group, 1), kind).front();
}

RecordKeysPtr CommittedRecords::parents(const RecordKey& record) {
  if (const auto* cached = parentLists_.find(record)) return *cached;
  auto keys = std::make_shared<RecordKeys>();
  if (const auto entry = find(record)) {
    file_.guarded([&] {
      auto& rows = file_.statement(Sql::ParentsOfRow);
      const sqlite::StatementScope scope(rows);
      rows.bind(1, entry->row);
      while (rows.step()) keys->push_back(soundKey(rows, 0, 1));
    });
  }
  const auto cost = keys->size() + 1;
  return *parentLists_.put(record, std::move(keys), cost);
}

}  // namespace ox
