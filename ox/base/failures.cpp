#include "ox/base/failures.hpp"

#include <mutex>
#include <utility>

namespace ox::failures {
namespace {

struct Counter {
  std::mutex mutex;
  Snapshot counts;

  static Counter& shared() {
    static auto& counter = *new Counter;
    return counter;
  }
};

thread_local std::uint64_t failuresOfThread = 0;

}  // namespace

void countRefusal(std::string reason) {
  auto& counter = Counter::shared();
  const std::lock_guard lock(counter.mutex);
  ++counter.counts.refusals;
  counter.counts.lastReason = std::move(reason);
}

void countFailure(std::string reason) {
  ++failuresOfThread;
  auto& counter = Counter::shared();
  const std::lock_guard lock(counter.mutex);
  ++counter.counts.failures;
  counter.counts.lastReason = std::move(reason);
}

std::uint64_t failureCount() {
  auto& counter = Counter::shared();
  const std::lock_guard lock(counter.mutex);
  return counter.counts.failures;
}

std::uint64_t failureCountOfThread() {
  return failuresOfThread;
}

Aside::Aside() : before_(failuresOfThread) {}

Aside::~Aside() {
  failuresOfThread = before_;
}

Snapshot snapshot() {
  auto& counter = Counter::shared();
  const std::lock_guard lock(counter.mutex);
  return counter.counts;
}

}  // namespace ox::failures
