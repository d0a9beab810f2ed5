#pragma once

#include <cstdint>
#include <string>

#include "ox/base/record_key.hpp"

namespace ox {

// Erases a record from the store file at that path, which it brings up to date, and all that its
// journal tells of it: afterwards no byte of the file or of its log holds any of it. What was
// committed before in the journal keeps its numbers but gets new names, so every process and
// whoever follows the journal starts anew. Commands that touched the record, or say the name
// (unless it is empty), keep their first word alone. False when there was nothing of it. Throws
// StoreError; with Busy when it is erased, but another process keeps the file from being written
// anew as a whole. The tag file has followed the acts up to followedTags; those after it, and all
// in a copy that nobody is using (0), are left to be followed.
bool eraseRecord(const std::string& path, const RecordKey& key, const std::string& name,
                 std::int64_t followedTags = 0);

}  // namespace ox
