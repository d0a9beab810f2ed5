#include <algorithm>
#include <utility>

#include "ox/platform/store/source/locked_source.hpp"
#include "ox/records/clean_text.hpp"

// What the container database, import and export ask and write: committed rows, and unsaved ones
// only where they say so.

namespace ox {
namespace {

using Look = CommittedRecords::Look;

// Names the first value that does not fit as the request's reason.
bool isStorable(SaveRequest& request) {
  const auto check = [&](const PropertyBag& properties) {
    request.reason = misfitOf(properties);
    return request.reason.empty();
  };
  return std::all_of(request.additions.begin(), request.additions.end(),
                     [&](const auto& record) { return check(record.properties); }) &&
         std::all_of(request.replacements.begin(), request.replacements.end(),
                     [&](const auto& record) { return check(record.properties); });
}

}  // namespace

template <typename Id>
ContainerPtr LockedSource::containerThatHolds(const Id& id, RecordKind kind) {
  const std::lock_guard lock(mutex_);
  // A record never changes its container, so only a record that is not known is looked for anew.
  store_.refresh(Look::AtMostEvery10ms);
  auto entry = overlay_.find(id);
  if (!entry) {
    store_.refresh(Look::Now);
    entry = overlay_.find(id);
  }
  return entry && entry->kind == kind ? committed_.containers().inRow(entry->container) : nullptr;
}

std::vector<ContainerPtr> LockedSource::containers() {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return committed_.containers().all();
}

ContainerPtr LockedSource::containerOf(std::string_view identifier, RecordKind kind) {
  return containerThatHolds(identifier, kind);
}

ContainerPtr LockedSource::containerOf(const RecordKey& key, RecordKind kind) {
  return containerThatHolds(key, kind);
}

ContainerPtr LockedSource::containerNamed(std::string_view identifier) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  auto& containers = committed_.containers();
  return containers.inRow(containers.rowOf(identifier));
}

RecordKeys LockedSource::recordsIn(std::string_view containerIdentifier, RecordKind kind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return overlay_.recordsIn(containerIdentifier, kind);
}

bool LockedSource::isEmpty(std::string_view containerIdentifier, RecordKind kind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return committed_.isEmpty(containerIdentifier, kind);
}

std::shared_ptr<const PropertyBag> LockedSource::committedValues(const RecordKey& key) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  return overlay_.storedValues(key);
}

std::vector<RecordContent> LockedSource::committedContents(std::span<const RecordKey> keys,
                                                           std::size_t bytes) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return overlay_.storedContents(keys, bytes);
}

std::vector<EncodedContent> LockedSource::encodedContents(std::span<const RecordKey> keys,
                                                          std::size_t bytes) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return store_.committed().encodedContents(keys, bytes);
}

Data LockedSource::committedImage(const RecordKey& key) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::AtMostEvery10ms);
  return overlay_.storedImage(key);
}

RecordKeysPtr LockedSource::committedChildren(const RecordKey& group, RecordKind kind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return overlay_.storedChildren(group, kind);
}

std::vector<RecordKeysPtr> LockedSource::committedChildren(std::span<const RecordKey> groups,
                                                           RecordKind kind) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return overlay_.storedChildren(groups, kind);
}

void LockedSource::pinMoment() {
  const std::lock_guard lock(mutex_);
  store_.pinMoment();
}

StoreMoment LockedSource::lastMoment() {
  const std::lock_guard lock(mutex_);
  store_.leaveMoment();
  store_.refresh(Look::Now);
  return committed_.moment();
}

void LockedSource::unpinMoment() {
  const std::lock_guard lock(mutex_);
  store_.unpinMoment();
}

StoreMoment LockedSource::moment() {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return committed_.moment();
}

std::size_t LockedSource::mostRecords() {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return static_cast<std::size_t>(std::max<std::int64_t>(committed_.nextRow() - 1, 0));
}

bool LockedSource::execute(SaveRequest& request) {
  if (!isStorable(request)) return false;
  for (auto& record : request.additions) {
    if (cleanText(record.properties)) record.fingerprint.reset();
  }
  for (auto& record : request.replacements) cleanText(record.properties);
  const auto act = RunningAct::ownerOfChange();
  const std::lock_guard lock(mutex_);
  if (act == kNobodysAct || !request.onlyCreates()) return store_.execute(request);
  store_.refresh(Look::AtMostEvery10ms);
  for (const auto& record : request.additions) {
    request.reason = store_.refusalOfChangeIn(committed_.containers().rowOf(record.container));
    if (!request.reason.empty()) return false;
  }
  return overlay_.create(act, RunningAct::ofThread(), request);
}

std::vector<FoundRecords> LockedSource::matches(std::string_view containerIdentifier,
                                                RecordKind kind,
                                                std::span<const SoughtRecord> sought) {
  const std::lock_guard lock(mutex_);
  store_.refresh(Look::Now);
  return committed_.matches(containerIdentifier, kind, sought);
}

bool LockedSource::owesTags() {
  const std::lock_guard lock(mutex_);
  return store_.owesTags();
}

TagDebts LockedSource::tagDebts() {
  const std::lock_guard lock(mutex_);
  return store_.tagDebts();
}

void LockedSource::noteFollowedTags(std::int64_t number) {
  const std::lock_guard lock(mutex_);
  store_.noteFollowedTags(number);
}

void LockedSource::checkpoint() {
  const std::lock_guard lock(mutex_);
  store_.checkpoint();
}

}  // namespace ox
