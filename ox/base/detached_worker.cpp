#include "ox/base/detached_worker.hpp"

#include <cassert>
#include <exception>
#include <thread>
#include <utility>

#include "ox/base/failures.hpp"

namespace ox {
namespace {

void runContained(const std::function<void()>& task) {
  try {
    task();
  } catch (const std::exception& error) {
    failures::notice(error);
  } catch (...) {
    failures::notice(FailureKind::Other, "a detached task threw something that is no exception");
  }
}

}  // namespace

void runDetached(std::function<void()> task) {
  assert(task);
  std::thread(failures::watched([task = std::move(task)] { runContained(task); })).detach();
}

}  // namespace ox
