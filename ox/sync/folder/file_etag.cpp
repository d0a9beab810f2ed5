#include "ox/sync/folder/file_etag.hpp"

#include <ctime>

#include "ox/base/checksum.hpp"

namespace ox::sync {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

// Since the last change, in nanoseconds; negative when that lies ahead. Bounded, so that no date
// overflows.
std::int64_t ageOf(const FileFacts& facts) {
  struct timespec now {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const std::int64_t seconds = now.tv_sec - facts.seconds;
  if (seconds > 60) return 60 * kSecond;
  if (seconds < -60) return -60 * kSecond;
  return seconds * kSecond + now.tv_nsec - facts.nanoseconds;
}

}  // namespace

FileFacts factsOf(const struct stat& status) {
  return {.inode = status.st_ino,
          .size = static_cast<std::uint64_t>(status.st_size),
          .seconds = status.st_mtim.tv_sec,
          .nanoseconds = status.st_mtim.tv_nsec,
          .mode = status.st_mode};
}

std::int64_t untilSettled(const FileFacts& facts) {
  const auto age = ageOf(facts);
  const bool helps = facts.nanoseconds != 0 && age >= 0 && age < kTickNanoseconds;
  return helps ? kTickNanoseconds - age : 0;
}

bool isSettled(const FileFacts& facts) {
  return facts.nanoseconds != 0 && ageOf(facts) >= kTickNanoseconds;
}

std::string etagOf(const FileFacts& facts) {
  return std::to_string(facts.inode) + "-" + std::to_string(facts.size) + "-" +
         std::to_string(facts.seconds) + "." + std::to_string(facts.nanoseconds);
}

std::string etagOf(const FileFacts& facts, std::string_view text) {
  return etagOf(facts) + "-" + checksum128(text);
}

}  // namespace ox::sync
