#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "ox/base/sqlite/plain_file.hpp"

namespace ox::sqlite {

// The pages in a write-ahead log that were committed, read without the database. The form of the
// log is told at sqlite.org/fileformat2.html. Used by one thread at a time.
class LogPages {
 public:
  // Of the log at that path; one that is not there holds none.
  explicit LogPages(const std::string& path);

  // 0 when there is no log.
  std::uint32_t pageBytes() const { return pageBytes_; }
  // Of the database after the last commit, as that says.
  std::uint32_t count() const { return count_; }
  // How many pages the log has room for.
  std::uint64_t room() const;
  bool holds(std::uint32_t page) const { return places_.contains(page); }
  // Its newest bytes; missing when the disk does not give them.
  std::optional<std::string> page(std::uint32_t page) const;

  // The head of the log cannot be read, and so nothing of it.
  bool isHeadDamaged() const { return headDamaged_; }
  // How many pages are damaged that were committed, as pages before and behind them tell. The
  // database believes nothing from the first of these on. The first page of a commit tells nothing:
  // behind a commit stands what was written in vain.
  std::uint64_t damagedPages() const { return damaged_; }

 private:
  void read(const std::string& header);

  PlainFile file_;
  std::uint32_t pageBytes_ = 0;
  std::uint32_t count_ = 0;
  std::uint64_t damaged_ = 0;
  bool headDamaged_ = false;
  std::unordered_map<std::uint32_t, std::uint64_t> places_;  // where the newest of a page begins
};

}  // namespace ox::sqlite
