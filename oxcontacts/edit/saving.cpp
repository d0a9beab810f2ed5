#include "oxcontacts/edit/saving.hpp"

#include "OxAddressBookSDK/tags/OxTagManager.hpp"
#include "base/failures.hpp"
#include "platform/AddressBook/ABAddressBook.hpp"

namespace ox::program {

CommandError storeFailure(const std::string& what) {
  const auto reason = failures::snapshot().lastReason;
  // The operations above the store pass on a text and no kind: this is how SQLite says it.
  const bool busy = reason.find("database is locked") != std::string::npos;
  return {busy ? kBusy : kFailed, what + ": " + reason};
}

void saveEdits() {
  const auto report = ABAddressBook::sharedAddressBook()->saveAndReturnError();
  if (!report.done) throw storeFailure("nothing was saved");
  // The last one is told when the program ends.
  for (std::size_t i = 0; i + 1 < report.dropped.size(); ++i) Context::complain(report.dropped[i]);
  if (!OxTagManager::makeDurable()) throw storeFailure("the tags may not survive a power cut");
}

}  // namespace ox::program
