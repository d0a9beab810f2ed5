#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace ox::sync {

// What the system says of a file without reading it.
struct FileFacts {
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t seconds = 0;  // of the last change, since 1970
  std::int64_t nanoseconds = 0;
  unsigned mode = 0;

  bool operator==(const FileFacts&) const = default;
};

FileFacts factsOf(const struct stat& status);

// How long a file must have been left alone until its facts tell it from every later state of it:
// longer than a tick of the clock that file systems stamp changes with.
inline constexpr std::int64_t kTickNanoseconds = 50'000'000;

// How long that still takes, in nanoseconds; 0 where waiting does not help, or is not needed.
std::int64_t untilSettled(const FileFacts& facts);
// Whether a later change must show in the facts. Never where the time of the change lies ahead, or
// is a full second, as file systems give it that know no smaller parts.
bool isSettled(const FileFacts& facts);

// The ETag of a settled file, and of any file whose content is known.
std::string etagOf(const FileFacts& facts);
std::string etagOf(const FileFacts& facts, std::string_view text);

}  // namespace ox::sync
