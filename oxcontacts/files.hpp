#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ox::program {

// Files that the user names. Each throws a CommandError that names the file and the reason.

// The bytes of a regular file of at most that size; anything else, and a file of the store, is
// never opened.
std::string readFile(const std::string& path, std::uint64_t atMost);
// The first bytes of a regular file, fewer when it is shorter.
std::string readStart(const std::string& path, std::uint64_t count);
// Replaces the file by these bytes, once they are complete and synced; see OutputFile.
void writeFile(const std::string& path, std::string_view bytes);
// Throws when the path leads to where the contact store or the tags are, or will be. Nothing that
// the user names is opened before this.
void refuseStoreFile(const std::string& path);

// True when nothing lies at that path, which could be asked.
bool isMissing(const std::string& path);

}  // namespace ox::program
