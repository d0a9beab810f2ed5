#include "ox/base/sqlite/log_pages.hpp"

#include <string_view>
#include <vector>

namespace ox::sqlite {
namespace {

constexpr std::uint64_t kHeaderBytes = 32;
constexpr std::size_t kFrameHeaderBytes = 24;
constexpr std::uint32_t kMagic = 0x377F0682;  // one more: the sums are of big-endian words

// The running sum of a log, over words of the byte order that its header names.
class LogSum {
 public:
  LogSum(bool bigEndian, std::uint32_t first, std::uint32_t second)
      : bigEndian_(bigEndian), first_(first), second_(second) {}

  void add(std::string_view bytes) {
    for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
      first_ += word(bytes, at) + second_;
      second_ += word(bytes, at + 4) + first_;
    }
  }
  bool is(std::string_view bytes, std::size_t at) const {
    return bigEndian32(bytes, at) == first_ && bigEndian32(bytes, at + 4) == second_;
  }

 private:
  std::uint32_t word(std::string_view bytes, std::size_t at) const {
    const auto value = bigEndian32(bytes, at);
    return bigEndian_ ? value : __builtin_bswap32(value);
  }

  bool bigEndian_;
  std::uint32_t first_;
  std::uint32_t second_;
};

}  // namespace

LogPages::LogPages(const std::string& path) : file_(path, PlainFile::Missing::IsEmpty) {
  // Whoever was killed while writing the first bytes of a log has committed nothing to it.
  if (file_.size() < kHeaderBytes) return;
  const auto header = file_.bytes(0, kHeaderBytes);
  const auto pageBytes = header ? bigEndian32(*header, 8) : 0;
  headDamaged_ = !header || (bigEndian32(*header, 0) & ~1U) != kMagic || pageBytes < 512 ||
                 pageBytes > 65536 || (pageBytes & (pageBytes - 1)) != 0;
  if (headDamaged_) return;
  pageBytes_ = pageBytes;
  read(*header);
}

std::optional<std::string> LogPages::page(std::uint32_t page) const {
  const auto found = places_.find(page);
  return found != places_.end() ? file_.bytes(found->second, pageBytes_) : std::nullopt;
}

std::uint64_t LogPages::room() const {
  return pageBytes_ != 0 ? file_.size() / (kFrameHeaderBytes + pageBytes_) : 0;
}

// Each frame bears the sum of everything up to it, which goes on from the sum in the frame before:
// so each can be checked by itself, and one that is damaged within a commit takes no other with it.
// Frames behind the last commit were never committed.
void LogPages::read(const std::string& header) {
  const bool bigEndianWords = (bigEndian32(header, 0) & 1U) != 0;
  struct Frame {
    std::uint32_t page;
    std::uint64_t from;
  };
  std::vector<Frame> uncommitted;
  std::string before = header.substr(24, 8);
  std::uint64_t damagedSinceCommit = 0;
  for (auto from = std::uint64_t{kHeaderBytes};
       from + kFrameHeaderBytes + pageBytes_ <= file_.size();
       from += kFrameHeaderBytes + pageBytes_) {
    const auto frame = file_.bytes(from, kFrameHeaderBytes + pageBytes_);
    bool isWhole = false;
    // Frames of an earlier use of the log bear other random numbers.
    if (frame && frame->compare(8, 8, header, 16, 8) == 0) {
      LogSum sum(bigEndianWords, bigEndian32(before, 0), bigEndian32(before, 4));
      sum.add(std::string_view(*frame).substr(0, 8));
      sum.add(std::string_view(*frame).substr(kFrameHeaderBytes));
      isWhole = sum.is(*frame, 16);
    }
    if (frame) before = frame->substr(16, 8);
    if (!isWhole) {
      // What was written in vain stands behind the last commit, and may end in one of its own.
      if (uncommitted.empty() && damagedSinceCommit == 0) return;
      ++damagedSinceCommit;
      continue;
    }
    uncommitted.push_back({bigEndian32(*frame, 0), from + kFrameHeaderBytes});
    const auto countAfter = bigEndian32(*frame, 4);
    if (countAfter == 0) continue;
    for (const auto& [page, place] : uncommitted) places_[page] = place;
    uncommitted.clear();
    count_ = countAfter;
    damaged_ += damagedSinceCommit;
    damagedSinceCommit = 0;
  }
}

}  // namespace ox::sqlite
