#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace ox::faults {

// One change to the files of a folder.
struct Event {
  enum class Kind {
    Found,         // the file was there before, with these bytes
    Create,        //
    Write,         // these bytes at that place
    Truncate,      // to that size
    Sync,          // the file, and the folder when the file is a new one
    Delete,        //
    DeleteSynced,  // and the folder synced
    SyncBytes,     // the file, and no folder
    SyncFolder,    // the names in it
    Rename,        // its new name is the bytes
  };
  Kind kind = Kind::Write;
  std::string name;
  std::int64_t place = 0;
  std::string bytes;
};

using DiskLog = std::vector<Event>;

// What a power cut leaves of what was not synced; what was synced is there always.
enum class Loss {
  All,
  Nothing,
  Tail,    // of each file a beginning of its changes is there, the last one torn
  Chance,  // of each file any of its changes are there, any sectors of them
};

// Plays a log again, to show the folder as a power cut would leave it. Names appear and vanish in
// the order of the log. The log must outlive it.
class DiskReplay {
 public:
  explicit DiskReplay(const DiskLog& log) : log_(log) {}

  // Goes on to the moment after that many events; never back.
  void advanceTo(std::size_t events);
  // Writes the files into a folder, which must be empty. The same seed gives the same files.
  void writeInto(const std::filesystem::path& folder, Loss loss, std::uint32_t seed) const;

 private:
  struct File {
    std::string synced;
    std::vector<const Event*> since;
  };
  using FilePtr = std::shared_ptr<File>;  // null: no such file
  using Names = std::map<std::string, FilePtr>;

  void play(const Event& event);
  void syncBytes(File& file);
  void settleNames();
  void settleNamesIn(const std::string& folder);
  static std::string contentOf(const File& file, Loss loss, std::mt19937& chance);

  const DiskLog& log_;
  std::size_t played_ = 0;
  Names now_;
  Names synced_;
  std::vector<std::pair<std::string, FilePtr>> namesSince_;
};

}  // namespace ox::faults
