#pragma once

#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "tests/faults/disk_log.hpp"

namespace ox::faults {

// How a disk fails.
enum class Fault {
  Full,        // no write finds room and no file can be made, until it is mended
  Broken,      // no change of any kind is possible, until it is mended
  BrokenOnce,  // one change is not possible, the next one is
  UnreadOnce,  // one read is not possible, the next one is; nothing else is counted
};

// The disk under SQLite in a test process: SQLite's default file system, which does the real work,
// behind a layer that can fail any change and notes what changed. The product's own syncs pass
// through it too. Safe from any thread.
class FaultyDisk {
 public:
  // In place from the first call on: to be made before any database is opened.
  static FaultyDisk& shared();

  // The n-th change (or read) from now on fails, 1 being the next one. What counts as a change
  // depends on the fault.
  void failAt(std::uint64_t n, Fault fault);
  // Whether it came to that; nothing fails any more.
  bool mend();

  // Notes every change to the databases in that folder. Those that are there already are taken as
  // they are when they are first opened.
  void record(const std::string& folder);
  void stopRecording() { record({}); }
  const DiskLog& log() const { return log_; }
  // Folders whose names were synced without SQLite, since the start.
  std::set<std::string> syncedFolders();

  // For the layer. A code of SQLite's, 0 when the change may be made.
  enum class Change { Create, Grow, Write, Truncate, Sync, Delete, Read };
  int failureOf(Change change);
  void note(Event::Kind kind, std::string_view path, std::int64_t place = 0,
            std::string_view bytes = {});
  void noteFolderSync(const std::string& folder);

 private:
  FaultyDisk();

  std::mutex mutex_;
  std::uint64_t changesLeft_ = 0;  // until the fault; 0: none is wanted
  Fault fault_ = Fault::Full;
  bool struck_ = false;
  std::string folder_;
  std::set<std::string> syncedFolders_;
  DiskLog log_;
};

}  // namespace ox::faults
