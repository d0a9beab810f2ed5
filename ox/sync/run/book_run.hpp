#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/values/spill_file.hpp"
#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/remote/remote_book.hpp"
#include "ox/sync/run/look/book_look.hpp"
#include "ox/sync/run/look/local_book.hpp"
#include "ox/sync/run/steps/card_decisions.hpp"
#include "ox/sync/run/steps/card_step.hpp"
#include "ox/sync/synchronise.hpp"

namespace ox::sync {

// One run of one book: look at both sides, plan, guard, send, read back, commit. Every step before
// the sending only reads. Throws RemoteError and StoreError; the store is then as it was, but for
// what was noted as about to be created.
class BookRun {
 public:
  // Borrows the book elsewhere, the options and the report.
  BookRun(RemoteBook& remote, SyncBook book, const SyncOptions& options, BookReport& report);

  struct Start {
    // The login has said, of all its books at once, that nothing is new in this one.
    bool isSameThere = false;
    // It is asked so, and a token that is behind would cost a listing each time.
    bool isOneOfSeveral = false;
    bool listsAll = false;
    // Tells what is to be kept of what was learned about the server.
    std::function<std::string()> abilities = {};
  };
  // True when another look at the book may finish what this one could not.
  bool run(const Start& start);

  bool isPostponed() const { return isPostponed_; }

 private:
  void learnFacts();
  bool isDue(std::int64_t now) const;
  void plan(BookLook& look);
  void take(CardSides sides);
  void noteGroupSpelling(const CardSides& sides);
  bool isOnItsWay(const SyncCard& card);
  void createNew(const BookLook& look);
  void keepNew(const BookLook& look);
  void tellKept(const std::vector<CardSides>& changed);
  void tellNewConflicts();
  void tellLonelyGroups(const CategoryGroups& groups);
  bool mayGoOn(BookLook& look);
  std::optional<std::string> guarded(BookLook& look) const;
  void tell(SyncProgress::Step step, std::size_t done, std::size_t all) const;
  std::string tokenAfterSending(const Listing& listing, bool isOneOfSeveral);
  KnownRun thisRun(std::int64_t end) const;
  bool commit(const Listing& listing, const std::string& token, const Start& start,
              bool isComplete);

  RemoteBook& remote_;
  SyncBook book_;
  const SyncOptions& options_;
  BookReport& report_;
  LocalBook local_;
  SpillFile spill_;
  RunRules rules_;
  CardDecisions decisions_;
  CardSteps steps_;
  std::unordered_set<std::string> broughtBack_;  // UIDs, as members name them
  // Of other containers: records that are not sent yet.
  std::unordered_map<std::string, std::unordered_set<RecordKey>> waiting_;
  bool isPostponed_ = false;
  bool hasLearned_ = false;
  std::int64_t start_;
};

// Runs a book, and once more where somebody was faster, up to three times. True when it is to be
// run again after the other books: cards that were moved there wait for that. Throws as BookRun.
bool runBook(RemoteBook& remote, SyncBook book, const SyncOptions& options, BookRun::Start start,
             BookReport& report);

}  // namespace ox::sync
