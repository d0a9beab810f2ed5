#include "oxcontacts/guarded_copy.hpp"

#include "ox/OxMacAddressBookSDK/admin/store_copies.hpp"

namespace ox::program {

std::string keepCopyBefore(const Context& context, const std::string& command, Sweep sweep) {
  auto path = pathOfNextStoreCopy(command);
  {
    GuardedCopy guarded(path);
    guarded.copy->take(StoreCopy::DamagedTags::LeaveOut);
    guarded.copy->put();
  }
  if (sweep == Sweep::Now) sweepStoreCopies(path);
  context.tell("the store as it was: " + path);
  return path;
}

}  // namespace ox::program
