#include "ox/sync/run/steps/guard.hpp"

namespace ox::sync {

bool isTooMuch(const Deletions& side) {
  const bool isMany = side.deletions > 10 && side.deletions * 5 > side.cards;
  const bool isAll = side.deletions > 2 && side.deletions >= side.cards;
  return isMany || isAll;
}

}  // namespace ox::sync
