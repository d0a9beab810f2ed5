#pragma once

#include <cstdint>

#include "ox/base/data.hpp"

namespace ox {

// Bytes put aside in a private file without a name, so that many unsaved pictures do not fill the
// memory. The file loses its name as soon as it is open: no other program can open it, and the
// system frees it when this process ends, in whatever way. What is small is gathered first, so that
// a little of it makes no file. Used by one thread at a time; throws StoreError when the disk
// refuses.
class SpillFile {
 public:
  struct Place {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
  };

  SpillFile() = default;
  SpillFile(const SpillFile&) = delete;
  SpillFile& operator=(const SpillFile&) = delete;
  ~SpillFile();

  Place put(const std::string& bytes);
  Data get(const Place& place) const;
  // Gives the room of those bytes back to the disk.
  void drop(const Place& place) const;
  // Forgets everything that was put aside.
  void clear();

 private:
  void write(const std::string& bytes, std::uint64_t offset);
  // Where what is gathered begins.
  std::uint64_t written() const { return end_ - gathered_.size(); }

  int file_ = -1;
  std::uint64_t end_ = 0;
  std::string gathered_;
};

// Data that is either in memory or, when large, in the spill file. Missing data is kept as missing.
class SpillableData {
 public:
  SpillableData(Data data, SpillFile& file);
  Data get() const;
  // Frees what it takes on the disk. It must not be asked for its data any more.
  void drop() const;

 private:
  Data small_;
  const SpillFile* file_ = nullptr;
  SpillFile::Place place_;
};

// Bytes put aside however few they are, for whoever has very many of them.
class BytesAside {
 public:
  BytesAside(const std::string& bytes, SpillFile& file) : file_(&file), place_(file.put(bytes)) {}
  std::string get() const { return *file_->get(place_); }

 private:
  const SpillFile* file_;
  SpillFile::Place place_;
};

}  // namespace ox
