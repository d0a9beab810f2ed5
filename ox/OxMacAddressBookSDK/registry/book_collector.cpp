#include "ox/OxMacAddressBookSDK/registry/book_collector.hpp"

#include "ox/OxMacAddressBookSDK/ground/service_types.hpp"

namespace ox {

void BookCollector::add(const OxMacAddressBookPtr& book, const CNContainer& container) {
  const bool local = isLocal(container);
  if (local) {
    books_.push_front(book);
  } else {
    books_.push_back(book);
  }
  const bool standsForLocal =
      rule_ == LocalBookRule::LocalOrICloudBook && book->serverType() == services::kICloud;
  if (local || standsForLocal) localBookMissing_ = false;
}

}  // namespace ox
