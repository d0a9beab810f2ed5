#pragma once

#include <climits>
#include <cstdio>
#include <unistd.h>

namespace ox::support {

// Where an open file lies, for what is loaded into other processes and must not allocate.
class PathOfFile {
 public:
  explicit PathOfFile(int file) {
    char link[32];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const auto size = ::readlink(link, path_, sizeof path_ - 1);
    path_[size > 0 ? size : 0] = '\0';
  }
  // Empty when that is not known.
  const char* text() const { return path_; }

 private:
  char path_[PATH_MAX];
};

}  // namespace ox::support
