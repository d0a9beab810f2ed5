#include "ox/base/serial_queue.hpp"

#include <cassert>
#include <stdexcept>

namespace ox {

void SerialQueue::refuseFromOwnTask() const {
  if (running_.load() == std::this_thread::get_id()) {
    throw std::logic_error(
        "a task submitted synchronously to the serial queue it is running on (a progress callback "
        "must not start another discovery)");
  }
}

void SerialQueue::sync(const std::function<void()>& task) {
  refuseFromOwnTask();
  const std::lock_guard lock(mutex_);
  assert(running_.load() == std::thread::id() && "whoever ran before has left");
  running_ = std::this_thread::get_id();
  struct Leave {
    std::atomic<std::thread::id>& running;
    ~Leave() { running = std::thread::id(); }
  } const leave{running_};
  task();
}

}  // namespace ox
