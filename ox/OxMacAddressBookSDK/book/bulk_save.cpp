// The whole book as the data of a neutral book.
#include "ox/OxAddressBookSDK/general/book_writer.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/ground/contained.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/base/detached_worker.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

void reportTo(const SaveCallback& callback, bool finished, const Data& data, double value) {
  contained("a save's progress callback threw", [&] {
    if (callback) callback(finished, data, value);
  });
}

}  // namespace

void OxMacAddressBook::saveDataBlock(const SaveCallback& progress) {
  const bool started = contained("a save could not be started", [&] {
    setProgressBlock(progress);
    runDetached([book = shared_from_this()] { book->saveDataThreed(); });
  });
  // The callback at hand is told, for there may have been no room to keep it in the book.
  if (!started) reportTo(progress, true, nullptr, progress::kDone);
}

void OxMacAddressBook::setProgressBlock(const SaveCallback& progress) {
  _progressBlock.replace(progress);
}

void OxMacAddressBook::reportSave(bool finished, const Data& data, double value) {
  if (const auto callback = _progressBlock.current()) reportTo(*callback, finished, data, value);
}

// Somebody waits for the last report and must get it, whatever happens on the way.
void OxMacAddressBook::saveDataThreed() {
  Data data;
  contained("a save was cut short", [&] { data = collectedData(); });
  reportSave(true, data, progress::kDone);
}

Data OxMacAddressBook::collectedData() {
  const OneMoment moment;
  BookWriter general;
  const auto groups = allGroups();
  const auto list = allPersons();
  const auto persons = list ? list->snapshot() : Persons();
  const std::size_t total = groups.size() + persons.size();
  // A save counts its items from 0 where a load counts them from 1, so its first report is 0 and
  // the last item does not reach 100. Required.
  std::size_t index = 0;
  for (const auto& group : groups) {
    if (auto identifier = group->ID()) {
      general.add(validUtf8(*std::move(identifier)), *OxGeneralGroup::copyOf(*group));
    }
    reportSave(false, nullptr, progress::percent(index++, total));
  }
  for (const auto& person : persons) {
    const auto copy = OxGeneralPerson::copyOf(*person);
    if (const auto identifier = copy->ID()) general.add(*identifier, *copy);
    reportSave(false, nullptr, progress::percent(index++, total));
  }
  reportSave(false, nullptr, progress::kDone);
  return general.finish();
}

}  // namespace ox
