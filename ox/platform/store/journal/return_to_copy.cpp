#include "ox/platform/store/journal/return_to_copy.hpp"

#include <set>
#include <utility>

#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

// Records of an account that cannot be read are not taken for those of none.
std::vector<ContainerRow> soundContainersOf(StoreFile& file) {
  auto containers = containersOf(file);
  for (const auto& container : containers) {
    if (!container.isSound) throw DamagedRow("the row of an account is damaged");
  }
  return containers;
}

}  // namespace

ReturnToCopy::ReturnToCopy(StoreFile& store, StoreFile& copy, CommittedRecords& committed, Act& act,
                           std::deque<NewRecord>& added)
    : store_(store),
      copy_(copy),
      committed_(committed),
      act_(act),
      added_(added),
      now_(store),
      then_(copy) {}

void ReturnToCopy::decide() {
  act_.guards.all = true;
  ofThisStore_ = isOfThisStore();
  settleContainers();
  settleRecords();
  settleLinks();
}

// Row numbers mean the same in both only if the copy is an earlier state of this store and not of
// one that went its own way. The journal proves it; nothing does for a copy from before the
// journal.
bool ReturnToCopy::isOfThisStore() {
  const auto last = lastAct(copy_);
  return last && nameOfStore(store_) == nameOfStore(copy_) &&
         JournalRows(store_).knows(last->moment);
}

void ReturnToCopy::settleContainers() {
  std::set<std::string> wanted;
  for (const auto& container : soundContainersOf(copy_)) {
    wanted.insert(container.info.identifier);
    const auto now = committed_.containers().rowOf(container.info.identifier);
    const auto info = now != 0 ? committed_.containers().inRow(now) : nullptr;
    const auto then = static_cast<std::int32_t>(container.row);
    if (info && info->identifier == container.info.identifier) {
      containers_[then] = now;
      continue;
    }
    const bool isFree = ofThisStore_ && !committed_.containers().inRow(then);
    act_.addedContainers.push_back({isFree ? then : 0, container.info});
    containers_[then] = isFree ? then : -static_cast<std::int32_t>(act_.addedContainers.size());
  }
  for (const auto& container : soundContainersOf(store_)) {
    if (wanted.contains(container.info.identifier)) continue;
    act_.removedContainers.push_back({static_cast<std::int32_t>(container.row), container.info});
  }
}

void ReturnToCopy::settleRecords() {
  then_.visit([&](const RecordEntry& record) {
    const auto now = committed_.find(record.key);
    if (now && now->kind == record.kind && now->container == containers_.at(record.container)) {
      keep(*now, record.row);
    } else {
      bringBack(record, now.has_value());
    }
  });
  now_.visit([&](const RecordEntry& record) {
    if (!kept_.contains(record.row)) act_.removed.push_back(record);
  });
}

void ReturnToCopy::keep(const RecordEntry& now, std::int64_t then) {
  records_[then] = now;
  kept_.insert(now.row);
  // What is damaged now is what the copy is wanted for.
  bool isDamaged = false;
  StoredRows::Content before;
  try {
    before = now_.content(now.row).value_or(StoredRows::Content());
  } catch (const DamagedProperties&) {
    isDamaged = true;
  }
  auto after = then_.content(then).value_or(StoredRows::Content());
  Act::ChangedRecord change;
  change.differences = differences(before.properties, after.properties);
  if (isDamaged || before.picture != after.picture) {
    change.image = Data();
    if (after.picture != 0) change.readImage = reader(then);
  }
  if (change.differences.empty() && !change.image && !isDamaged) return;
  change.record = now;
  change.fingerprint = contentFingerprint(after.properties, after.picture);
  change.properties = std::move(after.properties);
  act_.changed.push_back(std::move(change));
}

std::function<Data()> ReturnToCopy::reader(std::int64_t row) {
  return [&copy = copy_, row] { return pictureOfRecord(copy, row); };
}

void ReturnToCopy::bringBack(const RecordEntry& record, bool isTaken) {
  auto content = then_.content(record.row).value_or(StoredRows::Content());
  const auto fingerprint = contentFingerprint(content.properties, content.picture);
  const auto container = containers_.at(record.container);
  const bool inOldRow = ofThisStore_ && !isTaken && container > 0 && record.row < act_.firstRow &&
                        !now_.record(record.row);
  if (inOldRow) {
    const RecordEntry entry{record.key, record.row, container, record.kind};
    records_[record.row] = entry;
    act_.restored.push_back({entry, std::move(content.properties),
                             content.picture != 0 ? reader(record.row) : std::function<Data()>(),
                             fingerprint});
    return;
  }
  const auto key = isTaken ? RecordKey::make(record.kind) : record.key;
  const auto row = act_.firstRow + static_cast<std::int64_t>(act_.added.size());
  records_[record.row] = {key, row, container, record.kind};
  auto& added = added_.emplace_back();
  added.key = key;
  added.kind = record.kind;
  added.properties = std::move(content.properties);
  if (content.picture != 0) added.readImage = reader(record.row);
  added.fingerprint = fingerprint;
  act_.added.push_back({key, record.kind, container, &added_.back()});
}

void ReturnToCopy::settleLinks() {
  std::set<std::pair<std::int64_t, std::int64_t>> wanted;
  then_.visitLinks([&](std::int64_t number, std::int64_t group, std::int64_t child) {
    const auto& groupThen = records_.at(group);
    const auto& childThen = records_.at(child);
    wanted.emplace(groupThen.row, childThen.row);
    const auto now = now_.link(groupThen.row, childThen.row);
    if (now && (!ofThisStore_ || *now == number)) return;
    const Act::ChangedLink link{groupThen, childThen,
                                ofThisStore_ ? std::optional(number) : std::nullopt};
    if (now) act_.removedLinks.push_back(link);
    act_.addedLinks.push_back(link);
  });
  now_.visitLinks([&](std::int64_t, std::int64_t group, std::int64_t child) {
    // Those of records that go do so with them.
    if (wanted.contains({group, child}) || !kept_.contains(group) || !kept_.contains(child)) return;
    act_.removedLinks.push_back({*now_.record(group), *now_.record(child)});
  });
}

}  // namespace ox
