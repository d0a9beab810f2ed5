#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "ox/base/sqlite/log_pages.hpp"
#include "ox/base/sqlite/plain_file.hpp"

namespace ox::sqlite {

// The pages of a database file as they were committed last, read without the database: what is
// damaged hides nothing but itself. The form of the files is told at sqlite.org/fileformat2.html.
// Reads what others may be writing, so nobody should. Used by one thread at a time.
class PageFile {
 public:
  // Throws FailureError when the file cannot be opened or holds not even one page.
  explicit PageFile(const std::string& path);

  std::uint32_t pageBytes() const { return pageBytes_; }
  // The bytes of a page that hold content.
  std::uint32_t usableBytes() const { return pageBytes_ - reservedBytes_; }
  // Pages are numbered from 1 to this.
  std::uint32_t count() const { return count_; }
  // Missing when the disk does not give it, which is noted.
  std::optional<std::string> page(std::uint32_t number);
  // Whether the database holds that page free: its content was removed.
  bool isFree(std::uint32_t number) const { return free_.contains(number); }
  // Whether another page of a table leads to that one.
  bool isLedTo(std::uint32_t number) const { return led_.contains(number); }

  // What was not as it should be, one sentence each.
  const std::vector<std::string>& damages() const { return damages_; }

 private:
  std::optional<std::string> pageOfFile(std::uint32_t number);
  void readHeader();
  void meetLog();
  void findFreePages();
  void findTablePages();

  PlainFile file_;
  LogPages log_;
  bool hasLog_ = false;  // and it goes with the file
  std::uint32_t pageBytes_ = 0;
  std::uint32_t reservedBytes_ = 0;
  std::uint32_t count_ = 0;
  std::unordered_set<std::uint32_t> led_;
  std::unordered_set<std::uint32_t> free_;
  std::unordered_set<std::uint32_t> unread_;
  std::vector<std::string> damages_;
};

}  // namespace ox::sqlite
