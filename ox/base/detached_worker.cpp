#include "ox/base/detached_worker.hpp"

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
    failures::countFailure(error.what());
  } catch (...) {
    failures::countFailure("a detached task threw something that is no exception");
  }
}

}  // namespace

void runDetached(std::function<void()> task) {
  std::thread([task = std::move(task)] { runContained(task); }).detach();
}

}  // namespace ox
