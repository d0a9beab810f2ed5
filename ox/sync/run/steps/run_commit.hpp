#pragma once

#include <string>
#include <vector>

#include "ox/platform/store/values/save_request.hpp"
#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/remote/remote_book.hpp"
#include "ox/sync/run/look/local_book.hpp"
#include "ox/sync/run/steps/card_step.hpp"
#include "ox/sync/synchronise.hpp"

namespace ox::sync {

// The end of a run: everything that its steps come to, in one act of the store.
class RunCommit {
 public:
  RunCommit(LocalBook& local, RemoteBook& remote, CardSteps& steps, SpillFile& spill,
            BookReport& report)
      : local_(local), remote_(remote), steps_(steps), spill_(spill), report_(report) {}

  // Takes what became of what was sent into the rows of the steps, and tells it.
  void settleSent();
  // Writes it all, and with it these rows. Steps whose records were changed meanwhile are put off.
  // The book of the rows, which is the only one, then keeps the token of that one. Throws
  // StoreError.
  void write(SyncRows rows, const SyncBook& kept);

  // Another look at the book may finish what this one could not.
  bool needsAnotherRun() const { return needsAnotherRun_; }
  bool isBookReadOnly() const { return isBookReadOnly_; }

 private:
  void settle(CardStep& step);
  void settleDone(CardStep& step);
  void askAgain(CardStep& step);
  void lookForUid(CardStep& step);
  void takeNewUid(CardStep& step, CardContent& here);
  void refuse(CardStep& step, const std::string& reason, int code);
  void linkMembers(CardStep& step, SaveRequest& request);
  void linkCategories(const CategoryGroups& groups, SaveRequest& request);
  void addSettledConflicts(SaveRequest& request);
  void addMovedConflicts(SaveRequest& request);
  void relinkOthers(SaveRequest& request);
  void tellOnce(std::string note);
  bool canBeLinked(const RecordKey& group, const LocalBook::Member& member) const;
  bool wouldLieInItself(const RecordKey& group, const RecordKey& child) const;
  SaveRequest requestOf(const SyncRows& rows);
  void addRecordChanges(CardStep& step, SaveRequest& request);

  LocalBook& local_;
  RemoteBook& remote_;
  CardSteps& steps_;
  SpillFile& spill_;
  BookReport& report_;
  std::vector<std::pair<RecordKey, RecordKey>> newLinks_;  // groups in groups
  bool needsAnotherRun_ = false;
  bool isBookReadOnly_ = false;
};

}  // namespace ox::sync
