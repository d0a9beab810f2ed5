#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "ox/base/failures.hpp"
#include "ox/platform/store/source/locked_source.hpp"
#include "ox/records/clean_text.hpp"

// What the record database asks and changes: unsaved changes count.

namespace ox {
namespace {

using Look = CommittedRecords::Look;

// The record is the one that was to be changed.
bool refuse(const std::string& reason, const RecordKey& record) {
  failures::noticeRefusal(reason, record.text());
  return false;
}

}  // namespace

ActId LockedSource::ownerOf(const RecordKey& key) const {
  return RunningAct::ownerOfChange(overlay_.creatorOf(key));
}

ActId LockedSource::ownerOfLink(const RecordKey& group, const RecordKey& child) const {
  const auto owner = ownerOf(group);
  return owner != RunningAct::ownerOfChange() ? owner : ownerOf(child);
}

ActIds LockedSource::actsWith(ActId owner) {
  auto acts = RunningAct::ofThread();
  if (!isAmong(acts, owner)) acts.push_back(owner);
  return acts;
}

bool LockedSource::mayChange(const RecordKey& key) {
  const auto entry = overlay_.isRemoved(key) ? std::nullopt : overlay_.find(key);
  if (!entry) return refuse("there is no record " + key.text(), key);
  const auto refusal = store_.refusalOfChangeIn(entry->container);
  if (refusal.empty()) return true;
  failures::notice(FailureKind::Denied, refusal, key.text());
  return false;
}

template <typename Id>
std::optional<RecordInfo> LockedSource::visibleRecord(const Id& id) {
  const std::lock_guard lock(mutex_);
  // Nobody else can have removed what an act of this process has created and not saved yet.
  if (const auto created = overlay_.findCreated(id)) return visible(created);
  store_.refresh(Look::Now);
  return visible(overlay_.find(id));
}

template <typename Id>
std::vector<std::optional<RecordInfo>> LockedSource::visibleRecords(std::span<const Id> ids) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  std::vector<std::optional<RecordInfo>> records;
  records.reserve(ids.size());
  for (const auto& entry : overlay_.find(ids)) records.push_back(visible(entry));
  return records;
}

std::optional<RecordInfo> LockedSource::visible(const std::optional<RecordEntry>& entry) {
  if (!entry || overlay_.isRemoved(entry->key)) return std::nullopt;
  return RecordInfo{entry->key, entry->kind, committed_.containers().inRow(entry->container)};
}

RecordKeys LockedSource::records(RecordKind kind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return overlay_.records(kind);
}

RecordKeys LockedSource::recordsStartingWith(std::string_view beginning, RecordKind kind,
                                             std::size_t atMost) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  auto keys = committed_.startingWith(beginning, kind, atMost);
  std::erase_if(keys, [&](const RecordKey& key) { return overlay_.isRemoved(key); });
  return keys;
}

RecordKeys LockedSource::personsMatching(const SearchQuery& query) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return overlay_.personsMatching(query,
                                  store_.file().guarded([&] { return search_.rows(query); }));
}

std::optional<RecordInfo> LockedSource::record(std::string_view identifier) {
  return visibleRecord(identifier);
}

std::optional<RecordInfo> LockedSource::record(const RecordKey& key) {
  return visibleRecord(key);
}

std::vector<std::optional<RecordInfo>> LockedSource::recordsWith(
    std::span<const std::string> identifiers) {
  return visibleRecords(identifiers);
}

std::vector<std::optional<RecordInfo>> LockedSource::recordsWith(std::span<const RecordKey> keys) {
  return visibleRecords(keys);
}

PropertyValue LockedSource::value(const RecordKey& key, PropertyId property) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  return overlay_.value(key, property);
}

ABPropertyType LockedSource::storedType(std::string_view custom) {
  const std::lock_guard lock(mutex_);
  std::error_code error;
  // Nobody shall make a store by asking.
  if (!std::filesystem::exists(store_.address().file(), error)) return kABErrorInProperty;
  return store_.storedType(custom);
}

PropertyValue LockedSource::valueToChange(const RecordKey& key, PropertyId property) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  return overlay_.valueToChange(key, property);
}

