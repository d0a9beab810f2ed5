#include "ox/platform/store/pinned_moment.hpp"

#include "ox/platform/store/contact_source.hpp"

namespace ox {

PinnedMoment::PinnedMoment() : source_(containerSource()) {
  source_.pinMoment();
}

PinnedMoment::~PinnedMoment() {
  source_.unpinMoment();
}

}  // namespace ox
