// The whole book as the data of a neutral book.
#include "ox/OxAddressBookSDK/general/book_writer.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/admin/written_book.hpp"
#include "ox/OxMacAddressBookSDK/ground/contained.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/base/detached_worker.hpp"

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
  BookData data;
  const auto report = [this](double percent) { reportSave(false, nullptr, percent); };
  return writeBook(*this, data, report) ? data.take() : nullptr;
}

}  // namespace ox
