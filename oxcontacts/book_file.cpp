#include "oxcontacts/book_file.hpp"

#include <string_view>
#include <unistd.h>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/base/failures.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/files.hpp"

namespace ox::program {
namespace {

using book_format::kHeader;

std::uint64_t memoryOfMachine() {
  return static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES)) *
         static_cast<std::uint64_t>(::sysconf(_SC_PAGE_SIZE));
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw CommandError(kFailed, path + ": " + reason + ", nothing was changed");
}

void refuseOtherHeader(const std::string& path) {
  constexpr auto kAnyVersion = kHeader.substr(0, kHeader.find("\"version\""));
  const auto start = readStart(path, kHeader.size());
  if (start == kHeader) return;
  if (start.starts_with(kAnyVersion)) {
    refuse(path, "is a backup of a book in a version that this program does not know");
  }
  refuse(path, "is no backup of a book");
}

}  // namespace

BookFile readBookFile(const std::string& path) {
  refuseOtherHeader(path);
  BookFile file;
  file.data = makeData(readFile(path, memoryOfMachine()));
  const auto book = OxAddressBookGeneral::addressBookWithData(file.data);
  if (!book) refuse(path, "is no whole backup of a book: " + failures::snapshot().lastReason);
  file.counts = {book->groupsDic().count(), book->personsDic().count()};
  for (const auto& [key, person] : book->personsDic()) file.tags.push_back(person->tagArray());
  return file;
}

}  // namespace ox::program
