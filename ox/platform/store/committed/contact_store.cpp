#include "ox/platform/store/committed/contact_store.hpp"

#include <ctime>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/platform/store/file/schema.hpp"
#include "ox/platform/store/file/statements.hpp"
#include "ox/records/card_uid.hpp"
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

ContactStore::ContactStore(std::string path)
    : path_(std::move(path)),
      values_(kHalfValueCacheBytes),
      memberLists_(kHalfLinkCacheEntries),
      subgroupLists_(kHalfLinkCacheEntries),
      parentLists_(kHalfLinkCacheEntries) {}

ContactStore::~ContactStore() {
  statements_.clear();
}

sqlite::Connection& ContactStore::database() {
  if (database_.handle() != nullptr) return database_;
  auto opened = openStoreFile(path_);
  auto rows = opened.prepare(sqlOf(Sql::CustomProperties));
  while (rows.step()) {
    const auto id = property_table::add(rows.text(0), static_cast<ABPropertyType>(rows.integer(1)));
    if (id != 0) writtenCustomProperties_.insert(id);
  }
  // Open only now: had the properties not been read, the next try would have to read them.
  database_ = std::move(opened);
  return database_;
}

sqlite::Statement& ContactStore::statement(Sql which) {
  if (statements_.empty()) statements_.resize(static_cast<std::size_t>(Sql::Count));
  auto& prepared = statements_[static_cast<std::size_t>(which)];
  if (!prepared) prepared = database().prepare(sqlOf(which));
  return prepared;
}

void ContactStore::refresh(Look look) {
  const auto now = coarseMilliseconds();
  if (look == Look::AtMostEvery10ms && lastLook_ >= 0 && now - lastLook_ < kLookMilliseconds)
    return;
  guarded([&] {
    auto& row = statement(Sql::DataVersion);
    const sqlite::StatementScope scope(row);
    row.step();
    const auto version = row.integer(0);
    if (version != seenVersion_) readNews();
    // Only news that were read to the end are old.
    seenVersion_ = version;
    lastLook_ = now;
  });
}

void ContactStore::readNews() {
  containersLoaded_ = false;
  forgetValues();
  forgetLinks();
  if (!indexLoaded_) return;
  auto& removals = statement(Sql::RemovalsAfter);
  const sqlite::StatementScope scope(removals);
  removals.bind(1, seenRemoval_);
  while (removals.step()) {
    seenRemoval_ = removals.integer(0);
    index_.removeRow(removals.integer(1));
  }
  readRecordsAfter(seenRow_);
}

void ContactStore::forgetLinks() {
  ++linkGeneration_;
  memberLists_.clear();
  subgroupLists_.clear();
  parentLists_.clear();
}

void ContactStore::loadIndex() {
  if (indexLoaded_) return;
  // An earlier try may have failed half way.
  index_.clear();
  seenRow_ = 0;
  {
    auto& counts = statement(Sql::RecordCounts);
    const sqlite::StatementScope scope(counts);
    counts.step();
    seenRemoval_ = counts.integer(0);
    index_.reserve(static_cast<std::size_t>(counts.integer(1)));
  }
  readRecordsAfter(0);
  indexLoaded_ = true;
}

void ContactStore::readRecordsAfter(std::int64_t row) {
  auto& rows = statement(Sql::RecordsAfter);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, row);
  while (rows.step()) {
    index_.append(entryOfRow(rows));
    seenRow_ = rows.integer(0);
  }
}

void ContactStore::loadContainers() {
  if (containersLoaded_) return;
  containers_.clear();
  containersByRow_.clear();
  auto& rows = statement(Sql::Containers);
  const sqlite::StatementScope scope(rows);
  while (rows.step()) {
    auto container = std::make_shared<const ContainerInfo>(
        ContainerInfo{std::string(rows.text(1)), std::string(rows.text(2)),
                      static_cast<std::int32_t>(rows.integer(3))});
    containersByRow_.emplace(static_cast<std::int32_t>(rows.integer(0)), container);
    containers_.push_back(std::move(container));
  }
  containersLoaded_ = true;
}

