#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"

#include <exception>
#include <string_view>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/tags/contained_tags.hpp"
#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"
#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/OxMacAddressBookSDK/ground/tag_acts.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/store/contact_source.hpp"

namespace ox {
namespace {

// A host may change tags for a long time without a save.
constexpr std::size_t kMostDebts = 16;

std::string_view nameOf(const TagDebts& debts) {
  return {reinterpret_cast<const char*>(debts.store.data()), debts.store.size()};
}

// The result is what was followed, or had been. Others may have gone ahead of a pinned moment,
// which must not look as if the store had gone back.
TagDebts follow() {
  if (!containerSource().owesTags()) return {};
  auto debts = containerSource().tagDebts();
  if (!debts.acts.empty()) {
    TagStore::shared().follow(nameOf(debts), debts.acts,
                              [] { return containerSource().lastMoment().number; });
  }
  return debts;
}

// Before an act: what the tag file has followed, and would not lose in a power cut, is struck out
// of the store with it. When that fails it is done with a later act, and nobody needs to know.
void strikeOutFollowed(std::size_t mostLeft) {
  try {
    const auto debts = follow();
    if (debts.acts.size() <= mostLeft) return;
    TagStore::shared().makeAllDurable();
    containerSource().noteFollowedTags(debts.acts.back().number);
  } catch (const std::exception&) {
    // The debts stay.
  }
}

// The thread must hold tags.
bool holdWithoutTags(const RecordKeys& persons) {
  bool all = true;
  for (const auto& person : persons) {
    const auto hold = [&] { TagStore::shared().holdWithoutTags(person.text()); };
    all = containedTags(hold) && all;  // tags that are damaged keep no others
  }
  return all;
}

// After an act: what the thread held is in the store now.
bool followAct(const std::vector<TagChange>& changes) {
  if (changes.empty()) return true;
  const bool followed = containedTags([] { follow(); });
  TagHold::forgetThose();
  return followed;
}

}  // namespace

SavedContactsAndTags saveContactsAndTags() {
  TagStore::shared().leaveMoment();
  strikeOutFollowed(0);
  const TagHold hold;
  const bool held = holdWithoutTags(recordSource().unsavedRemovals());
  const auto changes = TagHold::changesOfThread();
  SavedContactsAndTags saved;
  saved.contacts = ABAddressBook::sharedAddressBook()->saveAndReturnError(changes);
  const bool followed = saved.contacts.done && followAct(changes);
  saved.tagsAreSafe = OxTagManager::makeDurable() && held && followed;
  return saved;
}

bool executeWithTags(SaveRequest& request, const RecordKeys& goingPersons, bool& tagsAreSafe) {
  TagStore::shared().leaveMoment();
  strikeOutFollowed(0);
  const TagHold hold;
  const bool held = holdWithoutTags(goingPersons);
  request.tags = TagHold::changesOfThread();
  // Tags that are synced before what they follow would be gone alone after a power cut.
  request.outlivesPowerCut = request.outlivesPowerCut || !request.tags.empty();
  if (!containerSource().execute(request)) return false;
  const bool followed = followAct(request.tags);
  tagsAreSafe = OxTagManager::makeDurable() && held && followed;
  return true;
}

void changeTags(const std::function<void()>& edit) {
  if (TagHold::isOnThread()) return edit();
  const TagHold hold;
  edit();
  SaveRequest request;
  request.tags = TagHold::changesOfThread();
  if (request.tags.empty()) return;
  strikeOutFollowed(kMostDebts);
  const bool isWritten = containedTags([&] {
    if (containerSource().execute(request)) return;
    throw FailureError(FailureKind::Refused, request.reason);
  });
  if (isWritten) followAct(request.tags);
}

void followTags() {
  try {
    if (containerSource().tagDebts().acts.empty()) return;
    TagStore::shared().tags({}, {});
  } catch (const std::exception&) {
    return;  // told to whoever asks the store, or for tags
  }
  containedTags([] { follow(); });
}

}  // namespace ox
