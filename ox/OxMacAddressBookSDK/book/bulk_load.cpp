// Replacing a whole book by what the data of a neutral book holds.
//
// The data is read before anything is touched, so data that cannot be read costs nothing. The rest
// is one act: the old records are marked as removed, the new ones made and filled, then linked, for
// both ends of a link must exist, and the save at the end writes all of it in one commit. This
// process sees each step as it is done; no other one sees anything before the commit. A load that
// is cut short, or could not make all of its records, takes back what it did and nothing else.
#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/OxMacAddressBookSDK/ground/contained.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/base/detached_worker.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/store/running_act.hpp"

namespace ox {
namespace {

constexpr const char* kCutShort = "a load was cut short, the book is as it was";

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

// A callback is its host's: what it notices, saves and reverts is none of the load's.
void OxMacAddressBook::reportLoad(double value, bool finished) {
  const failures::Aside aside;
  const RunningAct::Pause contacts;
  const TagHold::Pause tags;
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
  bool isWritten = false;
  contained(kCutShort, [&] {
    WholeAct act;
    isWritten = replaceRecords(general) && act.save().contacts.done;
  });
  // The next call fills the cache anew: the old persons are back, the new ones never came to be.
  if (!isWritten && _allPersonArray) _allPersonArray->clear();
  reportLoad(progress::kDone, true);
}

bool OxMacAddressBook::replaceRecords(const std::shared_ptr<OxAddressBookGeneral>& general) {
  // What could not be made or read was left out: the old records must not go for it. A tag file
  // that fails costs the tags, and is noticed beside this watch.
  const failures::Watch watch(failures::Watch::Over::OwnWork);
  clearAddressBook();
  addGroupAndPersonByGeneralAddressBook(general);
  adjustGroupAndPersonRelatedByGeneralAddressBook(general);
  reportLoad(progress::kDone);
  if (watch.hasFailures()) noticeThrown(kCutShort, "not every new record could be made");
  return !watch.hasFailures();
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
