#pragma once

#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// A file that takes the place of another one when it is complete: written under a name of its own
// beside its target, which stays as it was until the commit. Gone with this object unless
// committed; what a killed process has left goes when its target is to be replaced again. One
// thread at a time; every failure is a std::system_error that names the file.
class OX_EXPORT ReplacementFile {
 public:
  // Makes it, empty and for this user alone. Refuses a target that is no regular file, or to which
  // another user leads (ox/base/planted.hpp).
  explicit ReplacementFile(std::string target);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ~ReplacementFile();

  // Whether the file at that path was made by a process that has ended without committing it. No,
  // where that cannot be told.
  static bool isAbandoned(const std::string& path);

  // Where it lies until the commit; may be written by that name too.
  const std::string& path() const { return path_; }
  void write(std::string_view bytes);
  // Over the first bytes, as many as these, which were written before.
  void replaceStart(std::string_view bytes);
  // From now on it is to take the place of that file, in the same folder. Refused as a target is.
  void retarget(std::string target);
  // Returns when the target holds what was written and would after a power cut.
  void commit();

 private:
  [[noreturn]] void fail(int code) const;
  // The call writes what it is given, or a part of it.
  template <typename Write>
  void writeAll(std::string_view bytes, Write write) const;
  bool tryMaking();

  std::string target_;
  std::string path_;
  int file_ = -1;
  bool committed_ = false;
};

}  // namespace ox
