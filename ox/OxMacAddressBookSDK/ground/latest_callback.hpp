#pragma once

#include <memory>
#include <mutex>

namespace ox {

// The callback of the latest request: one object, which keeps its state from call to call. Safe
// from any thread. Callbacks are run, and let go of, outside of the lock: either may start a
// request.
template <typename Callback>
class LatestCallback {
 public:
  void replace(const Callback& callback) {
    auto other = std::make_shared<const Callback>(callback);  // goes when the lock is open again
    const std::lock_guard lock(mutex_);
    current_.swap(other);
  }

  // Null before the first request. Takes no memory, for a last report must not be lost.
  std::shared_ptr<const Callback> current() const {
    const std::lock_guard lock(mutex_);
    return current_;
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<const Callback> current_;
};

}  // namespace ox
