#pragma once

#include <string>

#include "ox/OxMacAddressBookSDK/admin/restored_tags.hpp"
#include "ox/base/data.hpp"
#include "ox/records/record_counts.hpp"

namespace ox::program {

// A backup of one book that was read once and found whole.
struct BookFile {
  Data data;
  RecordCounts counts;
  TagLists tags;
};

// Throws a CommandError that names the file and says why it is none. A file that does not begin as
// one, or that is larger than the machine's memory, is not read any further.
BookFile readBookFile(const std::string& path);

}  // namespace ox::program
