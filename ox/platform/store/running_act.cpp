#include "ox/platform/store/running_act.hpp"

#include <atomic>
#include <cassert>
#include <exception>
#include <utility>

#include "ox/base/failures.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {
namespace {

// The innermost act of this thread; null when none runs, or while it is paused.
thread_local RunningAct* innermost = nullptr;

ActId nextAct() {
  static std::atomic<ActId> last = kNobodysAct;
  return ++last;
}

}  // namespace

RunningAct::RunningAct() : outer_(innermost), id_(nextAct()), acts_{id_} {
  innermost = this;
}

RunningAct::~RunningAct() {
  assert(innermost == this && "acts end on their own thread, the innermost first");
  innermost = outer_;
  if (acts_.empty()) return;
  try {
    recordSource().takeBack(acts_);
  } catch (const std::exception& error) {
    failures::notice(error);
  } catch (...) {
    failures::notice(FailureKind::Other, "what an act left unsaved could not be taken back");
  }
}

bool RunningAct::joinOuter() {
  if (outer_ == nullptr) return false;
  outer_->acts_.insert(outer_->acts_.end(), acts_.begin(), acts_.end());
  // What this one does from here on bears its number too, which is the outer one's now.
  acts_.clear();
  return true;
}

ActId RunningAct::ownerOfChange(ActId creator) {
  const auto current = innermost != nullptr ? innermost->id_ : kNobodysAct;
  if (creator == kNobodysAct) return current;
  for (const auto* act = innermost; act != nullptr; act = act->outer_) {
    if (isAmong(act->acts_, creator)) return current;
  }
  return creator;
}

ActIds RunningAct::ofThread() {
  ActIds acts{kNobodysAct};
  for (const auto* act = innermost; act != nullptr; act = act->outer_) {
    acts.insert(acts.end(), act->acts_.begin(), act->acts_.end());
  }
  return acts;
}

RunningAct::Pause::Pause() : paused_(std::exchange(innermost, nullptr)) {}

RunningAct::Pause::~Pause() {
  assert(innermost == nullptr && "an act that began in the pause has ended");
  innermost = paused_;
}

}  // namespace ox
