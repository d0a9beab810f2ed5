#pragma once

#include <span>
#include <string>

#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/record_changes.hpp"
#include "ox/platform/store/values/save_request.hpp"

namespace ox {

class StoreTransaction;

// One contact store: its committed records, and the two ways of writing, each one transaction,
// whole or not at all. Used by one thread at a time; every operation throws StoreError when the
// file fails.
class ContactStore {
 public:
  explicit ContactStore(std::string path) : file_(std::move(path)), committed_(file_) {}

  const std::string& path() const { return file_.path(); }
  CommittedRecords& committed() { return committed_; }

  // A request of the container view; see ContainerSource::execute. Survives a killed process.
  bool execute(SaveRequest& request);
  // A save of the record view, and with it everything committed before. Survives a power cut.
  SaveReport commit(RecordChanges& changes);
  // Both return when every commit so far would survive a power cut; sync costs nothing when it
  // would already, checkpoint also empties the log.
  void sync() { file_.sync(); }
  void checkpoint() { file_.checkpoint(); }

 private:
  // One transaction around the step, then the memory follows.
  template <typename Step>
  void write(StoreFile::Outlive outlive, Step step);
  void settleOutdated(SaveRequest& request);
  void leaveOutStored(std::span<NewRecord> additions);

  StoreFile file_;
  CommittedRecords committed_;
};

}  // namespace ox
