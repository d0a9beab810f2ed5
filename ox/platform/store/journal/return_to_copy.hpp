#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <unordered_map>
#include <unordered_set>

#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/file/stored_rows.hpp"
#include "ox/platform/store/values/act.hpp"
#include "ox/platform/store/values/save_request.hpp"

namespace ox {

// Decides the act that makes a store hold what a copy of it holds: their difference, as rows to
// bring back, to add, to change and to remove. So it is one commit like any other, other processes
// follow it by the journal, and it can be taken back. Records and accounts are the same when their
// identifiers are. What comes back has the rows and numbers that it had, where the copy is one of
// this very store. Writes nothing. Borrows all that it is given, the files until the act is
// written. Used by one thread at a time; throws sqlite::Error and DamagedProperties.
class ReturnToCopy {
 public:
  // `added` takes the additions, which the act borrows.
  ReturnToCopy(StoreFile& store, StoreFile& copy, CommittedRecords& committed, Act& act,
               std::deque<NewRecord>& added);
  ReturnToCopy(const ReturnToCopy&) = delete;
  ReturnToCopy& operator=(const ReturnToCopy&) = delete;

  void decide();

 private:
  bool isOfThisStore();
  void settleContainers();
  void settleRecords();
  void settleLinks();
  void keep(const RecordEntry& now, std::int64_t then);
  void bringBack(const RecordEntry& record, bool isTaken);
  std::function<Data()> reader(std::int64_t row);

  StoreFile& store_;
  StoreFile& copy_;
  CommittedRecords& committed_;
  Act& act_;
  std::deque<NewRecord>& added_;
  StoredRows now_;
  StoredRows then_;
  bool ofThisStore_ = false;
  // By the row in the copy: what each account and record is in the store when the act is written.
  std::unordered_map<std::int32_t, std::int32_t> containers_;
  std::unordered_map<std::int64_t, RecordEntry> records_;
  std::unordered_set<std::int64_t> kept_;  // rows of the store
};

}  // namespace ox
