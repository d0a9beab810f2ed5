#pragma once

#include <cstddef>
#include <pthread.h>

namespace ox::support {

// While it lives no thread can be started: each would get a stack that no address space holds.
class NoMoreThreads {
 public:
  NoMoreThreads() {
    ::pthread_getattr_default_np(&before_);
    pthread_attr_t attributes;
    ::pthread_getattr_default_np(&attributes);
    ::pthread_attr_setstacksize(&attributes, std::size_t{1} << 60);
    ::pthread_setattr_default_np(&attributes);
    ::pthread_attr_destroy(&attributes);
  }
  NoMoreThreads(const NoMoreThreads&) = delete;
  NoMoreThreads& operator=(const NoMoreThreads&) = delete;
  ~NoMoreThreads() {
    ::pthread_setattr_default_np(&before_);
    ::pthread_attr_destroy(&before_);
  }

 private:
  pthread_attr_t before_{};
};

}  // namespace ox::support
