#include "oxcontacts/edit/saving.hpp"

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox::program {
namespace {

[[noreturn]] void refuseLosableTags(const failures::Watch& watch) {
  throw storeFailure("the tags may not survive a power cut", watch);
}

}  // namespace

CommandError storeFailure(const std::string& what, const failures::Watch& watch) {
  const auto last = watch.last();
  const bool busy = last && last->kind == FailureKind::Busy;
  return {busy ? kBusy : kFailed, what + ": " + watch.lastReason()};
}

void giveUp(const failures::Watch& watch) {
  const auto failure = storeFailure("nothing was saved", watch);
  ABAddressBook::sharedAddressBook()->revert();
  throw failure;
}

void saveTags() {
  const failures::Watch watch;
  if (!OxTagManager::makeDurable()) refuseLosableTags(watch);
}

void refuseTagsLeft(TagsToRemove::Outcome outcome, const failures::Watch& watch) {
  switch (outcome) {
    case TagsToRemove::Outcome::Removed:
      return;
    case TagsToRemove::Outcome::Incomplete:
      throw storeFailure("the persons are removed, but not all of their tags", watch);
    case TagsToRemove::Outcome::NotDurable:
      refuseLosableTags(watch);
  }
}

bool saveEdits() {
  const failures::Watch watch;
  const auto [contacts, tagsAreSafe] = saveContactsAndTags();
  if (!contacts.done) giveUp(watch);
  // The last one is told when the program ends.
  for (std::size_t i = 0; i + 1 < contacts.dropped.size(); ++i)
    Context::complain(contacts.dropped[i].reason);
  for (const auto& overtaken : contacts.overtaken) Context::complain(overtaken.reason);
  if (!tagsAreSafe) refuseLosableTags(watch);
  return contacts.dropped.empty();
}

}  // namespace ox::program
