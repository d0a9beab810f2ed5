#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/base/failure.hpp"
#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/committed/group_tree.hpp"
#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/platform/store/file/stored_rows.hpp"
#include "ox/platform/store/journal/net_changes.hpp"
#include "ox/platform/store/values/act.hpp"

namespace ox {

// The acts of one command, in the order in which they were written.
std::vector<JournalAct> actsOfCommand(JournalRows& journal, const JournalAct& first);

// Decides the act that takes a command back: what it added goes, what it removed comes back in its
// old row, with its old identifier, links and picture, and what it changed is as it was before.
// What other commands have changed since stays, property by property and entry by entry, and is
// named. Writes nothing. Borrows the file, the records and the act. Used by one thread at a time;
// throws StoreError and sqlite::Error.
class WayBack {
 public:
  WayBack(StoreFile& file, CommittedRecords& committed, Act& act);
  WayBack(const WayBack&) = delete;
  WayBack& operator=(const WayBack&) = delete;

  void decide(const std::vector<JournalAct>& command);
  // What others have changed since, each with the record and why it is not as it was.
  const std::vector<Failure>& stays() const { return stays_; }

 private:
  void readChanges(const std::vector<JournalAct>& command);
  void findOtherLinks();
  bool isAboutMine(const JournalRow& change) const;
  bool isMine(std::int64_t row) const;
  void bringContainersBack();
  void takeAdditionsAway();
  void takeAway(const RecordEntry& record);
  void settleRecord(std::int64_t row, const NetRecord& net);
  void bringBack(std::int64_t row, const NetRecord& net);
  void bringValuesBack(const RecordEntry& record, const NetRecord& net);
  void bringValueBack(PropertyId id, const NetRecord::Value& net, PropertyBag& properties,
                      const RecordKey& record);
  void bringPictureBack(const NetRecord& net, std::uint64_t now, Act::ChangedRecord& change);
  void settleLinks();
  // Appends the link to `back` when it is to come back.
  void settleLink(const NetChanges::Pair& pair, const NetLink& net,
                  std::vector<Act::ChangedLink>& back);
  void takeContainersAway();
  void settleTags();
  bool wasChangedSince(const RecordEntry& record);
  bool hasOtherValuesSince(const RecordEntry& record);
  // Missing when it is not there after this undo.
  std::optional<RecordEntry> entryThen(std::int64_t row);
  void bringLinkBack(const Act::ChangedLink& link);
  std::function<Data()> reader(std::int64_t imageRow);
  void stays(const RecordKey& record, const std::string& why);

  StoreFile& file_;
  CommittedRecords& committed_;
  JournalRows journal_;
  StoredRows stored_;
  Act& act_;
  NetChanges mine_;                            // what the command came to
  NetChanges others_;                          // what others have done since to the same records
  std::unordered_set<std::int64_t> relinked_;  // rows whose links others have changed since
  std::unordered_set<std::int64_t> removed_;   // rows that the act removes
  // Records that the command added and that stay, with their links and tags.
  std::unordered_set<std::int64_t> stayed_;
  std::unordered_set<std::string> stayedPersons_;
  std::unordered_map<std::int64_t, std::size_t> restored_;  // those it brings back, in its list
  GroupTree tree_;
  std::unordered_set<std::int32_t> containersBack_;
  std::vector<Failure> stays_;
};

}  // namespace ox
