#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"

#include <cassert>

#include "ox/OxAddressBookSDK/tags/tag_store.hpp"

namespace ox {
namespace {

thread_local TagHold* innermost = nullptr;

}  // namespace

TagHold::TagHold() : outer_(innermost) {
  TagStore::shared().begin(*this);
  innermost = this;
}

TagHold::~TagHold() {
  assert(innermost == this);
  innermost = outer_;
  TagStore::shared().end(*this);
}

TagHold* TagHold::current() {
  return innermost;
}

bool TagHold::isOnThisThread() const {
  const auto* hold = innermost;
  while (hold != nullptr && hold != this) hold = hold->outer_;
  return hold != nullptr;
}

bool TagHold::isOnThread() {
  return innermost != nullptr;
}

bool TagHold::joinOuter() {
  if (outer_ == nullptr) return false;
  TagStore::shared().join(*this, *outer_);
  return true;
}

std::vector<TagChange> TagHold::changesOfThread() {
  return TagStore::shared().changesOfThread();
}

void TagHold::forgetThose() {
  TagStore::shared().forgetThoseOfThread();
}

TagHold::Pause::Pause() : paused_(innermost) {
  innermost = nullptr;
}

TagHold::Pause::~Pause() {
  assert(innermost == nullptr);
  innermost = paused_;
}

}  // namespace ox
