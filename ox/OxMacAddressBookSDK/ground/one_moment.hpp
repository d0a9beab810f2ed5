#pragma once

#include <memory>

#include "ox/base/export.hpp"

namespace ox {

// While one lives, whatever the process reads of contacts and tags is of one moment: what it lists
// fits together, each record with all its values, and whole acts of other processes are seen or not
// seen. Keeps nobody from writing. A write of this process ends the moment, and the next reading
// begins another one. Holds for all threads of the process, which see nothing new meanwhile; may be
// nested. The logs of the store and of the tags are not emptied before it ends, and grow by what
// others write: it is for work that comes to its end by itself, not for waiting.
class OX_EXPORT OneMoment {
 public:
  OneMoment();
  OneMoment(const OneMoment&) = delete;
  OneMoment& operator=(const OneMoment&) = delete;
  ~OneMoment();

 private:
  struct Pinned;
  std::unique_ptr<Pinned> pinned_;
};

}  // namespace ox
