#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ox/platform/store/values/sync_rows.hpp"

namespace ox {

// What whoever synchronises asks of the store beside its contacts; written by
// ContainerSource::execute (SaveRequest::sync). Every operation is safe from any thread and throws
// StoreError when the store fails or a row is damaged. Lists are in the order of their ids. An
// unknown container has nothing.
class SyncSource {
 public:
  SyncSource() = default;
  SyncSource(const SyncSource&) = delete;
  SyncSource& operator=(const SyncSource&) = delete;
  virtual ~SyncSource() = default;

  virtual std::vector<SyncLogin> syncLogins() = 0;
  virtual std::vector<SyncBook> syncBooks() = 0;
  virtual std::vector<SyncCardNow> syncCards(std::string_view container) = 0;
  // Those whose record is gone or says something else than was agreed, and those with an intent:
  // one question, which reads no values.
  virtual std::vector<SyncCardNow> changedSyncCards(std::string_view container) = 0;
  virtual std::vector<SyncCardNow> syncCardsOfGroups(std::string_view container) = 0;
  // In the order of the paths; id 0 for one that is not there.
  virtual std::vector<SyncCardNow> syncCardsAt(std::string_view container,
                                               std::span<const std::string> paths) = 0;
  // Those of persons with something beside values and picture (SyncCard::beside), and those that
  // were refused.
  virtual std::vector<SyncCardNow> taggedSyncCards(std::string_view container) = 0;
  virtual std::vector<SyncCardNow> refusedSyncCards(std::string_view container) = 0;
  virtual std::size_t countSyncCards(std::string_view container) = 0;
  // Of those of which something is agreed.
  virtual std::size_t countAgreedSyncCards(std::string_view container) = 0;
  virtual std::vector<RecordWithoutCard> recordsWithoutCard(std::string_view container) = 0;
  virtual std::vector<SyncCard::Texts> syncCardTexts(std::span<const std::int64_t> ids) = 0;
  virtual std::vector<SyncConflict> syncConflicts() = 0;
  // The last first.
  virtual std::vector<SyncRun> syncRuns(std::string_view container, std::size_t atMost) = 0;
};

}  // namespace ox
