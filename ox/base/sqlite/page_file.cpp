#include "ox/base/sqlite/page_file.hpp"

#include <algorithm>
#include <string_view>

#include "ox/base/failure.hpp"

namespace ox::sqlite {
namespace {

constexpr std::size_t kHeaderBytes = 100;
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::uint32_t kInteriorTable = 5;

bool isPageSize(std::uint32_t bytes) {
  return bytes >= 512 && bytes <= 65536 && (bytes & (bytes - 1)) == 0;
}

// Whether these are the first eight bytes of a page of a table or an index: its kind, where its
// free room begins, how many cells it has and where these do.
bool beginsTree(std::string_view head, std::uint32_t pageBytes) {
  const auto kind = static_cast<unsigned char>(head[0]);
  if (kind != 2 && kind != kInteriorTable && kind != 10 && kind != 13) return false;
  const auto cells = bigEndian16(head, 3);
  const auto content = bigEndian16(head, 5) == 0 ? 65536U : bigEndian16(head, 5);
  return bigEndian16(head, 1) < pageBytes && content <= pageBytes && 8U + 2U * cells <= content;
}

// How long the pages of a file seem to be whose header does not tell; 0 when they do not, either.
// Of a page that is thought to be too short every second one begins in the middle of another.
std::uint32_t likelyPageBytes(const PlainFile& file) {
  constexpr std::uint64_t kLooks = 4096;
  for (std::uint32_t bytes = 512; bytes <= 65536; bytes *= 2) {
    const auto pairs = file.size() / bytes / 2;
    const auto step = std::max<std::uint64_t>(pairs / kLooks, 1);
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    for (std::uint64_t pair = 0; pair < pairs; pair += step) {
      const auto begins = [&](std::uint64_t page) {
        const auto head = file.bytes(page * bytes, 8);
        return head && beginsTree(*head, bytes) ? 1U : 0U;
      };
      first += begins(2 * pair);
      second += begins(2 * pair + 1);
    }
    if (second > 0 && second >= first / 4) return bytes;
  }
  return 0;
}

}  // namespace

PageFile::PageFile(const std::string& path)
    : file_(path, PlainFile::Missing::Fails), log_(path + "-wal") {
  readHeader();
  meetLog();
  if (count_ == 0) {
    throw FailureError(FailureKind::NotAStore, path + ": holds nothing that could be read", path);
  }
  findFreePages();
  findTablePages();
}

// A header that is damaged or cannot be read does not tell how long a page is; the log does, or the
// pages do.
void PageFile::readHeader() {
  constexpr std::uint32_t kUsual = 4096;
  const auto header = file_.bytes(0, kHeaderBytes);
  if (header) {
    const auto stored = bigEndian16(*header, 16);
    const auto bytes = stored == 1 ? 65536 : stored;
    const auto reserved = static_cast<std::uint32_t>(static_cast<unsigned char>((*header)[20]));
    if (isPageSize(bytes) && header->starts_with(kMagic) && reserved <= bytes - 480) {
      pageBytes_ = bytes;
      reservedBytes_ = reserved;
    }
  }
  if (pageBytes_ == 0) {
    damages_.emplace_back("the first page is damaged: what was removed cannot be told everywhere");
    pageBytes_ = log_.pageBytes() != 0 ? log_.pageBytes() : likelyPageBytes(file_);
    if (pageBytes_ == 0) pageBytes_ = kUsual;
  }
  if (file_.size() % pageBytes_ != 0) damages_.emplace_back("the file ends within a page");
  count_ = static_cast<std::uint32_t>(
      std::min<std::uint64_t>((file_.size() + pageBytes_ - 1) / pageBytes_, UINT32_MAX - 1));
}

void PageFile::meetLog() {
  if (log_.isHeadDamaged() || (log_.pageBytes() != 0 && log_.pageBytes() != pageBytes_)) {
    damages_.emplace_back("the head of the log is damaged");
    return;
  }
  hasLog_ = log_.pageBytes() != 0;
  // Each page stands in one of the two, whatever number a log brings.
  const auto most = std::min<std::uint64_t>(count_ + log_.room(), UINT32_MAX - 1);
  count_ = static_cast<std::uint32_t>(std::clamp<std::uint64_t>(log_.count(), count_, most));
  if (const auto damaged = log_.damagedPages(); damaged > 0) {
    damages_.push_back(std::to_string(damaged) +
                       (damaged == 1 ? " page of the log is" : " pages of the log are") +
                       " damaged: something newer may be missing");
  }
}

std::optional<std::string> PageFile::page(std::uint32_t number) {
  if (number == 0 || number > count_) return std::nullopt;
  auto bytes = hasLog_ && log_.holds(number) ? log_.page(number) : pageOfFile(number);
  if (!bytes && unread_.insert(number).second) {
    damages_.push_back("page " + std::to_string(number) + " cannot be read");
  }
  return bytes;
}

// Rows stand in the part of a page that a file which was cut off still has, too.
std::optional<std::string> PageFile::pageOfFile(std::uint32_t number) {
  const auto start = (static_cast<std::uint64_t>(number) - 1) * pageBytes_;
  if (start >= file_.size()) return std::nullopt;
  const auto size = std::min<std::uint64_t>(pageBytes_, file_.size() - start);
  auto bytes = file_.bytes(start, size);
  if (bytes) bytes->resize(pageBytes_);
  return bytes;
}

void PageFile::findFreePages() {
  const auto first = page(1);
  if (!first || !first->starts_with(kMagic)) return;
  std::unordered_set<std::uint32_t> trunks;
  for (auto trunk = bigEndian32(*first, 32); trunk != 0;) {
    const auto bytes = page(trunk);
    if (!bytes || !trunks.insert(trunk).second) break;
    free_.insert(trunk);
    const auto leaves = bigEndian32(*bytes, 4);
    if (leaves > usableBytes() / 4 - 2) break;
    for (std::uint32_t i = 0; i < leaves; ++i) {
      const auto leaf = bigEndian32(*bytes, 8 + 4 * static_cast<std::size_t>(i));
      if (leaf > 1 && leaf <= count_) free_.insert(leaf);
    }
    trunk = bigEndian32(*bytes, 0);
  }
  if (free_.size() != bigEndian32(*first, 36)) {
    damages_.emplace_back("the list of free pages is damaged: what was removed may come back");
  }
}

// What a page in use leads to is in use as well, whatever the list of free pages says.
void PageFile::findTablePages() {
  for (std::uint32_t number = 1; number <= count_; ++number) {
    if (isFree(number)) continue;
    const auto bytes = page(number);
    if (!bytes) continue;
    const std::size_t head = number == 1 ? kHeaderBytes : 0;
    if (static_cast<unsigned char>((*bytes)[head]) != kInteriorTable) continue;
    const auto lead = [&](std::uint32_t to) {
      if (to > 1 && to <= count_) led_.insert(to);
    };
    lead(bigEndian32(*bytes, head + 8));
    const auto cells = bigEndian16(*bytes, head + 3);
    for (std::size_t i = 0; i < cells && head + 12 + 2 * i + 2 <= usableBytes(); ++i) {
      const auto cell = bigEndian16(*bytes, head + 12 + 2 * i);
      if (cell + 4 <= usableBytes()) lead(bigEndian32(*bytes, cell));
    }
  }
  for (const auto number : led_) free_.erase(number);
}

}  // namespace ox::sqlite
