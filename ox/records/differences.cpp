#include "ox/records/differences.hpp"

namespace ox {

// Both are in the order of their numbers, so one walk along both finds all.
Differences differences(const PropertyBag& before, const PropertyBag& after) {
  Differences found;
  auto old = before.entries().begin();
  auto now = after.entries().begin();
  const auto oldEnd = before.entries().end();
  const auto nowEnd = after.entries().end();
  while (old != oldEnd || now != nowEnd) {
    if (now == nowEnd || (old != oldEnd && old->first < now->first)) {
      found.before.append(old->first, old->second);
      ++old;
    } else if (old == oldEnd || now->first < old->first) {
      found.after.append(now->first, now->second);
      ++now;
    } else {
      if (!sameValue(old->second, now->second)) {
        found.before.append(old->first, old->second);
        found.after.append(now->first, now->second);
      }
      ++old;
      ++now;
    }
  }
  return found;
}

}  // namespace ox
