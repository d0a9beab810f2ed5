#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

#include "ox/base/export.hpp"

namespace ox {

// Runs submitted tasks one at a time. Safe from any thread; not copied.
class OX_EXPORT SerialQueue {
 public:
  SerialQueue() = default;
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  // Runs the task when its turn has come and returns once it has run; what it throws reaches the
  // caller, whose thread it runs on and whose watches see it. A task that submits to its own queue
  // would wait for itself: std::logic_error.
  void sync(const std::function<void()>& task);
  // Throws that std::logic_error when it is called from a task of this queue.
  void refuseFromOwnTask() const;

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> running_;
};

}  // namespace ox
