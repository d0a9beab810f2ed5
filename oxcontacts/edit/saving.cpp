#include "oxcontacts/edit/saving.hpp"

#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox::program {
CommandError storeFailure(const std::string& what, const failures::Watch& watch) {
  const auto last = watch.last();
  const bool busy = last && last->kind == FailureKind::Busy;
  return {busy ? kBusy : kFailed, what + ": " + watch.lastReason()};
}

void giveUp(const failures::Watch& watch, const std::string& what) {
  const auto failure = storeFailure(what, watch);
  ABAddressBook::sharedAddressBook()->revert();
  throw failure;
}

void giveUpHalfEdits(const failures::Watch& watch) {
  if (watch.hasFailures()) giveUp(watch);
}

void refuseTagsLeft(const failures::Watch& watch) {
  throw storeFailure("the contacts are saved, but not all of the tags", watch);
}

bool saveEdits() {
  const failures::Watch watch;
  const auto [contacts, tagsAreSafe] = saveContactsAndTags();
  if (!contacts.done) giveUp(watch);
  // The last one is told when the program ends.
  for (std::size_t i = 0; i + 1 < contacts.dropped.size(); ++i)
    Context::complain(contacts.dropped[i].reason);
  for (const auto& overtaken : contacts.overtaken) Context::complain(overtaken.reason);
  if (!tagsAreSafe) refuseTagsLeft(watch);
  return contacts.dropped.empty();
}

}  // namespace ox::program
