#include "tests/faults/faulty_disk.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <sqlite3.h>
#include <unistd.h>

#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

using Change = FaultyDisk::Change;

// SQLite gives the room for this and, behind it, for the real file.
struct File : sqlite3_file {
  const char* name;  // SQLite's own; null for a temporary file
  sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
  const sqlite3_io_methods& methods() { return *real()->pMethods; }
  std::string_view path() const { return name == nullptr ? std::string_view() : name; }
};
static_assert(sizeof(File) % alignof(std::max_align_t) == 0);

File& fileOf(sqlite3_file* file) {
  return *static_cast<File*>(file);
}

sqlite3_vfs& realSystem() {
  static auto* const real = sqlite3_vfs_find("unix");
  return *real;
}

int closeFile(sqlite3_file* file) {
  return fileOf(file).methods().xClose(fileOf(file).real());
}

int readFile(sqlite3_file* file, void* bytes, int size, sqlite3_int64 place) {
  if (const int failure = FaultyDisk::shared().failureOf(Change::Read)) return failure;
  return fileOf(file).methods().xRead(fileOf(file).real(), bytes, size, place);
}

int writeFile(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 place) {
  auto& disk = FaultyDisk::shared();
  auto& target = fileOf(file);
  const int failure = disk.failureOf(Change::Write);
  // A disk that gets full takes what still fits.
  const int written = failure == SQLITE_OK ? size : size / 2;
  const int result = target.methods().xWrite(target.real(), bytes, written, place);
  disk.note(Event::Kind::Write, target.path(), place,
            {static_cast<const char*>(bytes), static_cast<std::size_t>(written)});
  return failure == SQLITE_OK ? result : failure;
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
  auto& disk = FaultyDisk::shared();
  if (const int failure = disk.failureOf(Change::Truncate)) return failure;
  disk.note(Event::Kind::Truncate, fileOf(file).path(), size);
  return fileOf(file).methods().xTruncate(fileOf(file).real(), size);
}

// No real sync: the machine of the tests keeps its power.
int syncFile(sqlite3_file* file, int) {
  auto& disk = FaultyDisk::shared();
  if (const int failure = disk.failureOf(Change::Sync)) return failure;
  disk.note(Event::Kind::Sync, fileOf(file).path());
  return SQLITE_OK;
}

int fileSize(sqlite3_file* file, sqlite3_int64* size) {
  return fileOf(file).methods().xFileSize(fileOf(file).real(), size);
}

int lockFile(sqlite3_file* file, int level) {
  return fileOf(file).methods().xLock(fileOf(file).real(), level);
}

int unlockFile(sqlite3_file* file, int level) {
  return fileOf(file).methods().xUnlock(fileOf(file).real(), level);
}

int checkReservedLock(sqlite3_file* file, int* isReserved) {
  return fileOf(file).methods().xCheckReservedLock(fileOf(file).real(), isReserved);
}

int controlFile(sqlite3_file* file, int operation, void* argument) {
  return fileOf(file).methods().xFileControl(fileOf(file).real(), operation, argument);
}

int sectorSize(sqlite3_file* file) {
  return fileOf(file).methods().xSectorSize(fileOf(file).real());
}

int deviceCharacteristics(sqlite3_file* file) {
  return fileOf(file).methods().xDeviceCharacteristics(fileOf(file).real());
}

// The index of the write-ahead log: in shared memory, gone with the power, but it takes room.
int mapIndex(sqlite3_file* file, int region, int size, int extend, volatile void** memory) {
  std::error_code none;
  const auto room = std::filesystem::file_size(std::string(fileOf(file).path()) + "-shm", none);
  const bool grows = extend != 0 && (none || room < static_cast<std::uint64_t>(size) *
                                                        (static_cast<std::uint64_t>(region) + 1));
  if (grows) {
    if (const int failure = FaultyDisk::shared().failureOf(Change::Grow)) return failure;
  }
  return fileOf(file).methods().xShmMap(fileOf(file).real(), region, size, extend, memory);
}

int lockIndex(sqlite3_file* file, int offset, int count, int flags) {
  return fileOf(file).methods().xShmLock(fileOf(file).real(), offset, count, flags);
}

void indexBarrier(sqlite3_file* file) {
  fileOf(file).methods().xShmBarrier(fileOf(file).real());
}

int unmapIndex(sqlite3_file* file, int remove) {
  return fileOf(file).methods().xShmUnmap(fileOf(file).real(), remove);
}

constexpr sqlite3_io_methods kMethods = {2,
                                         closeFile,
                                         readFile,
                                         writeFile,
                                         truncateFile,
                                         syncFile,
                                         fileSize,
                                         lockFile,
                                         unlockFile,
                                         checkReservedLock,
                                         controlFile,
                                         sectorSize,
                                         deviceCharacteristics,
                                         mapIndex,
                                         lockIndex,
                                         indexBarrier,
                                         unmapIndex,
                                         nullptr,
                                         nullptr};

