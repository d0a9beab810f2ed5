#include "ox/platform/AddressBook/ABAddressBook.hpp"

#include <algorithm>
#include <span>
#include <utility>

#include "ox/platform/AddressBook/answer.hpp"
#include "ox/platform/AddressBook/live_records.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {
namespace {

std::shared_ptr<ABRecord> liveRecord(const std::optional<RecordInfo>& record) {
  if (!record) return nullptr;
  if (record->kind == RecordKind::Person) return live_records::person(record->key);
  return live_records::group(record->key);
}

// By identifiers or by keys. Asked for by the thousand, so that what is known of a record only on
// the way to its object never stands in memory for all of a large store.
template <typename Id>
std::vector<std::shared_ptr<ABRecord>> liveRecords(std::span<const Id> ids) {
  constexpr std::size_t kAskedAtOnce = 1000;
  std::vector<std::shared_ptr<ABRecord>> live;
  live.reserve(ids.size());
  while (live.size() < ids.size()) {
    const auto rest = ids.subspan(live.size());
    const auto some = rest.first(std::min(rest.size(), kAskedAtOnce));
    for (const auto& record : recordSource().recordsWith(some)) live.push_back(liveRecord(record));
  }
  return live;
}

std::vector<std::shared_ptr<ABPerson>> personsMatching(TextView words, SearchQuery::In in) {
  if (!words) return {};
  const SearchQuery query(*words, in);
  if (query.empty()) return {};
  return live_records::persons(recordSource().personsMatching(query));
}

}  // namespace

std::shared_ptr<ABAddressBook> ABAddressBook::sharedAddressBook() {
  static auto& shared = *new std::shared_ptr<ABAddressBook>(new ABAddressBook);
  return shared;
}

std::vector<std::shared_ptr<ABPerson>> ABAddressBook::people() {
  return answer([] { return live_records::persons(recordSource().records(RecordKind::Person)); });
}

std::vector<std::shared_ptr<ABGroup>> ABAddressBook::groups() {
  return answer([] { return live_records::groups(recordSource().records(RecordKind::Group)); });
}

std::vector<std::shared_ptr<ABPerson>> ABAddressBook::peopleMatching(TextView words) {
  return answer([&] { return personsMatching(words, SearchQuery::In::KnownFields); });
}

std::vector<std::shared_ptr<ABPerson>> ABAddressBook::peopleNamed(TextView words) {
  return answer([&] { return personsMatching(words, SearchQuery::In::Names); });
}

std::shared_ptr<ABRecord> ABAddressBook::recordForUniqueId(TextView uniqueId) {
  if (!uniqueId) return nullptr;
  return answer([&] { return liveRecord(recordSource().record(*uniqueId)); });
}

std::vector<std::shared_ptr<ABRecord>> ABAddressBook::recordsStartingWith(TextView beginning,
                                                                          RecordKind kind,
                                                                          std::size_t atMost) {
  if (!beginning) return {};
  return answer([&] {
    const auto keys = recordSource().recordsStartingWith(*beginning, kind, atMost);
    return liveRecords(std::span(keys));
  });
}

std::shared_ptr<ABRecord> ABAddressBook::recordForKey(const RecordKey& key) {
  if (key.isNone()) return nullptr;
  return answer([&] { return liveRecord(recordSource().record(key)); });
}

std::vector<std::shared_ptr<ABRecord>> ABAddressBook::recordsForUniqueIds(
    const std::vector<std::string>& uniqueIds) {
  auto live = answer([&] { return liveRecords(std::span(uniqueIds)); });
  live.resize(uniqueIds.size());  // when the store failed
  return live;
}

std::vector<std::shared_ptr<ABRecord>> ABAddressBook::recordsForKeys(
    const std::vector<RecordKey>& keys) {
  auto live = answer([&] { return liveRecords(std::span(keys)); });
  live.resize(keys.size());
  return live;
}

bool ABAddressBook::removeRecord(const std::shared_ptr<ABRecord>& record) {
  if (!record) return false;
  return answer([&] { return recordSource().remove(record->key(), record->kind()); });
}

bool ABAddressBook::save() {
  return saveAndReturnError().done;
}

SaveReport ABAddressBook::saveAndReturnError(const std::vector<TagChange>& tags) {
  SaveReport report;
  try {
    report = recordSource().save(tags);
  } catch (const std::exception& error) {
    report.failure = failureOf(error);
  }
  if (!report.done) failures::notice(report.failure);
  for (const auto& dropped : report.dropped) failures::notice(dropped);
  return report;
}

bool ABAddressBook::hasUnsavedChanges() {
  return !unsavedChanges().empty();
}

UnsavedChanges ABAddressBook::unsavedChanges() {
  return answer([] { return recordSource().unsavedChanges(); });
}

void ABAddressBook::revert() {
  recordSource().revert();
}

}  // namespace ox
