#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/database_form.hpp"

namespace ox {

// Opens the tag file, which must exist, fills it when it is empty, and brings one of an earlier
// version up to this one. Throws, and changes nothing, when it is not a tag file that this version
// can read.
sqlite::Connection openTagFile(const std::string& path);

// Whether a row of the tags is what this library writes: its sum is right, and it holds texts. The
// bytes of a text as a blob would be the same tag a second time.
inline constexpr std::string_view kIsSoundTag =
    "(sound AND typeof(manager) = 'text' AND typeof(person) = 'text' AND typeof(tag) = 'text')";

// Throws FailureError unless the open file is a tag file of a version that this one can read, whose
// schema is that version's word by word. Nothing else of it is read.
void requireTagFile(sqlite::Connection& connection, const std::string& path,
                    sqlite::MissingIndexes missing = sqlite::MissingIndexes::Refuse);
// Opens a tag file, which must be one, and leaves it of the version that it is.
sqlite::Connection openTagFileAsItIs(
    const std::string& path, sqlite::MissingIndexes missing = sqlite::MissingIndexes::Refuse);

// Makes the indexes of a tag file anew that it lacks or that do not agree with its tables, in one
// transaction; one sentence for what was done. Before anything is committed `keepCopy` is called.
// Nothing is done to a file that is not there, is of an earlier version, or whose pages are
// damaged.
std::vector<std::string> mendTagFile(const std::string& path,
                                     const std::function<void()>& keepCopy);

// Whether the file at that path is a tag file by its first bytes, of whatever version. It is opened
// without the database, so it must not be one that this process has open.
bool isTagFile(const std::string& path);
// Whether that file is a database without a table: what copies were of a tag file that was just
// being made.
bool isEmptyDatabase(const std::string& path);

}  // namespace ox