int openFile(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags) {
  auto& disk = FaultyDisk::shared();
  auto& opened = fileOf(file);
  opened.pMethods = nullptr;
  opened.name = name;
  const bool isNew = name == nullptr || ::access(name, F_OK) != 0;
  if (isNew && (flags & SQLITE_OPEN_CREATE) != 0) {
    if (disk.failureOf(Change::Create) != SQLITE_OK) return SQLITE_CANTOPEN;
  }
  const int result = realSystem().xOpen(&realSystem(), name, opened.real(), flags, outFlags);
  if (result != SQLITE_OK) return result;
  opened.pMethods = &kMethods;
  disk.note(isNew ? Event::Kind::Create : Event::Kind::Found, opened.path());
  return SQLITE_OK;
}

int deleteFile(sqlite3_vfs*, const char* name, int syncFolder) {
  auto& disk = FaultyDisk::shared();
  if (const int failure = disk.failureOf(Change::Delete)) return failure;
  const int result = realSystem().xDelete(&realSystem(), name, syncFolder);
  if (result != SQLITE_OK) return result;
  disk.note(syncFolder != 0 ? Event::Kind::DeleteSynced : Event::Kind::Delete, name);
  return SQLITE_OK;
}

void putInPlace() {
  static auto& system = *new sqlite3_vfs(realSystem());
  system.szOsFile += static_cast<int>(sizeof(File));
  system.zName = "faulty";
  system.xOpen = openFile;
  system.xDelete = deleteFile;
  sqlite3_vfs_register(&system, 1);
}

int codeOf(Change change) {
  switch (change) {
    case Change::Create:
      return SQLITE_CANTOPEN;
    case Change::Grow:
      return SQLITE_IOERR_SHMSIZE;
    case Change::Write:
      return SQLITE_IOERR_WRITE;
    case Change::Truncate:
      return SQLITE_IOERR_TRUNCATE;
    case Change::Sync:
      return SQLITE_IOERR_FSYNC;
    case Change::Delete:
      return SQLITE_IOERR_DELETE;
    case Change::Read:
      return SQLITE_IOERR_READ;
  }
  return SQLITE_IOERR;
}

bool concerns(Fault fault, Change change) {
  if (fault == Fault::UnreadOnce) return change == Change::Read;
  if (fault != Fault::Full) return change != Change::Read;
  return change == Change::Create || change == Change::Grow || change == Change::Write;
}

}  // namespace

FaultyDisk::FaultyDisk() {
  sqlite3_initialize();
  putInPlace();
}

FaultyDisk& FaultyDisk::shared() {
  static auto& disk = *new FaultyDisk;
  return disk;
}

void FaultyDisk::failAt(std::uint64_t n, Fault fault) {
  const std::lock_guard lock(mutex_);
  changesLeft_ = n;
  fault_ = fault;
  struck_ = false;
}

bool FaultyDisk::mend() {
  const std::lock_guard lock(mutex_);
  changesLeft_ = 0;
  return struck_;
}

int FaultyDisk::failureOf(Change change) {
  const std::lock_guard lock(mutex_);
  if (changesLeft_ == 0 || !concerns(fault_, change)) return SQLITE_OK;
  if (changesLeft_ > 1) {
    --changesLeft_;
    return SQLITE_OK;
  }
  struck_ = true;
  if (fault_ == Fault::BrokenOnce || fault_ == Fault::UnreadOnce) changesLeft_ = 0;
  return fault_ == Fault::Full && change == Change::Write ? SQLITE_FULL : codeOf(change);
}

std::set<std::string> FaultyDisk::syncedFolders() {
  const std::lock_guard lock(mutex_);
  return syncedFolders_;
}

void FaultyDisk::noteFolderSync(const std::string& folder) {
  const std::lock_guard lock(mutex_);
  syncedFolders_.insert(folder);
}

void FaultyDisk::record(const std::string& folder) {
  const std::lock_guard lock(mutex_);
  folder_ = folder;
}

void FaultyDisk::note(Event::Kind kind, std::string_view path, std::int64_t place,
                      std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  const std::filesystem::path file(path);
  if (folder_.empty() || file.parent_path() != folder_) return;
  const auto name = file.filename().string();
  std::string content(bytes);
  if (kind == Event::Kind::Found) {
    const bool isKnown = std::any_of(log_.begin(), log_.end(),
                                     [&](const Event& event) { return event.name == name; });
    if (isKnown) return;
    content = support::fileBytes(file);
  }
  log_.push_back({kind, name, place, std::move(content)});
}

}  // namespace ox::faults

// The product syncs some files without SQLite. This takes the place of the system's own function. A
// folder's sync never fails: there are file systems without one, so nobody counts on it.
extern "C" int fsync(int file) {
  using ox::faults::FaultyDisk;
  std::array<char, 4096> buffer{};
  const auto link = "/proc/self/fd/" + std::to_string(file);
  const auto size = ::readlink(link.c_str(), buffer.data(), buffer.size());
  const std::string path(buffer.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
  if (std::filesystem::is_directory(path)) FaultyDisk::shared().noteFolderSync(path);
  if (!std::filesystem::is_regular_file(path)) return 0;
  if (FaultyDisk::shared().failureOf(FaultyDisk::Change::Sync) != SQLITE_OK) {
    errno = EIO;
    return -1;
  }
  FaultyDisk::shared().note(ox::faults::Event::Kind::Sync, path);
  return 0;
}
