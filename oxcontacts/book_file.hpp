#pragma once

#include <memory>
#include <string>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxMacAddressBookSDK/admin/restored_tags.hpp"
#include "ox/records/record_counts.hpp"

namespace ox::program {

// A backup of one book that was read once and found whole.
struct BookFile {
  std::shared_ptr<OxAddressBookGeneral> book;
  RecordCounts counts;
  TagLists tags;
};

// Throws a CommandError that names the file and says why it is none. A file that does not begin as
// one, or that is larger than the machine's memory, is not read any further.
BookFile readBookFile(const std::string& path);

}  // namespace ox::program
