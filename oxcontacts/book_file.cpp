#include "oxcontacts/book_file.hpp"

#include <unistd.h>

#include "ox/OxAddressBookSDK/general/book_start.hpp"
#include "ox/base/failures.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/files.hpp"

namespace ox::program {
namespace {

std::uint64_t memoryOfMachine() {
  return static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES)) *
         static_cast<std::uint64_t>(::sysconf(_SC_PAGE_SIZE));
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw CommandError(kFailed, path + ": " + reason + ", nothing was changed");
}

void refuseOtherFile(const std::string& path) {
  switch (bookStartOf(readStart(path, kBookStartBytes))) {
    case BookStart::ThisVersion:
      return;
    case BookStart::OtherVersion:
      refuse(path, "is a backup of a book in a version that this program does not know");
    case BookStart::NoBook:
      refuse(path, "is no backup of a book");
  }
}

}  // namespace

BookFile readBookFile(const std::string& path) {
  refuseOtherFile(path);
  BookFile file;
  const failures::Watch watch;
  file.book =
      OxAddressBookGeneral::addressBookWithData(makeData(readFile(path, memoryOfMachine())));
  const auto& book = file.book;
  if (!book) refuse(path, "is no whole backup of a book: " + watch.lastReason());
  file.counts = {book->groupsDic().count(), book->personsDic().count()};
  for (const auto& [key, person] : book->personsDic()) file.tags.push_back(person->tagArray());
  return file;
}

}  // namespace ox::program
