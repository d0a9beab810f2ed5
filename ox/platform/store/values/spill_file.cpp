#include "ox/platform/store/values/spill_file.hpp"

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <utility>

#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

constexpr std::size_t kLarge = 16U << 10U;
constexpr std::size_t kMostGathered = 256U << 10U;

[[noreturn]] void fail(const std::string& what) {
  const int reason = errno;
  throw StoreError(reason == ENOSPC ? StoreError::Kind::Full : StoreError::Kind::Unavailable,
                   "the file for unsaved pictures: " + what + ": " + std::strerror(reason));
}

int openNameless() {
  const char* folder = std::getenv("TMPDIR");
  std::string name = folder != nullptr && *folder != '\0' ? folder : "/tmp";
  name += "/oxcontacts-XXXXXX";
  const int file = ::mkostemp(name.data(), O_CLOEXEC);
  if (file < 0) fail(name);
  ::unlink(name.c_str());
  return file;
}

}  // namespace

SpillFile::~SpillFile() {
  if (file_ >= 0) ::close(file_);
}

SpillFile::Place SpillFile::put(const std::string& bytes) {
  const bool isLarge = bytes.size() >= kLarge;
  if (!gathered_.empty() && (isLarge || gathered_.size() + bytes.size() > kMostGathered)) {
    write(gathered_, written());
    gathered_.clear();
  }
  if (isLarge) {
    write(bytes, end_);
  } else {
    gathered_ += bytes;
  }
  const Place place{end_, bytes.size()};
  end_ += bytes.size();
  return place;
}

void SpillFile::write(const std::string& bytes, std::uint64_t offset) {
  if (file_ < 0) file_ = openNameless();
  std::size_t written = 0;
  while (written < bytes.size()) {
    const auto count = ::pwrite(file_, bytes.data() + written, bytes.size() - written,
                                static_cast<off_t>(offset + written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("writing");
    written += static_cast<std::size_t>(count);
  }
}

Data SpillFile::get(const Place& place) const {
  assert(place.offset + place.size <= end_);
  if (place.offset >= written()) {
    return makeData(gathered_.substr(place.offset - written(), place.size));
  }
  std::string bytes(place.size, '\0');
  std::size_t read = 0;
  while (read < bytes.size()) {
    const auto count = ::pread(file_, bytes.data() + read, bytes.size() - read,
                               static_cast<off_t>(place.offset + read));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) fail("reading");
    read += static_cast<std::size_t>(count);
  }
  return makeData(std::move(bytes));
}

void SpillFile::drop(const Place& place) const {
  assert(place.offset + place.size <= end_);
  if (place.offset >= written()) return;
  // Where the file system knows no holes the room is free again after clear().
  ::fallocate(file_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(place.offset),
              static_cast<off_t>(place.size));
}

void SpillFile::clear() {
  end_ = 0;
  gathered_.clear();
  if (file_ >= 0) ::close(std::exchange(file_, -1));
}

SpillableData::SpillableData(Data data, SpillFile& file) {
  if (!data || data->size() < kLarge) {
    small_ = std::move(data);
    return;
  }
  place_ = file.put(*data);
  file_ = &file;
}

Data SpillableData::get() const {
  return file_ != nullptr ? file_->get(place_) : small_;
}

void SpillableData::drop() const {
  if (file_ != nullptr) file_->drop(place_);
}

}  // namespace ox
