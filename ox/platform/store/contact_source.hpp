#pragma once

#include <memory>

#include "ox/platform/store/container_source.hpp"
#include "ox/platform/store/record_source.hpp"
#include "ox/platform/store/sync_source.hpp"

namespace ox {

class StoreJournal;

// One store as the two views above it need it. Whoever needs one side only takes that: the record
// database a RecordSource, the container database, import and export a ContainerSource.
class ContactSource : public RecordSource, public ContainerSource {
 public:
  // What was done to it, and the way back.
  virtual StoreJournal& journal() = 0;
  // What it keeps of accounts that are in step with others.
  virtual SyncSource& sync() = 0;
  // At the end of the process: lets go of the file, so that the last one brings the log into it.
  // Nothing when another thread is just using it.
  virtual void letGo() {}
};

// The source that both views use. Unless one was installed, the store at contactStore(), opened
// when first needed.
ContactSource& contactSource();
inline RecordSource& recordSource() {
  return contactSource();
}
inline ContainerSource& containerSource() {
  return contactSource();
}
inline SyncSource& syncSource() {
  return contactSource().sync();
}

// Puts another source in place, for the life of the process or until the next call. To be called
// before any record is handed out.
void installContactSource(std::shared_ptr<ContactSource> source);

}  // namespace ox
