// Replacing a whole book by what the data of a neutral book holds.
//
// The order is required, and each step leaves something to fall back on. The data is read before
// anything is touched, so data that cannot be read costs nothing. The old records are then marked
// as removed, which stays unsaved, while every new one is in the store as soon as it is made; links
// come last, for both of their ends must exist. Until the save at the end, reverting the unsaved
// changes therefore brings every old record back: that is what a load does which is cut short or
// could not make all of its records. The new ones that were made by then stay in the store, empty,
// for nothing but a removal takes them out again. A revert by anybody else undoes the removals in
// the same way, and would leave old and new side by side without a word, so reverts are counted
// before and after.
#include <optional>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/ground/contained.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/base/detached_worker.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox {
namespace {

constexpr const char* kReverted = "somebody reverted the unsaved changes meanwhile";

// done of total in the half of the run that begins at `from` percent.
double halfPercent(std::size_t done, std::size_t total, float from) {
  return static_cast<double>(static_cast<float>(done) * 50.0F / static_cast<float>(total) + from);
}

void reportTo(const ProgressCallback& callback, double value, bool finished) {
  contained("a load's progress callback threw",
            [&] { progress::report(callback, value, finished); });
}

std::shared_ptr<_ABGroup> groupMadeFor(const OxGeneralGroup* neutral) {
  return neutral != nullptr ? recordOf(neutral->extend()) : nullptr;
}

std::shared_ptr<_ABPerson> personMadeFor(const OxGeneralPerson* neutral) {
  return neutral != nullptr ? recordOf(neutral->extend()) : nullptr;
}

}  // namespace

void OxMacAddressBook::loadWithData_progressBlock(const Data& data,
                                                  const ProgressCallback& progress) {
  const bool started = contained("a load could not be started", [&] {
    setLoadProgressBlock(progress);
    runDetached([book = shared_from_this(), data] { book->loadThreed(data); });
  });
  // The callback at hand is told, for there may have been no room to keep it in the book.
  if (!started) reportTo(progress, 0.0, true);
}

void OxMacAddressBook::setLoadProgressBlock(const ProgressCallback& progress) {
  _loadProgressBlock.replace(progress);
}

void OxMacAddressBook::reportLoad(double value, bool finished) {
  const failures::Aside aside;
  if (const auto callback = _loadProgressBlock.current()) reportTo(*callback, value, finished);
}

// Somebody waits for the last report and must get it, whatever happens on the way: every step that
// can throw is contained.
void OxMacAddressBook::loadThreed(const Data& data) {
  std::shared_ptr<OxAddressBookGeneral> general;
  contained("a load was cut short before it changed anything",
            [&] { general = OxAddressBookGeneral::addressBookWithData(data); });
  if (!general) return reportLoad(0.0, true);
  reportLoad(0.0);
  const auto revertsBefore = ABAddressBook::revertCount();
  if (replaceRecords(general, revertsBefore)) {
    constexpr const char* kCutShort = "the save of a load was cut short";
    // What it could not write stays unsaved: the next save then completes the load.
    contained(kCutShort, [&] { save(); });
    if (ABAddressBook::revertCount() != revertsBefore) {
      noticeThrown(kCutShort, kReverted);
      if (_allPersonArray) _allPersonArray->clear();
    }
  }
  reportLoad(progress::kDone, true);
}

bool OxMacAddressBook::replaceRecords(const std::shared_ptr<OxAddressBookGeneral>& general,
                                      std::uint64_t revertsBefore) {
  constexpr const char* kCutShort =
      "a load was cut short, the old records are kept and empty new ones stand beside them";
  std::optional<failures::Watch> watch;
  const bool ended = contained(kCutShort, [&] {
    watch.emplace(failures::Watch::Over::OwnWork);
    clearAddressBook();
    addGroupAndPersonByGeneralAddressBook(general);
    adjustGroupAndPersonRelatedByGeneralAddressBook(general);
  });
  if (ended) {
    reportLoad(progress::kDone);
    const bool reverted = ABAddressBook::revertCount() != revertsBefore;
    if (!reverted && !watch->hasFailures()) return true;
    // What could not be made or read was left out: the old records must not go for it.
    noticeThrown(kCutShort, reverted ? kReverted : "not every new one could be made");
  }
  // Removals that stayed unsaved would reach the store with the next save of whatever book.
  contained("what a load left unsaved could not be reverted", [&] { abAddressBook()->revert(); });
  // The next call fills the cache anew: the old persons are back in the store, and some of the new
  // ones may be missing in the cache.
  if (_allPersonArray) _allPersonArray->clear();
  return false;
}

void OxMacAddressBook::clearAddressBook() {
  if (_allPersonArray) _allPersonArray->clear();
  const auto records = abAddressBook();
  for (const auto& group : allGroups()) records->removeRecord(recordOf(group));
  if (_container) {
    // The persons to remove are those that the store gives. The cache was emptied just now, but
    // another thread may have put a new person into it since: it would then be served as it is, and
    // all the others would stay in the store.
    for (const auto& person : fillCache()) records->removeRecord(recordOf(person));
  } else if (const auto persons = allPersons()) {
    for (const auto& person : persons->snapshot()) records->removeRecord(recordOf(person));
  }
}

void OxMacAddressBook::addGroupAndPersonByGeneralAddressBook(
    const std::shared_ptr<OxAddressBookGeneral>& general) {
  if (!general) return;
  const auto& groups = general->groupsDic();
  const auto& persons = general->personsDic();
  const std::size_t total = groups.count() + persons.count();
  std::size_t done = 0;
  for (const auto& [key, group] : groups) {
    group->setExtend(addGroupByName(group->title()));
    reportLoad(halfPercent(++done, total, 0.0F));
  }
  for (const auto& [key, person] : persons) {
    person->setExtend(addOneFromOtherPerson(person));
    reportLoad(halfPercent(++done, total, 0.0F));
  }
  reportLoad(50.0);
}

void OxMacAddressBook::adjustGroupAndPersonRelatedByGeneralAddressBook(
    const std::shared_ptr<OxAddressBookGeneral>& general) {
  if (!general) return;
  const auto& groups = general->groupsDic();
  std::size_t done = 0;
  for (const auto& [key, neutral] : groups) {
    if (const auto group = groupMadeFor(neutral.get())) {
      for (const auto& subgroup : neutral->subArray()) {
        group->addSubgroup(groupMadeFor(groups.objectForKey(subgroup).get()));
      }
      for (const auto& member : neutral->persons()) {
        group->addMember(personMadeFor(general->personsDic().objectForKey(member).get()));
      }
    }
    reportLoad(halfPercent(++done, groups.count(), 50.0F));
  }
  reportLoad(progress::kDone);
}

}  // namespace ox
