#pragma once

#include "ox/base/export.hpp"

namespace ox {

class ContainerSource;

// While one lives, whatever the process reads of the store is of one moment, that of the first
// reading: what other processes commit meanwhile is not seen, and keeps nobody from committing. A
// write of this process ends the moment, and the next reading begins another one, so that a process
// always sees what it wrote. Holds for all threads; may be nested. Whoever keeps one for long keeps
// the log of the store from being emptied.
class OX_EXPORT PinnedMoment {
 public:
  PinnedMoment();
  PinnedMoment(const PinnedMoment&) = delete;
  PinnedMoment& operator=(const PinnedMoment&) = delete;
  ~PinnedMoment();

 private:
  ContainerSource& source_;
};

}  // namespace ox
