#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ox {

// What concerns a tag file as a whole, also one that is not this process's own, such as that of a
// copy; none when there is no such file. Each opens it for itself. Throws FailureError.

// The tags of every person, by manager and person.
using AllTags = std::map<std::pair<std::string, std::string>, std::vector<std::string>>;
AllTags allTagsIn(const std::string& path);

// Erases the tags of a person under every manager: afterwards no byte of the file or of its log
// holds any of them. False when there were none; throws with Busy when another process keeps the
// file from being written anew as a whole.
bool eraseTagsIn(const std::string& path, const std::string& person);

}  // namespace ox
