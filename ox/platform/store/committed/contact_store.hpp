#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>

#include "ox/platform/store/committed/act_builder.hpp"
#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/committed/read_only_containers.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/act.hpp"
#include "ox/platform/store/values/record_changes.hpp"
#include "ox/platform/store/values/save_request.hpp"
#include "ox/platform/store/values/tag_debts.hpp"

namespace ox {

// One contact store: its committed records, and the ways of writing, each one act, whole or not at
// all. An act is decided from what is committed, without a lock, and then written in one step; when
// others have touched meanwhile what it was decided upon, it is decided again. Used by one thread
// at a time; every operation throws StoreError when the file fails.
class ContactStore {
 public:
  explicit ContactStore(StoreAddress address)
      : file_(std::move(address)), committed_(file_), readOnly_(file_, committed_) {}

  const StoreAddress& address() const { return file_.address(); }
  CommittedRecords& committed() { return committed_; }
  // What is known of the committed records, brought up to date; pinned, it stays as it is.
  void refresh(CommittedRecords::Look look);
  // Between both, what is read is of one moment, that of the first refresh; may be nested. A write
  // of this process ends the moment, and the next refresh begins another one.
  void pinMoment() { ++pins_; }
  void unpinMoment();
  // For whoever writes into the file otherwise than by an act.
  void leaveMoment() { snapshot_.reset(); }
  StoreFile& file() { return file_; }

  // A request of the container view; see ContainerSource::execute. Survives a killed process.
  bool execute(SaveRequest& request);
  // A save of the record view, and with it everything committed before. Survives a power cut.
  SaveReport commit(RecordChanges& changes);
  // Both return when every commit so far would survive a power cut; sync costs nothing when it
  // would already, checkpoint also empties the log.
  void sync() { file_.sync(); }
  void checkpoint();

  // Closes the file until it is needed again, unless what is read is pinned.
  void letGo();

  // See StoreFile.
  ABPropertyType storedType(std::string_view custom) { return file_.storedType(custom); }
  std::string refusalOf(PropertyId property) { return file_.refusalOf(property); }
  // Why nothing in the container of that row may be changed; empty when it may.
  std::string refusalOfChangeIn(std::int32_t container) { return readOnly_.refusalOf(container); }

  bool owesTags();
  TagDebts tagDebts();
  // The tag file has followed every act up to this one; the next act strikes them out.
  void noteFollowedTags(std::int64_t number) { followedTags_ = number; }

  // Decides an act and writes it. The decision is repeated as long as others come first, each time
  // from the beginning; false, and nothing was written, when it has come to nothing.
  using Decision = std::function<void(ActBuilder&)>;
  bool write(StoreFile::Outlive outlive, const Decision& decide);
  // Of the last act that this process wrote.
  const StoreMoment& writtenMoment() const { return writtenMoment_; }

 private:
  enum class Lock : std::uint8_t { WhenDecided, First };
  // Missing: to be decided again.
  std::optional<bool> tryWriting(Lock lock, const Uuid& name, const Decision& decide,
                                 std::unordered_set<RecordKey>& taken);
  bool commitAct(const Act& act, std::unordered_set<RecordKey>& taken,
                 sqlite::Transaction& transaction);
  StoreFile::Commit finish(sqlite::Transaction& transaction, const Act& act);
  void noteKnown(const RecordChanges& changes,
                 const std::vector<ActBuilder::MergedValue>& merged) noexcept;
  void settleOutdated(SaveRequest& request);
  void meet(const RecordChanges& changes);
  void meet(const SaveRequest& request);
  void leaveOutStored(std::span<NewRecord> additions);

  StoreFile file_;
  CommittedRecords committed_;
  ReadOnlyContainers readOnly_;
  std::optional<std::int64_t> followedTags_;
  StoreMoment writtenMoment_;
  int pins_ = 0;
  std::optional<sqlite::Snapshot> snapshot_;  // missing until somebody reads
};

}  // namespace ox
