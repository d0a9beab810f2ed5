#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ox::program {

// Files that the user names. Each throws a CommandError that names the file and the reason.

// The bytes of a regular file of at most that size; anything else is never opened.
std::string readFile(const std::string& path, std::uint64_t atMost);
// Replaces the file by these bytes, once they are complete and synced.
void writeFile(const std::string& path, std::string_view bytes);
// Throws when the path leads to the contact store or to the tags.
void refuseStoreFile(const std::string& path);

}  // namespace ox::program