const std::vector<ContainerPtr>& ContactStore::containers() {
  guarded([&] { loadContainers(); });
  return containers_;
}

ContainerPtr ContactStore::container(std::int32_t row) {
  guarded([&] { loadContainers(); });
  const auto found = containersByRow_.find(row);
  return found == containersByRow_.end() ? nullptr : found->second;
}

std::int32_t ContactStore::containerRow(std::string_view identifier) {
  guarded([&] { loadContainers(); });
  std::int32_t byStandardId = 0;
  int matches = 0;
  for (const auto& [row, container] : containersByRow_) {
    if (container->identifier == identifier) return row;
    if (standardContainerId(container->identifier) != identifier) continue;
    byStandardId = row;
    ++matches;
  }
  return matches == 1 ? byStandardId : 0;
}

ContainerPtr ContactStore::containerNamed(std::string_view identifier) {
  return container(containerRow(identifier));
}

RecordKeys ContactStore::records(RecordKind kind) {
  guarded([&] { loadIndex(); });
  return index_.all(kind);
}

RecordKeys ContactStore::recordsIn(std::string_view containerIdentifier, RecordKind kind) {
  const auto row = containerRow(containerIdentifier);
  if (row == 0) return {};
  guarded([&] { loadIndex(); });
  return index_.inContainer(row, kind);
}

std::optional<ContactStore::Entry> ContactStore::find(std::string_view identifier) {
  const auto known = RecordKey::known(identifier);
  if (known) return find(*known);
  // A foreign identifier that this process has not met: only the file knows whether it exists.
  return guarded([&]() -> std::optional<Entry> {
    auto& row = statement(Sql::RecordByUid);
    const sqlite::StatementScope scope(row);
    row.bindText(1, identifier);
    return row.step() ? std::optional(entryOfRow(row)) : std::nullopt;
  });
}

std::optional<ContactStore::Entry> ContactStore::find(const RecordKey& key) {
  if (indexLoaded_) {
    const auto* entry = index_.find(key);
    return entry != nullptr ? std::optional(*entry) : std::nullopt;
  }
  return guarded([&]() -> std::optional<Entry> {
    auto& row = statement(Sql::RecordByUid);
    const sqlite::StatementScope scope(row);
    const StoredUid uid(key);
    uid.bindTo(row, 1);
    return row.step() ? std::optional(entryOfRow(row)) : std::nullopt;
  });
}

std::shared_ptr<const PropertyBag> ContactStore::values(const RecordKey& key) {
  if (lastValues_ && lastKey_ == key) return lastValues_;
  const auto* cached = values_.find(key);
  auto values = cached != nullptr ? *cached : nullptr;
  if (!values) {
    auto entry = find(key);
    if (!entry) return nullptr;
    // Whoever walks the records in their order is given a few at a time.
    const bool walks =
        indexLoaded_ && entry->row > lastMissedRow_ && entry->row <= lastMissedRow_ + kRowsAhead;
    lastMissedRow_ = entry->row;
    values = guarded([&] { return readValues(*entry, walks ? kRowsAhead : 1); });
    while (!values) {
      // Another process may have removed it since the last look, and even made it again.
      const auto row = entry->row;
      refresh(Look::Now);
      entry = find(key);
      if (!entry) return nullptr;
      if (entry->row == row) {
        throw DamagedRecord(path_ + ": " + key.text() + ": its stored values are missing");
      }
      values = guarded([&] { return readValues(*entry, 1); });
    }
  }
  lastKey_ = key;
  lastValues_ = values;
  return values;
}

