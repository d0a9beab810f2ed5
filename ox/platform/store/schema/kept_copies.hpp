#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ox {

// The copies that are kept of a store, in the folder "<store>.copies" beside its file: each is a
// store by itself, "<UTC time>-<why it was made>.db", with its tags after it. The last few are
// kept. Safe from any thread and process; what fails is a StoreError.

inline constexpr std::size_t kKeptCopies = 3;

// Where the next one is to be written; makes the folder (0700). Names sort in the order of making.
std::string pathOfNextCopy(const std::string& store, const std::string& reason);

// Those that are complete, the newest first.
std::vector<std::string> pathsOfCopies(const std::string& store);

// Removes what killed processes left of copies that they made. The result is those that other
// processes are making now.
std::vector<std::string> sweepUnfinishedCopies(const std::string& store);

// Removes all but the last few, and what killed processes left of others; never the one that was
// just made.
void sweepCopies(const std::string& store, const std::string& made);

// Makes one of what is committed now, with the tags when there are any that can be read, and then
// sweeps. The result is its path.
std::string keepCopy(const std::string& store, const std::string& reason);

// The tags that belong to a store: those of this process, or what lies beside another one.
std::string tagsOfStore(const std::string& store);

}  // namespace ox
