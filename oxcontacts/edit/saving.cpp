#include "oxcontacts/edit/saving.hpp"

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox::program {
namespace {

void removeTagsOf(const std::shared_ptr<ABRecord>& record) {
  const auto person = hostPerson(record);
  if (!person) return;
  const auto manager = OxTagManager::tagManagerWithID(person->addressBookID());
  if (manager && manager->tagsByPersonID(person->ID())) manager->removeForPersonID(person->ID());
}

bool removeAgain(const MadeRecords& made) {
  if (made.empty()) return true;
  const auto store = ABAddressBook::sharedAddressBook();
  for (const auto& record : made) {
    removeTagsOf(record);
    store->removeRecord(record);
  }
  return store->save();
}

[[noreturn]] void refuseLosableTags(const failures::Watch& watch) {
  throw storeFailure("the tags may not survive a power cut", watch);
}

std::string leftBehind(const MadeRecords& made) {
  std::string text = "the values were not saved, and this is left without them:";
  for (const auto& record : made) {
    text += (record == made.front() ? " " : ", ") + record->uniqueId().value_or("");
  }
  return text;
}

}  // namespace

CommandError storeFailure(const std::string& what, const failures::Watch& watch) {
  const auto last = watch.last();
  const bool busy = last && last->kind == FailureKind::Busy;
  return {busy ? kBusy : kFailed, what + ": " + watch.lastReason()};
}

void giveUp(const failures::Watch& watch, const MadeRecords& made) {
  const auto failure = storeFailure("nothing was saved", watch);
  ABAddressBook::sharedAddressBook()->revert();
  const failures::Watch removal;
  if (removeAgain(made)) throw failure;
  ABAddressBook::sharedAddressBook()->revert();
  throw storeFailure(leftBehind(made), removal);
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

bool saveEdits(const MadeRecords& made) {
  const failures::Watch watch;
  const auto report = ABAddressBook::sharedAddressBook()->saveAndReturnError();
  if (!report.done) giveUp(watch, made);
  // The last one is told when the program ends.
  for (std::size_t i = 0; i + 1 < report.dropped.size(); ++i)
    Context::complain(report.dropped[i].reason);
  for (const auto& overtaken : report.overtaken) Context::complain(overtaken.reason);
  saveTags();
  return report.dropped.empty();
}

}  // namespace ox::program