// The record's own values, which the cache may have let go of again, and up to `count` - 1 records
// behind it for the cache. Null when that row has none.
std::shared_ptr<const PropertyBag> ContactStore::readValues(const Entry& entry,
                                                            std::int64_t count) {
  auto& rows = statement(Sql::ContentFrom);
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

void ContactStore::forgetValues() {
  values_.clear();
  lastValues_.reset();
}

std::uint64_t ContactStore::fingerprint(const RecordKey& key) {
  const auto entry = find(key);
  if (!entry) return 0;
  return guarded([&]() -> std::uint64_t {
    auto& row = statement(Sql::FingerprintByRow);
    const sqlite::StatementScope scope(row);
    row.bind(1, entry->row);
    return row.step() ? static_cast<std::uint64_t>(row.integer(0)) : 0;
  });
}

PropertyBag ContactStore::decodeNaming(const RecordKey& key, std::string_view bytes) {
  try {
    return decodeProperties(bytes);
  } catch (const DamagedProperties& error) {
    throw DamagedRecord(path_ + ": " + key.text() + ": " + error.what());
  }
}

Data ContactStore::image(const RecordKey& key) {
  const auto entry = find(key);
  if (!entry) return nullptr;
  return guarded([&]() -> Data {
    auto& row = statement(Sql::ImageByRow);
    const sqlite::StatementScope scope(row);
    row.bind(1, entry->row);
    if (!row.step()) return nullptr;
    const auto bytes = row.blob(1);
    if (checksum64(bytes) != static_cast<std::uint64_t>(row.integer(0))) {
      throw ImageReadError(path_ + ": " + key.text() +
                           ": the stored picture is damaged: its checksum differs");
    }
    return makeData(std::string(bytes));
  });
}

RecordKeysPtr ContactStore::linkedKeys(Sql which, const RecordKey& key,
                                       std::optional<RecordKind> kind) {
  auto keys = std::make_shared<RecordKeys>();
  const auto entry = find(key);
  if (!entry) return keys;
  guarded([&] {
    auto& rows = statement(which);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, entry->row);
    if (kind) rows.bind(2, static_cast<std::int64_t>(*kind));
    while (rows.step()) keys->push_back(keyOfColumn(rows, 0));
  });
  return keys;
}

RecordKeysPtr ContactStore::children(const RecordKey& group, RecordKind kind) {
  auto& cache = kind == RecordKind::Person ? memberLists_ : subgroupLists_;
  if (const auto* cached = cache.find(group)) return *cached;
  auto keys = linkedKeys(Sql::ChildrenOfRow, group, kind);
  const auto cost = keys->size() + 1;
  return *cache.put(group, std::move(keys), cost);
}

RecordKeysPtr ContactStore::parents(const RecordKey& record) {
  if (const auto* cached = parentLists_.find(record)) return *cached;
  auto keys = linkedKeys(Sql::ParentsOfRow, record, std::nullopt);
  const auto cost = keys->size() + 1;
  return *parentLists_.put(record, std::move(keys), cost);
}

RecordKeys ContactStore::withCardUid(std::string_view containerIdentifier, RecordKind kind,
                                     std::string_view uid) {
  const auto container = containerRow(containerIdentifier);
  const auto plain = uidKey(uid);
  for (const auto& spelling : {std::string(plain), std::string(kUrnPrefix).append(plain)}) {
    auto found = guarded([&] {
      auto& rows = statement(Sql::RecordsByCardUid);
      const sqlite::StatementScope scope(rows);
      rows.bindText(1, spelling);
      return keysOf(rows, container, kind);
    });
    if (!found.empty()) return found;
  }
  const auto own = RecordKey::known(recordOfUid(plain, kind));
  const auto entry = own ? find(*own) : std::nullopt;
  if (!entry || entry->kind != kind || entry->container != container) return {};
  return {*own};
}

RecordKeys ContactStore::withFingerprint(std::string_view containerIdentifier, RecordKind kind,
                                         std::uint64_t fingerprint) {
  const auto container = containerRow(containerIdentifier);
  return guarded([&] {
    auto& rows = statement(Sql::RecordsByFingerprint);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, static_cast<std::int64_t>(fingerprint));
    return keysOf(rows, container, kind);
  });
}

RecordKeys ContactStore::keysOf(sqlite::Statement& rows, std::int32_t container, RecordKind kind) {
  RecordKeys keys;
  while (rows.step()) {
    const auto entry = entryOfRow(rows);
    if (entry.container == container && entry.kind == kind) keys.push_back(entry.key);
  }
  return keys;
}

std::string standardContainerId(std::string_view identifier) {
  return withoutAll(identifier, ":ABAccount");
}

}  // namespace ox