bool LockedSource::setValue(const RecordKey& key, RecordKind kind, PropertyId property,
                            PropertyValue value) {
  const auto type = property_table::typeOf(property);
  if (property == 0 || type == kABErrorInProperty) return refuse("there is no such property", key);
  if (!fitsType(value, type)) {
    return refuse("a value of the wrong type for " + property_table::nameOf(property), key);
  }
  if (isMissing(value)) value = Object();  // whatever the spelling
  cleanText(value);
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  if (!mayChange(key)) return false;
  if (const auto refusal = store_.refusalOf(property); !refusal.empty()) {
    return refuse(refusal, key);
  }
  overlay_.setValue(ownerOf(key), key, kind, property, std::move(value));
  return true;
}

Data LockedSource::imageData(const RecordKey& key) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  return overlay_.image(key);
}

bool LockedSource::setImageData(const RecordKey& key, Data image) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  if (!mayChange(key)) return false;
  overlay_.setImage(ownerOf(key), key, std::move(image));
  return true;
}

RecordKeysPtr LockedSource::children(const RecordKey& group, RecordKind kind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return overlay_.children(group, kind);
}

RecordKeysPtr LockedSource::parents(const RecordKey& record) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return overlay_.parents(record);
}

bool LockedSource::link(const RecordKey& group, const RecordKey& child, RecordKind childKind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  const auto owner = ownerOfLink(group, child);
  const auto refusal = overlay_.refusalOfLink(actsWith(owner), group, child, childKind);
  if (!refusal.empty()) {
    const bool childIsGone = overlay_.isWritable(group) && !overlay_.isWritable(child);
    return refuse(refusal, childIsGone ? child : group);
  }
  if (!mayChange(group)) return false;
  overlay_.link(owner, group, child, childKind);
  return true;
}

bool LockedSource::unlink(const RecordKey& group, const RecordKey& child, RecordKind childKind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  if (!overlay_.isWritable(group)) return refuse("there is no group " + group.text(), group);
  const auto owner = ownerOfLink(group, child);
  if (!overlay_.canUnlink(actsWith(owner), group, child, childKind)) return false;
  if (!mayChange(group)) return false;
  overlay_.unlink(owner, group, child, childKind);
  return true;
}

bool LockedSource::remove(const RecordKey& key, RecordKind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  if (!mayChange(key)) return false;
  // Of what another act has created too: should this one be taken back, the record is there
  // again.
  overlay_.remove(RunningAct::ownerOfChange(), key);
  return true;
}

std::string LockedSource::description(const RecordKey& key, RecordKind kind) {
  const std::lock_guard lock(mutex_);
  std::string text = kind == RecordKind::Person ? "ABPerson (" : "ABGroup (";
  text += key.text() + ")\n  stored in: ";
  text += store_.address().folder();
  text += "/Library/Application Support/AddressBook/";
  const auto entry = overlay_.find(key);
  const auto container = entry ? committed_.containers().inRow(entry->container) : nullptr;
  if (container && container->type != 1) {
    text += "Sources/" + standardContainerId(container->identifier) + "/";
  }
  return text + "AddressBook.db\n";
}

SaveReport LockedSource::save(std::vector<TagChange> tags) {
  const auto acts = RunningAct::ofThread();
  const std::lock_guard lock(mutex_);
  SaveReport report;
  try {
    auto changes = overlay_.changes(acts);
    changes.tags = std::move(tags);
    if (changes.empty()) {
      store_.sync();  // creations were committed without waiting for the disk
      report.done = true;
    } else {
      report = store_.commit(changes);
    }
  } catch (const StoreError& error) {
    report.failure = failureOf(error);
  }
  if (report.done) overlay_.noteWritten(acts);
  return report;
}

RecordKeys LockedSource::unsavedRemovals() {
  const auto acts = RunningAct::ofThread();
  const std::lock_guard lock(mutex_);
  return overlay_.removals(acts);
}

UnsavedChanges LockedSource::unsavedChanges() {
  const auto acts = RunningAct::ofThread();
  const std::lock_guard lock(mutex_);
  return overlay_.unsavedChanges(acts);
}

void LockedSource::revert() {
  takeBack(RunningAct::ofThread());
}

void LockedSource::takeBack(const ActIds& acts) {
  const std::lock_guard lock(mutex_);
  overlay_.takeBack(acts);
}

}  // namespace ox
