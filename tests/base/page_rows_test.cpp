#include "ox/base/sqlite/page_rows.hpp"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/growth.hpp"

namespace ox::sqlite {
namespace {

constexpr std::size_t kPageBytes = 512;

void put(std::string& page, std::size_t at, std::size_t value, std::size_t bytes) {
  while (bytes-- > 0) page[at++] = static_cast<char>(value >> (8 * bytes));
}

// A number below 2^21 in three bytes, of which a reader takes seven bits each.
std::string threeBytes(std::size_t value) {
  return {static_cast<char>(0x80U | (value >> 14U)),
          static_cast<char>(0x80U | (value >> 7U & 0x7FU)), static_cast<char>(value & 0x7FU)};
}

// How much of a row's record stands on its own page.
std::size_t bytesHere(std::size_t record) {
  constexpr std::size_t kLeast = (kPageBytes - 12) * 32 / 255 - 23;
  const auto here = kLeast + (record - kLeast) % (kPageBytes - 4);
  return here > kPageBytes - 35 ? kLeast : here;
}

// The start of a row of one blob: the size of its record, the number 1, and the record's head,
// which may tell another size.
std::string rowStart(std::size_t record, std::size_t toldRecord) {
  constexpr std::size_t kHead = 4;
  return threeBytes(record) + '\1' + static_cast<char>(kHead) +
         threeBytes(2 * (toldRecord - kHead) + 12);
}

// A file whose first pages are damaged and whose other pages are a row's rest, each of which goes
// on with the next.
class MadeFile {
 public:
  explicit MadeFile(std::size_t pages) : pages_(pages, std::string(kPageBytes, '\0')) {
    pages_[0].replace(0, 16, "SQLite format 3\0", 16);
    put(pages_[0], 16, kPageBytes, 2);
  }

  MadeFile(const MadeFile&) = delete;
  MadeFile& operator=(const MadeFile&) = delete;
  ~MadeFile() { std::filesystem::remove(path_); }

  std::string& page(std::size_t number) { return pages_[number - 1]; }

  const std::string& written() const {
    std::ofstream file(path_, std::ios::binary | std::ios::trunc);
    for (const auto& page : pages_) file << page;
    return path_;
  }

 private:
  std::string path_ =
      (std::filesystem::temp_directory_path() / ("ox-pages-" + std::to_string(::getpid())))
          .string();
  std::vector<std::string> pages_;
};

// Half of the pages are full of what looks like rows, each as long as the other half.
std::uint64_t bytesReadAnywhere(std::size_t pages) {
  constexpr std::size_t kStride = 12;  // the start of a row, and where another one goes on
  MadeFile made(pages);
  const auto rest = pages / 2 + 1;
  auto record = (pages / 2 - 2) * kPageBytes;
  while (bytesHere(record) % kStride != 4) ++record;
  const auto start = rowStart(record, record);
  for (std::size_t number = 2; number < rest; ++number) {
    auto& page = made.page(number);
    for (std::size_t at = 0; at + kStride <= kPageBytes; at += kStride) {
      page.replace(at, start.size(), start);
      put(page, at + start.size(), rest, 4);
    }
  }
  PageFile file(made.written());
  PageRows rows(file);
  std::uint64_t bytes = 0;
  for (std::uint32_t number = 2; number < rest; ++number) {
    rows.anywhere(number, [&](const auto&, const PageRow& row) { bytes += row[0].bytes.size(); });
  }
  return bytes;
}

TEST(PageRows, RowsThatShareTheirPagesDoNotHaveTheFileReadForEach) {
  support::expectLinearGrowth(64, bytesReadAnywhere);
}

TEST(PageRows, WhatOnlyBeginsLikeARowTakesNothingFromARow) {
  constexpr std::size_t kRecord = 2'072;  // 40 bytes, and four pages
  MadeFile made(8);
  auto& damaged = made.page(2);
  for (std::size_t at = 0; at + 12 <= kPageBytes; at += 12) {
    damaged.replace(at, 8, rowStart(kRecord, kRecord + 1));
    put(damaged, at + 8, 4, 4);
  }
  auto& sound = made.page(3);
  const auto start = rowStart(kRecord, kRecord);
  sound.replace(100, start.size(), start);
  put(sound, 100 + 4 + bytesHere(kRecord), 4, 4);

  PageFile file(made.written());
  PageRows rows(file);
  int found = 0;
  rows.anywhere(2, [&](const auto&, const PageRow&) { ++found; });
  EXPECT_EQ(found, 0);
  std::vector<std::size_t> sizes;
  rows.anywhere(3, [&](const RowPlace& place, const PageRow& row) {
    if (place.offset == 100) sizes.push_back(row[0].bytes.size());
  });
  EXPECT_EQ(sizes, std::vector<std::size_t>{kRecord - 4});
}

}  // namespace
}  // namespace ox::sqlite
